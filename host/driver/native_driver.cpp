// The driver over the public class, in the same process.
#include "core/current_platform.h"
#include "driver/cov_no2.h"
#include "driver/grid_object.h"
#include "driver/progress_object.h"
#include "host/driver/calendar_cells.h"
#include "host/driver/directory.h"
#include "host/driver/loss_answer.h"
#include "host/output/console.h"
#include "library/library_memory.h"
#include "platform/portable/code_pages.h"
#include "platform/portable/libraries.h"
#include "platform/portable/paths.h"
#include "platform/portable/windows.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr Long contactsKind = 1, calendarKind = 2;

// The host's function that the module calls, for the time of a call.
class AskedProcedure {
  public:
    explicit AskedProcedure(const LossQuestion& ask)
        : windows_(static_cast<platform::portable::PortableWindows&>(platform::nativePlatform().windows())),
          number_(windows_.registerProcedure([&ask](Long, Long, Long, Long text) {
              const auto* const name =
                  static_cast<const char*>(library::pointerTo(static_cast<Address>(text)));
              return answerNumber(ask(computer::fromCodePage(name)));
          })) {}
    ~AskedProcedure() { windows_.unregisterProcedure(number_); }
    AskedProcedure(const AskedProcedure&) = delete;
    AskedProcedure& operator=(const AskedProcedure&) = delete;

    Long number() const { return number_; }

  private:
    platform::portable::PortableWindows& windows_;
    Long number_;
};

class NativeDriver : public PhoneDriver {
  public:
    explicit NativeDriver(std::string connectivityFolder)
        : connectivityFolder_(std::move(connectivityFolder)) {}

    std::string connectivityFolder() override { return connectivityFolder_; }

    SoftwareReport software() override {
        return {module_.CheckIfNokiaSDKIsThere(/*startit=*/false), module_.GetPCSuiteVersion(),
                module_.GetApiVersion()};
    }

    Long listPhones(std::vector<ListedPhone>& phones) override {
        TextArray models, serials, addresses, names;
        LongArray media, types;
        const Long result = module_.GetConnectedDevices(models, media, serials, addresses, names, types);
        phones.clear();
        for (std::size_t i = 0; i < models.size(); ++i) {
            const Long index = static_cast<Long>(i);
            phones.push_back({models.at(index), media.at(index), serials.at(index), addresses.at(index),
                              names.at(index), types.at(index)});
        }
        return result;
    }

    Long switchMedium(Long medium, bool on) override {
        return module_.Connect(medium, /*Medium2=*/-1, {}, {}, /*Dicsonnect=*/!on);
    }
    Long searchBluetooth(std::vector<FoundPhone>& found) override {
        TextArray names, addresses, numbers;
        LongArray states;
        const Long result = module_.MediaSearchBT(names, addresses, numbers, states);
        found.clear();
        for (std::size_t i = 0; i < addresses.size(); ++i) {
            const Long index = static_cast<Long>(i);
            found.push_back({names.at(index), addresses.at(index), numbers.at(index), states.at(index)});
        }
        return result;
    }

    Long readContacts(const ListedPhone& phone, const TextTable& fields, const std::string& pictures,
                      const std::function<void(Long)>& progress, std::vector<Contact>& contacts) override {
        module_.GetAllFields_(1);
        module_.PhoneModel_(phone.model);
        Text model = phone.model;
        Text serial = phone.serial;
        Text phonebook;
        TextArray groups;
        HostArray<AdrItem> items;
        const Long result = module_.NokiaGetAddressBookItems(model, serial, phonebook, items, fields, groups,
                                                             fromUtf8(pictures + '/'),
                                                             std::make_shared<ProgressObject>(progress));
        contacts.clear();
        contacts.reserve(items.size());
        // The first contact stands at index 1 of an array that had no elements.
        for (std::size_t i = 1; i < items.size(); ++i) {
            AdrItem& item = items.at(static_cast<Long>(i));
            contacts.push_back({std::move(item.Location), std::move(item.FieldValues), std::move(item.Uid)});
        }
        return result;
    }

