// The host's only door to the phone driver module: phones and their contents as plain values, and this
// computer as the module sees it.
//
// The driver has one implementation a platform: natively over the public class, on Windows over the COM
// object. Both do what any host application does: settings first, then operations. The commands know neither.
// Texts are UTF-16; results are the module's (0 or more = done; see result_messages.h).
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/host_array.h"  // TextTable
#include "devices/devices.h"  // tMedia, tNokiaPhoneType
#include "host/output/text.h"

namespace ovno2::host {

// A way in which a phone is attached.
struct ListedPhone {
    Text model;
    Long media = 0;  // tMedia
    Text serial;
    Text address;
    Text name;
    Long type = 0;  // tNokiaPhoneType
};

struct Contact {
    Text location;
    Text values;                      // one per row of the field-definition table, separated by tabs
    Text uid;                         // pairs of upper-case hexadecimal digits
    std::vector<Text> pictures = {};  // the files that the host has kept them in
};

// An entry of a phone's folder.
struct FolderEntry {
    Text name;
    Text label;  // of a drive that shows one
    bool isFolder = false;
    bool isReadOnly = false;
    bool isSpecial = false;  // a folder of the system
    std::uint64_t size = 0;  // of a file, in bytes
    Text changedText;        // of a file: its local time in the user's form, midnight omitted
    std::optional<std::chrono::sys_seconds> changed;  // none where it is no time that a file here can have
};

struct SoftwareReport {
    bool newEnough = false;     // the desktop software is there, and not too old
    Single suiteVersion = 0;    // 0 = none found
    Single contentVersion = 0;  // of the library's content access; 0 = it cannot be asked
};

// What becomes of a contact whose notes and categories the phone's old software cannot write back.
enum class LossAnswer { write, leaveOut, giveUp };
using LossQuestion = std::function<LossAnswer(const Text& name)>;

// What a phone keeps its messages and notes in.
enum class DataStore : Long { messages = 1, otherMessages = 2, notes = 4 };
inline constexpr Long messagesAndNotes = 4;  // the kind of their write session

// A phone that a Bluetooth search has found.
struct FoundPhone {
    enum State : Long { paired = 1, trusted = 2 };
    Text name;     // as its owner has called it; may be empty
    Text address;  // "02:00:00:4E:95:01"
    Text deviceNumber;
    Long state = 0;  // the library's bit set, with those of `State`
};

// A contact or calendar entry that has come to the phone, and what the phone calls it now.
struct AddedItem {
    Text temporaryId;
    Text uid;
};

// An entry of a calendar.
struct CalendarItem {
    Text block;  // lines as of a vCalendar file, "BEGIN:VEVENT" to "END:VEVENT"; "\n" in a value ends a line
    Text uid;    // pairs of upper-case hexadecimal digits, or the phone's number
};

// What the module is told to call meetings, calls, birthdays, notes, reminders and to-dos.
inline constexpr const char16_t* calendarTypeWords[] = {u"Meeting", u"Call",     u"Birthday",
                                                        u"Note",    u"Reminder", u"Task"};

// A field of an entry that is written.
struct CalendarCell {
    enum Field : Long {
        type = 1,  // one of `calendarTypeWords`
        description = 3,
        start = 4,  // dates: ISO 8601 with a blank before the time
        end = 5,
        status = 6,  // of to-dos, a number
        due = 7,
        rule = 8,  // and " EX:" with days, "20080105;20080112"
        alarm = 9,
        location = 11,
        summary = 12,
        priority = 13,  // of to-dos, a number
        calendar = 15   // the name
    };
    Field field;
    Text text;
};

class PhoneDriver {
  public:
    virtual ~PhoneDriver() = default;

    // The folder in which the connectivity library is looked for first; empty = the system's own search.
    virtual std::string connectivityFolder() = 0;

    // What the module knows of the software that it works with. Starts nothing.
    virtual SoftwareReport software() = 0;

    // The result is the number of devices that the library reports, which may be more than are listed.
    virtual Long listPhones(std::vector<ListedPhone>& phones) = 0;

    // The connection media that are on, a bit set of `tMedia`; 0 also when they cannot be listed.
    Long activeMedia();
    // Switches one of `tMedia`. 0 also when nothing was switched: `activeMedia` tells.
    virtual Long switchMedium(Long medium, bool on) = 0;

