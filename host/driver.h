// The phone driver module as the commands see it: phones and their contents as plain values.
//
// One implementation a platform: natively over the public class, on Windows over the COM object. Both do what
// any host application does: settings first, then operations. The commands know neither. Texts are UTF-16;
// results are the module's (0 or more = done; see result_messages.h).
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/host_array.h"

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
    Text values;  // one per row of the field-definition table, separated by tabs
    Text uid;     // pairs of upper-case hexadecimal digits
};

// An entry of a phone's folder.
struct FolderEntry {
    Text shownName;  // a folder's label or name in square brackets, a file's name
    Text name;
    Long size = 0;   // of a file, in bytes; what passes 31 bits is negative
    Text dateText;   // of a file: local time in the user's form, midnight omitted
    Long flags = 0;  // see phonefs/dir_item.h
};

struct SoftwareReport {
    bool newEnough = false;     // the desktop software is there, and not too old
    Single suiteVersion = 0;    // 0 = none found
    Single contentVersion = 0;  // of the library's content access; 0 = it cannot be asked
};

class PhoneDriver {
  public:
    virtual ~PhoneDriver() = default;

    // The folder in which the connectivity library is looked for first; empty = the system's own search.
    virtual std::string connectivityFolder() = 0;

    // What the module knows of the software that it works with. Starts nothing.
    virtual SoftwareReport software() = 0;

    virtual Long listPhones(std::vector<ListedPhone>& phones) = 0;

    // Reads the whole phone book; `contacts` gets the contacts in the phone's order, also those read before a
    // failure. Pictures are written to the folder `pictures`, an absolute path. `progress` is called with the
    // value of the progress control whenever the module advances it: by 1 for a step or a contact, by 50 when
    // the number of contacts is known.
    virtual Long readContacts(const ListedPhone& phone, const TextTable& fields, const std::string& pictures,
                              const std::function<void(Long value)>& progress,
                              std::vector<Contact>& contacts) = 0;

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
};

// The driver cannot be had at all; `what` says why and what to do, in UTF-8.
class DriverMissing : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct DriverOptions {
    std::string connectivity;  // folder of the connectivity library; empty = where the system says it is
};

std::unique_ptr<PhoneDriver> makePhoneDriver(const DriverOptions& options);

}  // namespace ovno2::host
