#include "simulator/images/files_image.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "simulator/base/text.h"
#include "simulator/images/date_text.h"
#include "simulator/images/json_text.h"
#include "simulator/images/json_writer.h"

namespace ovno2::simulator {
namespace {

// A file time counts 100 ns since 1 January 1601.
constexpr std::int64_t ticksPerSecond = 10000000;
constexpr std::int64_t secondsFrom1601To1970 = 11644473600;

std::int64_t daysSince1970(int year, int month, int day) {
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    return std::chrono::sys_days(date).time_since_epoch().count();
}

std::uint64_t readTime(const JsonNode& node) {
    const std::string_view text = node.utf8();
    library::DateRecord date{};
    const bool complete = text.size() == 20 && text.back() == 'Z' && parseDate(text.substr(0, 19), date);
    if (!complete || date.year < 1601 || date.month == 0 || date.day == 0) {
        node.fail("a time that there is, such as \"2008-07-19T16:04:11Z\"");
    }
    const std::int64_t seconds = daysSince1970(date.year, date.month, date.day) * 86400 + date.hour * 3600 +
                                 date.minute * 60 + date.second + secondsFrom1601To1970;
    return static_cast<std::uint64_t>(seconds * ticksPerSecond);
}

std::string timeText(std::uint64_t time) {
    const std::int64_t seconds = static_cast<std::int64_t>(time) / ticksPerSecond - secondsFrom1601To1970;
    const std::chrono::sys_seconds moment{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(moment - day);
    char text[48];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

bool isDriveLetter(const std::string& name) {
    return name.size() == 1 && name[0] >= 'A' && name[0] <= 'Z';
}

void readDrive(const JsonNode& node, Drive& drive) {
    node.expectMembers({"label", "memoryType", "capacity"});
    drive.label = node.optionalText("label");
    drive.memoryType = node.optionalText("memoryType");
    if (const auto capacity = node.optionalMember("capacity")) {
        const std::optional<std::int64_t> bytes = capacity->integer();
        if (!bytes || *bytes < 0) capacity->fail("a number of bytes");
        drive.capacity = static_cast<std::uint64_t>(*bytes);
    }
}

std::filesystem::path pathBelow(std::string_view path, const FileSettings& settings) {
    return settings.root / std::filesystem::path(std::u8string(path.begin(), path.end()));
}

bool staysInside(std::string_view path) {
    const std::filesystem::path relative(std::u8string(path.begin(), path.end()));
    return !path.empty() && !relative.has_root_path() &&
           std::none_of(relative.begin(), relative.end(), [](const auto& part) { return part == ".."; });
}

std::string pathNow(std::string_view path, const RenameUnderWay& renamed) {
    return renamed.from.empty() ? std::string(path)
                                : pathAfterRename(std::string(path), renamed.from, renamed.to);
}

bool isThere(std::string_view path, const FileSettings& settings) {
    std::error_code ignored;
    return std::filesystem::exists(pathBelow(path, settings), ignored);
}

// A rename that was interrupted: whether the entry got its new name shows on disk. Empty names when it did
// not.
RenameUnderWay readRename(const JsonNode& node, const FileSettings& settings) {
    node.expectMembers({"from", "to"});
    const auto path = [&](const char* name) {
        const JsonNode member = node.member(name);
        if (!staysInside(member.utf8())) member.fail("the path of an entry, such as \"C/Images/beach.jpg\"");
        return std::string(member.utf8());
    };
    RenameUnderWay rename{path("from"), path("to")};
    return isThere(rename.to, settings) && !isThere(rename.from, settings) ? rename : RenameUnderWay();
}

// The path of an entry that must exist, by the name that it has now.
std::string readEntry(const JsonNode& node, std::string_view path, const RenameUnderWay& renamed,
                      const FileSettings& settings) {
    std::string now = pathNow(path, renamed);
    if (!staysInside(now) || !isThere(now, settings)) {
        node.fail("the path of an entry, such as \"C/Images/beach.jpg\"");
    }
    return now;
}

// A folder that a copy of the image may have lost, since not everything that carries files carries empty
// folders. An image that nobody may write to stays without it.
std::string readEmptyFolder(const JsonNode& node, const RenameUnderWay& renamed,
                            const FileSettings& settings) {
    std::string path = pathNow(node.utf8(), renamed);
    const bool onDrive = path.size() > 2 && path[1] == '/' && settings.drives.contains(path.substr(0, 1));
    if (!staysInside(path) || !onDrive) node.fail("the path of a folder on a drive, such as \"C/Games\"");
    std::error_code ignored;
    std::filesystem::create_directories(pathBelow(path, settings), ignored);
    return path;
}

// True when a rename was under way.
bool readSettings(const JsonNode& root, FileSettings& settings) {
    root.expectFormat();
    root.expectMembers(
        {"format", "drives", "emptyFolders", "readOnly", "attributes", "times", "nameLength", "renaming"});
    const auto renaming = root.optionalMember("renaming");
    const RenameUnderWay renamed = renaming ? readRename(*renaming, settings) : RenameUnderWay();
    if (const auto drives = root.optionalMember("drives")) {
        drives->forEachMember([&](std::string_view name, const JsonNode& node) {
            const std::string letter(name);
            if (!settings.drives.contains(letter)) node.fail("the letter of a folder in \"files\"");
            readDrive(node, settings.drives[letter]);
        });
    }
    if (const auto folders = root.optionalMember("emptyFolders")) {
        folders->forEachElement([&](const JsonNode& node, std::size_t) {
            settings.emptyFolders.insert(readEmptyFolder(node, renamed, settings));
        });
    }
    if (const auto readOnly = root.optionalMember("readOnly")) {
        readOnly->forEachElement([&](const JsonNode& node, std::size_t) {
            settings.readOnly.insert(readEntry(node, node.utf8(), renamed, settings));
        });
    }
    if (const auto attributes = root.optionalMember("attributes")) {
        attributes->forEachMember([&](std::string_view path, const JsonNode& node) {
            settings.attributes[readEntry(node, path, renamed, settings)] = node.word();
        });
    }
    if (const auto times = root.optionalMember("times")) {
        times->forEachMember([&](std::string_view path, const JsonNode& node) {
            settings.times[readEntry(node, path, renamed, settings)] = readTime(node);
        });
    }
    if (const auto length = root.optionalMember("nameLength"))
        settings.nameLength = length->wordBetween(1, 4096);
    return renaming.has_value();
}

// A list or an object that is left out when there is nothing in it.
template <typename Texts>
void writeList(PrettyJsonWriter& writer, const char* name, const Texts& texts) {
    if (texts.empty()) return;
    writer.Key(name);
    writer.StartArray();
    for (const std::string& text : texts)
        writer.value(text);
    writer.EndArray();
}

template <typename Map, typename WriteValue>
void writeMembers(PrettyJsonWriter& writer, const char* name, const Map& map, WriteValue writeValue) {
    if (map.empty()) return;
    writer.Key(name);
    writer.StartObject();
    for (const auto& [key, value] : map) {
        writer.Key(key.c_str());
        writeValue(value);
    }
    writer.EndObject();
}

std::array<system::FileStamp, 2> stampsOf(const std::filesystem::path& image) {
    return {system::stampOf(image), system::stampOf(image / "files.json")};
}

}  // namespace

void readFilesImage(Phone& phone) {
    std::error_code failed;
    if (!std::filesystem::is_directory(phone.image / "files", failed)) {
        const std::filesystem::path file = phone.image / "files.json";
        if (std::filesystem::exists(file, failed))
            throw ImageError(file, "/", "a folder \"files\" beside it");
        return;
    }
    phone.files = std::make_shared<FileSettings>();
    refreshFiles(phone.image, *phone.files);
}

bool filesHaveChanged(const std::filesystem::path& image, const FileSettings& settings) {
    return stampsOf(image) != settings.seen;
}

void refreshFiles(const std::filesystem::path& image, FileSettings& settings) {
    const std::filesystem::path file = image / "files.json";
    FileSettings found;
    found.root = image / "files";
    found.seen = stampsOf(image);
    for (const auto& entry : std::filesystem::directory_iterator(found.root)) {
        const std::string name = entry.path().filename().string();
        if (!entry.is_directory() || !isDriveLetter(name)) {
            throw ImageError(entry.path(), "", "a folder named by a drive letter from A to Z");
        }
        found.drives[name];
    }
    std::error_code failed;
    if (std::filesystem::exists(file, failed)) {
        JsonText text(file);
        if (readSettings(text.parse(), found)) {
            try {
                writeFilesJson(image, found);
            } catch (const std::system_error&) {
                // An image that nobody may write to: the rename is settled for this process alone.
            }
        }
    }
    settings = std::move(found);
}

void markFilesChanged(const std::filesystem::path& image, FileSettings& settings) {
    system::touchFolder(image);
    settings.seen = stampsOf(image);
}

void writeFilesJson(const std::filesystem::path& image, const FileSettings& settings,
                    const std::optional<RenameUnderWay>& renaming) {
    PrettyJsonWriter writer;
    writer.StartObject();
    writer.member("format", 1);
    writeMembers(writer, "drives", settings.drives, [&](const Drive& drive) {
        writer.StartObject();
        if (drive.label) writer.member("label", *drive.label);
        if (drive.memoryType) writer.member("memoryType", *drive.memoryType);
        if (drive.capacity) writer.member("capacity", *drive.capacity);
        writer.EndObject();
    });
    writeList(writer, "emptyFolders", settings.emptyFolders);
    writeList(writer, "readOnly", settings.readOnly);
    writeMembers(writer, "attributes", settings.attributes,
                 [&](Word bits) { writer.value("0x" + hexNumber(bits)); });
    writeMembers(writer, "times", settings.times, [&](std::uint64_t time) { writer.value(timeText(time)); });
    writer.member("nameLength", settings.nameLength);
    if (renaming) {
        writer.Key("renaming");
        writer.StartObject();
        writer.member("from", renaming->from);
        writer.member("to", renaming->to);
        writer.EndObject();
    }
    writer.EndObject();
    writer.layout("\n");
    IncomingFile(image, writer.text()).moveTo(image / "files.json");
}

}  // namespace ovno2::simulator
