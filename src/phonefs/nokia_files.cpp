#include "phonefs/nokia_files.h"

#include "dates/date_text.h"
#include "dates/date_value.h"
#include "devices/devices.h"
#include "library/library_memory.h"
#include "library/library_texts.h"
#include "pc/registry_access.h"

namespace ovno2::NokiaFiles {

namespace {

using library::Handle;
using library::is;

constexpr library::Word fileSystemVersion = 30;
constexpr library::Word attributeLocked = 0x200;
constexpr library::Word attributeSpecial = 0x2000;
// A search that goes on beyond these never ends: cards stop at 65,536 entries, with names of 255 characters.
constexpr Long entryLimit = 100000;
constexpr std::size_t nameLimit = std::size_t{100000} * 256;  // characters of all names and labels

// A search in a phone folder; closing it is the last thing that happens to it on every way out.
class FolderSearch {
  public:
    FolderSearch() = default;
    ~FolderSearch() { end(); }
    FolderSearch(const FolderSearch&) = delete;
    FolderSearch& operator=(const FolderSearch&) = delete;

    // False, with the status logged, when the search cannot begin. With a model, a session that the library
    // no longer knows is opened again for it, once.
    bool begin(const Text& path, Text* model = nullptr) {
        const library::LibraryString wide(path);
        Long status = tryToBegin(wide.get());
        if (model && is(status, library::deviceListStale)) {
            if (OpenFS(*model, {}) < 0) return false;
            status = tryToBegin(wide.get());
        }
        if (status != 0) DebugLine(u"e1:", hex{status});
        return open_;
    }
    Handle handle() const { return search_; }
    Long end() { return std::exchange(open_, false) ? library::CONAFindEnd.tried(search_).valueOr(0) : 0; }

  private:
    Long tryToBegin(const char16_t* path) {
        if (!path) return library::notCalled;  // the library would search the root
        const library::Answer begun =
            library::CONAFindBegin.tried(stateOf<State>().FSHandle, /*options=*/0, &search_, path);
        open_ = begun.succeeded();
        return begun.status;
    }

    Handle search_ = 0;
    bool open_ = false;
};

void translateLabel(const State& state, Text& folder) {
    for (const State::Drive& drive : state.drives) {
        if (drive.label.empty() || !folder.starts_with(drive.label)) continue;
        folder = drive.name + folder.substr(drive.label.size());
        return;
    }
}

void learnLabel(State& state, const Text& name, const Text& label) {
    if (name.empty() || label.empty() || name == label) return;
    for (State::Drive& drive : state.drives)
        if (drive.label == label) {
            drive.name = name;
            return;
        }
    state.drives.push_back({label, name});
}

void fillFolder(State& state, const library::FolderRecord& record, DirItem& item) {
    const Text name = library::GetStringFromPointer(record.name);
    const Text label = library::GetStringFromPointer(record.label);
    item.DisplayName = u"[" + (label.empty() ? name : label) + u"]";
    item.Name = name;
    item.FullName = name;
    item.Flags = dirItemFolder | ((record.attributes & attributeLocked) == 0 ? dirItemChangeable : 0) |
                 ((record.attributes & attributeSpecial) != 0 ? dirItemSpecial : 0);
    learnLabel(state, name, label);
}

void fillFile(const Text& folder, const library::FileRecord& record, DirItem& item) {
    const Text name = library::GetStringFromPointer(record.name);
    item.DisplayName = name;
    item.Name = name;
    item.FullName = folder + u"\\" + name;
    item.Size = static_cast<Long>(record.size);
    attempt([&] {
        item.DateText =
            generalDateText(localFileTime((std::uint64_t{record.timeHigh} << 32) | record.timeLow));
    });
    item.Flags = (record.attributes & attributeLocked) == 0 ? dirItemChangeable : 0;
}

// The host's list on its way to being filled.
class Listing {
  public:
    explicit Listing(HostArray<DirItem>& items) : items_(items) {}

    // Adds all entries of one kind. False when the search failed.
    template <class Record, class Fill>
    bool add(const FolderSearch& search, const library::Function<library::Status(Handle, Record*)>& next,
             Fill&& fill) {
        for (;; ++index_) {
            Record record{};
            const Long status = next.tried(search.handle(), &record).status;
            if (status == 0)
                attempt([&] {
                    items_.extendTo(index_);
                    DirItem& item = items_.at(index_);
                    fill(record, item);
                    characters_ += item.Name.size() + item.DisplayName.size();
                });
            if (is(status, library::noMoreEntries)) return true;
            if (status != 0 || index_ >= entryLimit || characters_ > nameLimit) {
                DebugLine(u"e2:", decimal{index_}, u" ", hex{status});
                return false;
            }
        }
    }