    // Searches for phones with Bluetooth, which takes as long as the library says, 20 seconds at most.
    // Switches Bluetooth on before.
    virtual Long searchBluetooth(std::vector<FoundPhone>& found) = 0;
    // The phone with that address, 17 characters as in FoundPhone. Pairing needs a passkey, which the phone's
    // user enters there as well; it is kept nowhere. Either may take half a minute.
    Long pairBluetooth(const Text& address, const Text& passkey);
    Long trustBluetooth(const Text& address);

    // Reads the whole phone book; `contacts` gets the contacts in the phone's order, without those that could
    // not be read. Pictures are written to the folder `pictures`, an absolute path. `progress` is called with
    // the value of the progress control whenever the module advances it: by 1 for a step or a contact
    // (whether it can be read or not), by 50 when the contacts begin.
    virtual Long readContacts(const ListedPhone& phone, const TextTable& fields, const std::string& pictures,
                              const std::function<void(Long value)>& progress,
                              std::vector<Contact>& contacts) = 0;

    // Writing contacts of the phone whose contacts were read last. The first change begins a session; nothing
    // is changed on the phone until it ends. Each of these is 0 when done, and leaves the session open.

    // `values` has one value a row of `fields`, separated by tabs; rows of one code go with the phone's
    // values in order, and what a contact has in a field without a row stays. `id` is the contact's uid, or
    // one of this session's temporary ids; empty = a new contact, whose temporary id it becomes. 0 also for a
    // contact that `ask` has left out; -9 when it gave up.
    virtual Long writeContact(const ListedPhone& phone, const TextTable& fields, const Text& values, Text& id,
                              const LossQuestion& ask) = 0;
    virtual Long deleteContact(const ListedPhone& phone, const Text& uid) = 0;
    // Ends the session: all of it is written, or, without `commit` or when that fails, nothing.
    virtual Long endContacts(bool commit, std::vector<AddedItem>& added) = 0;

    // Reads a whole store; `lines` gets a line an item, its parts divided by "|": of a message folder name,
    // folder path, folder id, local time in the user's form, UID, addresses divided by ",", text; of a note
    // UID and text. Items and folders that cannot be read are left out. `progress` is called as above: for
    // every folder that can be listed a jump of 50, one more when its items begin, and two for each item.
    virtual Long readData(const ListedPhone& phone, DataStore store,
                          const std::function<void(Long value)>& progress, std::vector<Text>& lines) = 0;

    // Writing messages and notes: as with contacts, nothing is changed on the phone until the session ends.
    // One session is for messages or for notes. Messages go to the phone's outbox.
    Long writeMessage(const ListedPhone& phone, const std::vector<Text>& recipients, const Text& text);
    // An empty UID is a new note.
    Long writeNote(const ListedPhone& phone, const Text& uid, const Text& text);
    // All messages of a session must be of one store and lie in the folder with that id.
    Long deleteMessage(const ListedPhone& phone, DataStore store, const Text& folderId, const Text& uid);
    Long deleteNote(const ListedPhone& phone, const Text& uid);
    virtual Long endData(bool commit) = 0;

    // The names of the calendars; the first is the root that all others lie below, and no calendar for
    // people.
    virtual Long listCalendars(const ListedPhone& phone, std::vector<Text>& names) = 0;
    // Done at once. "/" and ":" in a new name become blanks. Deleting a calendar deletes its entries.
    virtual Long createCalendar(const ListedPhone& phone, const Text& name) = 0;
    virtual Long renameCalendar(const ListedPhone& phone, const Text& name, const Text& newName) = 0;
    virtual Long deleteCalendar(const ListedPhone& phone, const Text& name) = 0;

    // Reads the entries of all calendars; those that cannot be read are left out. A result below 0 may come
    // with the entries of the calendars before the one that failed. `progress` is called as above: for every
    // calendar (the root, too) a jump of 50, one when its entries begin, and one for each entry.
    virtual Long readCalendar(const ListedPhone& phone, const std::function<void(Long value)>& progress,
                              std::vector<CalendarItem>& items) = 0;

