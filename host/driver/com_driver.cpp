// The driver over the COM object, as any program on Windows uses it.
#include <system_error>

#include "host/driver/calendar_cells.h"
#include "host/driver/com_client.h"
#include "host/driver/directory.h"
#include "host/driver/loss_answer.h"
#include "host/output/console.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

std::string systemMessage(HRESULT result) {
    return std::system_category().message(static_cast<int>(result));
}

// Whom the module's question goes to while a contact is written.
thread_local const LossQuestion* asked = nullptr;

LONG CALLBACK answerModule(LONG, LONG, LONG, LONG text) {
    const auto* const name = reinterpret_cast<const char*>(static_cast<std::uintptr_t>(text));
    return answerNumber((*asked)(computer::fromCodePage(name)));
}

class ComDriver : public PhoneDriver {
  public:
    ComDriver(std::string connectivityFolder, ComPointer<_covNo2> module)
        : connectivityFolder_(std::move(connectivityFolder)), module_(std::move(module)) {}

    std::string connectivityFolder() override { return connectivityFolder_; }

    SoftwareReport software() override {
        VARIANT_BOOL newEnough = VARIANT_FALSE;
        SoftwareReport report;
        module_->CheckIfNokiaSDKIsThere(/*startit=*/VARIANT_FALSE, &newEnough);
        report.newEnough = newEnough != VARIANT_FALSE;
        module_->GetPCSuiteVersion(&report.suiteVersion);
        module_->GetApiVersion(&report.contentVersion);
        return report;
    }

    Long listPhones(std::vector<ListedPhone>& phones) override {
        OwnedSafeArray models, media, serials, addresses, names, types;
        LONG result = -1;
        module_->GetConnectedDevices(models.address(), media.address(), serials.address(),
                                     addresses.address(), names.address(), types.address(), /*medium=*/-1,
                                     &result);
        phones.clear();
        for (std::size_t i = 0; i < slotsOf<BSTR>(models).size(); ++i)
            phones.push_back({textOf(slotsOf<BSTR>(models)[i]), static_cast<Long>(slotsOf<LONG>(media)[i]),
                              textOf(slotsOf<BSTR>(serials)[i]), textOf(slotsOf<BSTR>(addresses)[i]),
                              textOf(slotsOf<BSTR>(names)[i]), static_cast<Long>(slotsOf<LONG>(types)[i])});
        return static_cast<Long>(result);
    }

    Long switchMedium(Long medium, bool on) override {
        LONG result = -1;
        module_->Connect(medium, /*Medium2=*/-1, /*Phone=*/nullptr, /*Id=*/nullptr,
                         on ? VARIANT_FALSE : VARIANT_TRUE, &result);
        return static_cast<Long>(result);
    }
    Long searchBluetooth(std::vector<FoundPhone>& found) override {
        constexpr LONG defaultTimeout = 200;
        OwnedSafeArray names, addresses, numbers, states;
        LONG result = -1;
        module_->MediaSearchBT(names.address(), addresses.address(), numbers.address(), states.address(),
                               defaultTimeout, &result);
        found.clear();
        for (std::size_t i = 0; i < slotsOf<BSTR>(addresses).size(); ++i)
            found.push_back({textOf(slotsOf<BSTR>(names)[i]), textOf(slotsOf<BSTR>(addresses)[i]),
                             textOf(slotsOf<BSTR>(numbers)[i]), static_cast<Long>(slotsOf<LONG>(states)[i])});
        return static_cast<Long>(result);
    }

    Long readContacts(const ListedPhone& phone, const TextTable& fields, const std::string& pictures,
                      const std::function<void(Long)>& progress, std::vector<Contact>& contacts) override {
        LONG on = 1;
        module_->put_GetAllFields_(&on);
        Bstr model(phone.model), serial(phone.serial), phonebook;
        module_->put_PhoneModel_(model.address());
        OwnedSafeArray items, groups;
        OwnedSafeArray table(newTable(fields));
        const Bstr folder(fromUtf8(pictures + '\\'));
        ComPointer<IDispatch> control;
        *control.out() = new ProgressControl(progress);
        LONG result = -1;
        module_->NokiaGetAddressBookItems(model.address(), serial.address(), phonebook.address(),
                                          items.address(), table.address(), groups.address(), folder.get(),
                                          control.out(),
                                          /*pCallBack=*/nullptr, &result);
        contacts.clear();
        // The first contact stands at index 1 of an array that had no elements.
        const std::span<const tAdrItem> records = slotsOf<tAdrItem>(items);
        contacts.reserve(records.size());
        for (std::size_t i = 1; i < records.size(); ++i)
            contacts.push_back(
                {textOf(records[i].Location), textOf(records[i].FieldValues), textOf(records[i].Uid)});
        return static_cast<Long>(result);
    }