  private:
    HostArray<DirItem>& items_;
    Long index_ = 0;
    std::size_t characters_ = 0;
};

// The phone's own form of a host path: "\" between the parts, none in front.
Text withoutLeadingSeparators(Text folder) {
    for (char16_t& c : folder)
        if (c == u'/') c = u'\\';
    return folder.substr(std::min(folder.find_first_not_of(u'\\'), folder.size()));
}

}  // namespace

Long OpenFS(Text& model, const Text& phoneId) {
    const RoutineLog log(u"OpenFS");
    State& state = stateOf<State>();
    if (model.empty()) attempt([&] { model = state.FSModel; });
    attempt([&] { state.FSModel = model; });
    DebugLine(decimal{library::FSAPI_GetAPIVersion.tried().valueOr(0)});
    Text serial;
    attempt([&] { serial = Devices::GetSerialNumber(model, phoneId, /*force=*/false); });
    if (serial.empty()) return -1;
    if (serial != state.FSSerial) state.drives.clear();
    attempt([&] { state.FSSerial = serial; });
    if (!library::FSAPI_Initialize.tried(fileSystemVersion, 0).succeeded()) return -2;
    const library::LibraryString wide(serial);
    library::Word anyMedium = 1;
    library::Word deviceId = 0;
    const Long status = library::CONAOpenFS.tried(wide.get(), &anyMedium, &state.FSHandle, &deviceId).status;
    if (status == 0) return 0;
    DebugLine(u"e1:", hex{status});
    state.FSHandle = 0;  // a handle from before would be used without another attempt to open
    return -3;
}

Long CloseFS() {
    State& state = stateOf<State>();
    if (state.FSHandle != 0) library::CONACloseFS.tried(state.FSHandle);
    library::FSAPI_Terminate.tried(0);
    state.FSHandle = 0;
    return 0;
}

Long ChangeDir(Text& path) {
    const RoutineLog log(u"ChangeDir");
    constexpr TextView rootPrefix = u"root/";
    if (path.starts_with(rootPrefix)) path.erase(0, rootPrefix.size());
    Long status = library::notCalled;
    attempt([&] {
        Text folder = replaceAll(path, u"/", u"\\");
        if (!folder.starts_with(u"\\\\")) folder = u"\\\\" + folder;
        const library::LibraryString wide(folder);
        status = library::CONASetCurrentFolder.tried(stateOf<State>().FSHandle, wide.get()).status;
    });
    return status == 0 ? 0 : -1;
}

Long GetDirContents(Text& model, HostArray<DirItem>& list, const Text& hostFolder) {
    const RoutineLog log(u"GetDirContents");
    State& state = stateOf<State>();
    if (state.FSHandle == 0 && OpenFS(model, {}) < 0) return -1;
    Text folder = hostFolder;
    translateLabel(state, folder);
    folder = withoutLeadingSeparators(folder);
    const Text searchPath = u"\\\\" + folder;
    Listing listing(list);
    {
        FolderSearch search;
        if (!search.begin(searchPath, &model) ||
            !listing.add(
                search, library::CONAFindNextFolder,
                [&](const library::FolderRecord& record, DirItem& item) { fillFolder(state, record, item); }))
            return -1;
    }
    FolderSearch search;
    if (!search.begin(searchPath) || !listing.add(search, library::CONAFindNextFile,
                                                  [&](const library::FileRecord& record, DirItem& item) {
                                                      fillFile(folder, record, item);
                                                  }))
        return -1;
    if (const Long ended = search.end(); ended != 0) DebugLine(u"e9:", hex{ended});
    return 0;
}

DateValue localFileTime(std::uint64_t fileTime) {
    State& state = stateOf<State>();
    if (!state.FSTimeBias) {
        const Text bias = Registry::GetRegValue(platform::localMachine,
                                                u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation",
                                                u"ActiveTimeBias");
        state.FSTimeBias = numericLong(bias);
    }
    DateValue local = dateZero;
    platform::SystemTime utc;
    if (!currentPlatform().clock().fileTimeToSystemTime(fileTime, utc)) return local;
    attempt([&] { local = addMinutes(dateOf(utc), -*state.FSTimeBias); });
    return local;
}

}  // namespace ovno2::NokiaFiles