    // Writing entries: as with contacts, nothing is changed on the phone until the session ends. `id` is the
    // entry's uid; empty = a new entry, whose temporary id it becomes. Fields without a cell stay as they
    // are; a cell `calendar` moves the entry, which then has what the cells say and nothing else.
    virtual Long writeCalendarItem(const ListedPhone& phone, const std::vector<CalendarCell>& cells,
                                   Text& id) = 0;
    virtual Long deleteCalendarItem(const ListedPhone& phone, const Text& uid) = 0;
    virtual Long endCalendar(bool commit, std::vector<AddedItem>& added) = 0;

    // The phone's files. Phone paths are "E:\Images"; an empty one is the phone itself, whose folders are the
    // drives. Listing opens the session with the phone, and the other operations work on the phone that was
    // listed last.

    // `entries` gets the folders, then the files; also those that were listed before a failure.
    virtual Long listFolder(const ListedPhone& phone, const Text& folder,
                            std::vector<FolderEntry>& entries) = 0;
    // `localFolder` is an absolute path; the file arrives there under the name it has on the phone. 0 does
    // not say that it could be written.
    virtual Long getFile(const Text& phonePath, const std::string& localFolder) = 0;
    virtual Long putFile(const std::string& localFile, const Text& phoneFolder) = 0;
    virtual Long renameFile(const Text& phonePath, const Text& newName) = 0;
    virtual Long deleteFile(const Text& phonePath) = 0;  // 1 = deleted
    virtual Long renameFolder(const Text& phonePath, const Text& newName) = 0;
    virtual Long createFolder(
        const Text& phonePath) = 0;  // what follows the last "." of its name is left out
    virtual Long deleteFolder(const Text& phonePath) = 0;  // 1 = deleted
    virtual void endFiles() = 0;                           // closes the session

  protected:
    virtual Long connections() = 0;  // the media that are on, in the library's numbering
    // `what` has bit 1 for pairing, bit 2 for trusting.
    virtual Long changeTrust(const Text& address, Long what, const Text& passkey) = 0;

    // Messages and notes as the module takes them: one text of fields divided by tabs.
    virtual Long writeData(const ListedPhone& phone, const Text& item) = 0;
    virtual Long deleteData(const ListedPhone& phone, const Text& item) = 0;
};

// The driver cannot be had at all; `what` says why and what to do, in UTF-8.
class DriverMissing : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Without a folder of the connectivity library the one is taken that the system says. Throws DriverMissing.
std::unique_ptr<PhoneDriver> makePhoneDriver(const std::string& connectivityFolder);

// The file of a library that is bound by name, such as "ConnAPI".
std::string libraryFile(const std::string& name);

// A path as the module and the registry write it.
std::filesystem::path pathOfModuleText(TextView text);

// A birthday as the module writes it, in the user's short-date form, as an ISO 8601 date. Where that form has
// two digits for the year, the last such year that is no future one is meant; a text that is no date stays as
// it is.
Text isoDate(TextView birthday);

// A time as the module writes it, in the user's form, as ISO 8601 without a zone: "2008-01-05T10:30:00".
// Empty for what is no time, or none that a phone has set.
Text isoTime(TextView time);

// An ISO 8601 date as the module reads it; empty = no date that it can read.
Text birthdayText(TextView isoDate);
// The same date as it is after it went to a phone and back: years may lose their century.
Text birthdayReadBack(TextView isoDate);

// How the driver sends a file to a phone: as it is, or, when it begins like a text in UTF-16 or with a UTF-8
// mark, as text in the system's code page, which may lack some of its characters.
bool goesAsText(const std::filesystem::path& file);
bool losesCharacters(const std::filesystem::path& file);

namespace computer {

// Registry values; empty = none.
Text userValue(TextView key, TextView name);
Text machineValue(TextView key, TextView name);
// An empty text deletes the value. False when the registry does not hold it afterwards.
bool setUserValue(TextView key, TextView name, TextView text);

// Those programs that run now, by the names of their files.
std::vector<TextView> runningAmong(std::span<const TextView> programs);

// What the file of a program or library says of its version; empty when it says nothing.
Text programVersion(const std::filesystem::path& file);

// A text in the system's code page, such as the module's log is written in.
Text fromCodePage(std::string_view bytes);

}  // namespace computer

}  // namespace ovno2::host