    Long writeContact(const ListedPhone& phone, const TextTable& fields, const Text& values, Text& id,
                      const LossQuestion& ask) override {
        Bstr model(phone.model), serial(phone.serial), contact(id), elems(values);
        OwnedSafeArray table(newTable(fields));
        asked = &ask;
        LONG result = -1;
        module_->WriteAddressBookItem(model.address(), serial.address(), contact.address(), elems.address(),
                                      table.address(), id.empty() ? VARIANT_TRUE : VARIANT_FALSE,
                                      /*delete=*/VARIANT_FALSE, /*isrewrite=*/0,
                                      static_cast<LONG>(reinterpret_cast<std::uintptr_t>(&answerModule)),
                                      &result);
        asked = nullptr;
        id = contact.text();
        return static_cast<Long>(result);
    }
    Long deleteContact(const ListedPhone& phone, const Text& uid) override {
        Bstr model(phone.model), serial(phone.serial);
        const Bstr contact(uid);
        LONG result = -1;
        module_->DeleteAddressBookItem(model.address(), serial.address(), contact.get(), &result);
        return static_cast<Long>(result);
    }
    Long endContacts(bool commit, std::vector<AddedItem>& added) override {
        constexpr LONG contactsKind = 1;
        return endSession(contactsKind, commit, added);
    }

    Long readData(const ListedPhone& phone, DataStore store, const std::function<void(Long)>& progress,
                  std::vector<Text>& lines) override {
        Bstr model(phone.model), serial(phone.serial);
        LONG what = static_cast<LONG>(store);
        OwnedSafeArray items;
        ComPointer<IDispatch> control;
        *control.out() = new ProgressControl(progress);
        LONG result = -1;
        module_->NokiaGetDataItems(model.address(), serial.address(), &what, items.address(), control.out(),
                                   /*pCallBack=*/nullptr, &result);
        lines.clear();
        for (const BSTR item : slotsOf<BSTR>(items))
            lines.push_back(textOf(item));
        return static_cast<Long>(result);
    }
    Long endData(bool commit) override {
        OwnedSafeArray temporaryIds, uids;
        LONG result = -1;
        module_->EndWriteSession(messagesAndNotes, temporaryIds.address(), uids.address(),
                                 commit ? VARIANT_TRUE : VARIANT_FALSE, &result);
        return static_cast<Long>(result);
    }

    Long listCalendars(const ListedPhone& phone, std::vector<Text>& names) override {
        Bstr model(phone.model), serial(phone.serial);
        OwnedSafeArray calendars, ids;
        LONG result = -1;
        module_->GetCalendarFolders(model.address(), serial.address(), calendars.address(), ids.address(),
                                    &result);
        names.clear();
        for (const BSTR name : slotsOf<BSTR>(calendars))
            names.push_back(textOf(name));
        return static_cast<Long>(result);
    }
    Long createCalendar(const ListedPhone& phone, const Text& name) override {
        Bstr model(phone.model);
        VARIANT result;
        VariantInit(&result);
        module_->CreateCalender(model.address(), Bstr(phone.serial).get(), Bstr(name).get(), &result);
        return numberIn(result);
    }
    Long renameCalendar(const ListedPhone& phone, const Text& name, const Text& newName) override {
        Bstr model(phone.model);
        VARIANT result;
        VariantInit(&result);
        module_->RenameCalender(model.address(), Bstr(phone.serial).get(), Bstr(name).get(),
                                Bstr(newName).get(), &result);
        return numberIn(result);
    }
    Long deleteCalendar(const ListedPhone& phone, const Text& name) override {
        Bstr model(phone.model);
        VARIANT result;
        VariantInit(&result);
        module_->DeleteCalender(model.address(), Bstr(phone.serial).get(), Bstr(name).get(), &result);
        return numberIn(result);
    }
    Long readCalendar(const ListedPhone& phone, const std::function<void(Long)>& progress,
                      std::vector<CalendarItem>& items) override {
        Bstr model(phone.model), serial(phone.serial);
        module_->put_PhoneModel_(model.address());
        OwnedSafeArray records;
        OwnedSafeArray noFields(newTable(fieldTable({{CalendarCell::summary, {}}})));
        ComPointer<IDispatch> control;
        *control.out() = new ProgressControl(progress);
        LONG result = -1;
        module_->NokiaGetCalendarItems(model.address(), serial.address(), records.address(),
                                       noFields.address(), control.out(), &result);
        items.clear();
        for (const tCalItem& record : slotsOf<tCalItem>(records))
            items.push_back({textOf(record.VCalText), textOf(record.ItemUid)});
        return static_cast<Long>(result);
    }
    Long writeCalendarItem(const ListedPhone& phone, const std::vector<CalendarCell>& cells,
                           Text& id) override {
        giveTypeWords();
        Bstr model(phone.model), serial(phone.serial);
        module_->put_PhoneModel_(model.address());
        Bstr uid(id);
        tCalItem item{};
        item.ItemUid = uid.release();
        OwnedSafeArray table(newTable(fieldTable(cells)));
        ComPointer<IDispatch> grid;
        *grid.out() = new Grid([&cells](Long, Long column) { return cellText(cells, column); });
        LONG result = -1;
        module_->WriteCalendarItem(model.address(), serial.address(), &item, grid.out(), /*indexingrid=*/1,
                                   table.address(), &result);
        id = textOf(item.ItemUid);
        for (const BSTR text : {item.VCalText, item.VCalTextRead, item.ItemUid})
            SysFreeString(text);
        return static_cast<Long>(result);
    }
    Long deleteCalendarItem(const ListedPhone& phone, const Text& uid) override {
        Bstr model(phone.model), serial(phone.serial);
        LONG result = -1;
        module_->DeleteCalendarItem(model.address(), serial.address(), Bstr(uid).get(), &result);
        return static_cast<Long>(result);
    }
    Long endCalendar(bool commit, std::vector<AddedItem>& added) override {
        constexpr LONG calendarKind = 2;
        return endSession(calendarKind, commit, added);
    }