    Long writeContact(const ListedPhone& phone, const TextTable& fields, const Text& values, Text& id,
                      const LossQuestion& ask) override {
        const AskedProcedure procedure(ask);
        Text model = phone.model, serial = phone.serial, elems = values;
        return module_.WriteAddressBookItem(model, serial, id, elems, fields, /*isnew=*/id.empty(),
                                            /*delete_=*/false, /*isrewrite=*/0, procedure.number());
    }
    Long deleteContact(const ListedPhone& phone, const Text& uid) override {
        Text model = phone.model, serial = phone.serial;
        return module_.DeleteAddressBookItem(model, serial, uid);
    }
    Long endContacts(bool commit, std::vector<AddedItem>& added) override {
        return endSession(contactsKind, commit, added);
    }

    Long readData(const ListedPhone& phone, DataStore store, const std::function<void(Long)>& progress,
                  std::vector<Text>& lines) override {
        Text model = phone.model;
        Text serial = phone.serial;
        TextArray items;
        // The module takes messages through the system's code page, which lacks most of the world's
        // characters.
        const platform::portable::PortableCodePages::Utf8 everyCharacter(
            static_cast<platform::portable::PortableCodePages&>(platform::nativePlatform().codePages()));
        const Long result = module_.NokiaGetDataItems(model, serial, static_cast<Long>(store), items,
                                                      std::make_shared<ProgressObject>(progress));
        lines = std::move(items.elements());
        return result;
    }
    Long endData(bool commit) override {
        TextArray temporaryIds, uids;
        return module_.EndWriteSession(messagesAndNotes, temporaryIds, uids, commit);
    }

    Long listCalendars(const ListedPhone& phone, std::vector<Text>& names) override {
        Text model = phone.model;
        Text serial = phone.serial;
        TextArray calendars, ids;
        const Long result = module_.GetCalendarFolders(model, serial, calendars, ids);
        names = std::move(calendars.elements());
        return result;
    }
    Long createCalendar(const ListedPhone& phone, const Text& name) override {
        Text model = phone.model;
        return numberIn(module_.CreateCalender(model, phone.serial, name));
    }
    Long renameCalendar(const ListedPhone& phone, const Text& name, const Text& newName) override {
        Text model = phone.model;
        return numberIn(module_.RenameCalender(model, phone.serial, name, newName));
    }
    Long deleteCalendar(const ListedPhone& phone, const Text& name) override {
        Text model = phone.model;
        return numberIn(module_.DeleteCalender(model, phone.serial, name));
    }
    Long readCalendar(const ListedPhone& phone, const std::function<void(Long)>& progress,
                      std::vector<CalendarItem>& items) override {
        Text model = phone.model;
        Text serial = phone.serial;
        module_.PhoneModel_(phone.model);
        HostArray<CalItem> records;
        const Long result = module_.NokiaGetCalendarItems(model, serial, records, TextTable(),
                                                          std::make_shared<ProgressObject>(progress));
        items.clear();
        items.reserve(records.size());
        for (CalItem& record : records.elements())
            items.push_back({std::move(record.VCalText), std::move(record.ItemUid)});
        return result;
    }
    Long writeCalendarItem(const ListedPhone& phone, const std::vector<CalendarCell>& cells,
                           Text& id) override {
        giveTypeWords();
        module_.PhoneModel_(phone.model);
        Text model = phone.model;
        Text serial = phone.serial;
        CalItem item;
        item.ItemUid = id;
        const Long result = module_.WriteCalendarItem(
            model, serial, item,
            std::make_shared<GridObject>([&cells](Long, Long column) { return cellText(cells, column); }),
            /*indexingrid=*/1, fieldTable(cells));
        id = item.ItemUid;
        return result;
    }
    Long deleteCalendarItem(const ListedPhone& phone, const Text& uid) override {
        Text model = phone.model;
        Text serial = phone.serial;
        return module_.DeleteCalendarItem(model, serial, uid);
    }
    Long endCalendar(bool commit, std::vector<AddedItem>& added) override {
        return endSession(calendarKind, commit, added);
    }