    Long listFolder(const ListedPhone& phone, const Text& folder,
                    std::vector<FolderEntry>& entries) override {
        Bstr model(phone.model);
        const Bstr path(folder);
        OwnedSafeArray items;
        LONG result = -1;
        module_->GetDirContents(model.address(), items.address(), path.get(), &result);
        std::vector<DirItem> records;
        for (const tDirItem& item : slotsOf<tDirItem>(items))
            records.push_back({textOf(item.DisplayName), textOf(item.Name), /*FullName=*/{},
                               static_cast<Long>(item.Size), textOf(item.DateText),
                               static_cast<Long>(item.Flags)});
        entries = folderEntries(records);
        return static_cast<Long>(result);
    }
    Long getFile(const Text& phonePath, const std::string& localFolder) override {
        return withTexts(&_covNo2::GetFile, phonePath, fromUtf8(localFolder + '\\'));
    }
    Long putFile(const std::string& localFile, const Text& phoneFolder) override {
        return withTexts(&_covNo2::PutFile, fromUtf8(localFile), phoneFolder);
    }
    Long renameFile(const Text& phonePath, const Text& newName) override {
        return withTexts(&_covNo2::RenameFile, phonePath, newName);
    }
    Long deleteFile(const Text& phonePath) override { return withTexts(&_covNo2::DeleteFile, phonePath); }
    Long renameFolder(const Text& phonePath, const Text& newName) override {
        return withTexts(&_covNo2::RenameFolder, phonePath, newName);
    }
    Long createFolder(const Text& phonePath) override { return withTexts(&_covNo2::CreateFolder, phonePath); }
    Long deleteFolder(const Text& phonePath) override { return withTexts(&_covNo2::DeleteFolder, phonePath); }
    void endFiles() override {
        LONG result = 0;
        module_->EndFS(&result);
    }

  private:
    // What has no uid is no item.
    Long endSession(LONG kind, bool commit, std::vector<AddedItem>& added) {
        OwnedSafeArray temporaryIds, uids;
        LONG result = -1;
        module_->EndWriteSession(kind, temporaryIds.address(), uids.address(),
                                 commit ? VARIANT_TRUE : VARIANT_FALSE, &result);
        added.clear();
        const std::span<const BSTR> ids = slotsOf<BSTR>(temporaryIds), names = slotsOf<BSTR>(uids);
        for (std::size_t i = 0; i < std::min(ids.size(), names.size()); ++i)
            if (SysStringLen(names[i]) != 0) added.push_back({textOf(ids[i]), textOf(names[i])});
        return static_cast<Long>(result);
    }
    void giveTypeWords() {
        using PutWord = HRESULT (STDMETHODCALLTYPE _covNo2::*)(BSTR*);
        constexpr PutWord members[] = {&_covNo2::put_Meeting_,  &_covNo2::put_Call_,
                                       &_covNo2::put_Bithday_,  &_covNo2::put_Note_,
                                       &_covNo2::put_Reminder_, &_covNo2::put_Task_};
        for (std::size_t i = 0; i < std::size(members); ++i) {
            Bstr word(calendarTypeWords[i]);
            (module_.operator->()->*members[i])(word.address());
        }
    }
    static Long numberIn(VARIANT& result) {
        const Long number = V_VT(&result) == VT_I4 ? static_cast<Long>(V_I4(&result)) : -1;
        VariantClear(&result);
        return number;
    }
    Long connections() override {
        LONG result = -1;
        module_->GetConnections(&result);
        return static_cast<Long>(result);
    }
    Long changeTrust(const Text& address, Long what, const Text& passkey) override {
        Bstr named(address), secret(passkey);
        LONG result = -1;
        module_->ChangeDeviceTrustedState(named.address(), what, secret.get(), &result);
        if (secret.get()) SecureZeroMemory(secret.get(), SysStringByteLen(secret.get()));
        return static_cast<Long>(result);
    }
    Long writeData(const ListedPhone& phone, const Text& item) override {
        return withTexts(&_covNo2::WriteDataItem, phone.model, phone.serial, item);
    }
    Long deleteData(const ListedPhone& phone, const Text& item) override {
        Bstr model(phone.model), serial(phone.serial);
        const Bstr deleted(item);
        LONG result = -1;
        module_->DeleteDataItem(model.address(), serial.address(), deleted.get(), &result);
        return static_cast<Long>(result);
    }

    // Calls a member that takes texts by reference and returns a number.
    template <class Member, class... Texts>
    Long withTexts(Member member, const Texts&... texts) {
        LONG result = -1;
        (module_.operator->()->*member)(Bstr(texts).address()..., &result);
        return static_cast<Long>(result);
    }

    std::string connectivityFolder_;
    ComPointer<_covNo2> module_;
};

// The registered component; without one, the one that lies beside the program.
HRESULT createModule(ComPointer<_covNo2>& module) {
    CLSID classId;
    HRESULT result = CLSIDFromProgID(L"ovNo2.covNo2", &classId);
    if (SUCCEEDED(result))
        result = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, __uuidof(_covNo2), module.outAny());
    if (SUCCEEDED(result)) return result;

    const HMODULE library = LoadLibraryW((console::programFolder() / "ovNo2.dll").c_str());
    void* const entry =
        library ? reinterpret_cast<void*>(GetProcAddress(library, "DllGetClassObject")) : nullptr;
    const auto getClassObject = reinterpret_cast<LPFNGETCLASSOBJECT>(entry);
    if (!getClassObject) return result;
    ComPointer<IClassFactory> factory;
    result = getClassObject(__uuidof(covNo2), __uuidof(IClassFactory), factory.outAny());
    if (SUCCEEDED(result)) result = factory->CreateInstance(nullptr, __uuidof(_covNo2), module.outAny());
    return result;
}

// The registry names the folder of an installed library.
std::string defaultFolder() {
    return toUtf8(computer::machineValue(u"SOFTWARE\\PC Connectivity Solution", u"PlatformPath"));
}

// The module looks for its libraries by name and finds those that the process has loaded.
void loadConnectivity(const std::string& folder) {
    for (const char* name : {"ConnAPI", "DAAPI"}) {
        const fs::path file = console::pathOf(folder) / libraryFile(name);
        if (!LoadLibraryExW(file.c_str(), /*hFile=*/nullptr, LOAD_WITH_ALTERED_SEARCH_PATH))
            throw DriverMissing("--connectivity: " + console::textOf(file) +
                                " cannot be loaded: " + systemMessage(HRESULT_FROM_WIN32(GetLastError())));
    }
}

}  // namespace

std::unique_ptr<PhoneDriver> makePhoneDriver(const std::string& connectivityFolder) {
    const std::string folder = connectivityFolder.empty() ? defaultFolder() : connectivityFolder;
    if (!folder.empty() && (!connectivityFolder.empty() || fs::is_directory(console::pathOf(folder))))
        loadConnectivity(folder);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ComPointer<_covNo2> module;
    const HRESULT result = createModule(module);
    if (FAILED(result))
        throw DriverMissing("The phone driver cannot be created: " + systemMessage(result) +
                            "\nRegister it with register.cmd, which lies beside this program.");
    return std::make_unique<ComDriver>(folder, std::move(module));
}

std::string libraryFile(const std::string& name) {
    return name + ".dll";
}

std::filesystem::path pathOfModuleText(TextView text) {
    return std::wstring(text.begin(), text.end());
}

}  // namespace ovno2::host