    Long listFolder(const ListedPhone& phone, const Text& folder,
                    std::vector<FolderEntry>& entries) override {
        Text model = phone.model;
        HostArray<DirItem> items;
        const Long result = module_.GetDirContents(model, items, folder);
        entries = folderEntries(items.elements());
        return result;
    }
    Long getFile(const Text& phonePath, const std::string& localFolder) override {
        Text path = phonePath;
        Text folder = fromUtf8(localFolder + '/');
        return module_.GetFile(path, folder);
    }
    Long putFile(const std::string& localFile, const Text& phoneFolder) override {
        Text path = fromUtf8(localFile);
        Text folder = phoneFolder;
        return module_.PutFile(path, folder);
    }
    Long renameFile(const Text& phonePath, const Text& newName) override {
        Text path = phonePath;
        Text name = newName;
        return module_.RenameFile(path, name);
    }
    Long deleteFile(const Text& phonePath) override {
        Text path = phonePath;
        return module_.DeleteFile(path);
    }
    Long renameFolder(const Text& phonePath, const Text& newName) override {
        Text path = phonePath;
        Text name = newName;
        return module_.RenameFolder(path, name);
    }
    Long createFolder(const Text& phonePath) override {
        Text path = phonePath;
        return module_.CreateFolder(path);
    }
    Long deleteFolder(const Text& phonePath) override {
        Text path = phonePath;
        return module_.DeleteFolder(path);
    }
    void endFiles() override { module_.EndFS(); }

  private:
    static Long numberIn(const Variant& result) {
        const Long* const number = std::get_if<Long>(&result);
        return number ? *number : -1;
    }
    void giveTypeWords() {
        module_.Meeting_(calendarTypeWords[0]);
        module_.Call_(calendarTypeWords[1]);
        module_.Bithday_(calendarTypeWords[2]);
        module_.Note_(calendarTypeWords[3]);
        module_.Reminder_(calendarTypeWords[4]);
        module_.Task_(calendarTypeWords[5]);
    }

    // What has no uid is no item.
    Long endSession(Long kind, bool commit, std::vector<AddedItem>& added) {
        TextArray temporaryIds, uids;
        const Long result = module_.EndWriteSession(kind, temporaryIds, uids, commit);
        added.clear();
        for (std::size_t i = 0; i < std::min(temporaryIds.size(), uids.size()); ++i)
            if (!uids.elements()[i].empty())
                added.push_back({std::move(temporaryIds.elements()[i]), std::move(uids.elements()[i])});
        return result;
    }
    Long connections() override { return module_.GetConnections(); }
    Long changeTrust(const Text& address, Long what, const Text& passkey) override {
        Text named = address;
        return module_.ChangeDeviceTrustedState(named, what, passkey);
    }
    Long writeData(const ListedPhone& phone, const Text& item) override {
        Text model = phone.model;
        Text serial = phone.serial;
        Text written = item;
        return module_.WriteDataItem(model, serial, written);
    }
    Long deleteData(const ListedPhone& phone, const Text& item) override {
        Text model = phone.model;
        Text serial = phone.serial;
        return module_.DeleteDataItem(model, serial, item);
    }

    std::string connectivityFolder_;
    covNo2 module_;
};

// The registry names the folder of an installed library; without one, this build's simulator is taken.
std::string defaultFolder() {
    const Text installed = computer::machineValue(u"SOFTWARE\\PC Connectivity Solution", u"PlatformPath");
    if (!installed.empty()) return console::textOf(pathOfModuleText(installed));
    const fs::path folder = console::programFolder() / ".." / "lib";
    return fs::exists(folder / libraryFile("ConnAPI")) ? fs::canonical(folder).string() : std::string();
}

}  // namespace

std::unique_ptr<PhoneDriver> makePhoneDriver(const std::string& connectivityFolder) {
    const std::string folder = connectivityFolder.empty() ? defaultFolder() : connectivityFolder;
    if (!folder.empty())
        static_cast<platform::portable::PortableLibraries&>(platform::nativePlatform().libraries())
            .searchOnlyIn(folder);
    return std::make_unique<NativeDriver>(folder);
}

std::string libraryFile(const std::string& name) {
    return "lib" + name + ".so";
}

std::filesystem::path pathOfModuleText(TextView text) {
    using namespace platform;
    return portable::nativePath(static_cast<portable::Machine&>(nativePlatform()), text);
}

}  // namespace ovno2::host
