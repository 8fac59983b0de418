#include "simulator/images/files_image.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "simulator/base/text.h"
#include "simulator/images/date_text.h"
#include "simulator/images/json_text.h"
#include "simulator/images/json_writer.h"
#include "simulator/system/system.h"

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
        node.fail("a time such as \"2008-07-19T16:04:11Z\"");
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

// The path of an entry that must exist.
std::string readEntry(const JsonNode& node, std::string_view path, const FileSettings& settings) {
    std::error_code ignored;
    if (!staysInside(path) || !std::filesystem::exists(pathBelow(path, settings), ignored)) {
        node.fail("the path of an entry, such as \"C/Images/beach.jpg\"");
    }
    return std::string(path);
}

// A folder that a copy of the image may have lost, since not everything that carries files carries empty
// folders. An image that nobody may write to stays without it.
std::string readEmptyFolder(const JsonNode& node, const FileSettings& settings) {
    std::string path(node.utf8());
    const bool onDrive = path.size() > 2 && path[1] == '/' && settings.drives.contains(path.substr(0, 1));
    if (!staysInside(path) || !onDrive) node.fail("the path of a folder on a drive, such as \"C/Games\"");
    std::error_code ignored;
    std::filesystem::create_directories(pathBelow(path, settings), ignored);
    return path;
}

void readSettings(const JsonNode& root, FileSettings& settings) {
    root.expectFormat();
    root.expectMembers({"format", "drives", "emptyFolders", "readOnly", "attributes", "times", "nameLength"});
    if (const auto drives = root.optionalMember("drives")) {
        drives->forEachMember([&](std::string_view name, const JsonNode& node) {
            const std::string letter(name);
            if (!settings.drives.contains(letter)) node.fail("the letter of a folder in \"files\"");
            readDrive(node, settings.drives[letter]);
        });
    }
    if (const auto folders = root.optionalMember("emptyFolders")) {
        folders->forEachElement([&](const JsonNode& node, std::size_t) {
            settings.emptyFolders.insert(readEmptyFolder(node, settings));
        });
    }
    if (const auto readOnly = root.optionalMember("readOnly")) {
        readOnly->forEachElement([&](const JsonNode& node, std::size_t) {
            settings.readOnly.insert(readEntry(node, node.utf8(), settings));
        });
    }
    if (const auto attributes = root.optionalMember("attributes")) {
        attributes->forEachMember([&](std::string_view path, const JsonNode& node) {
            settings.attributes[readEntry(node, path, settings)] = node.word();
        });
    }
    if (const auto times = root.optionalMember("times")) {
        times->forEachMember([&](std::string_view path, const JsonNode& node) {
            settings.times[readEntry(node, path, settings)] = readTime(node);
        });
    }
    if (const auto length = root.optionalMember("nameLength"))
        settings.nameLength = length->wordBetween(1, 4096);
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

}  // namespace

void readFilesImage(Phone& phone) {
    const std::filesystem::path file = phone.image / "files.json";
    auto settings = std::make_shared<FileSettings>();
    settings->root = phone.image / "files";
    std::error_code failed;
    const bool described = std::filesystem::exists(file, failed);
    if (!std::filesystem::is_directory(settings->root, failed)) {
        if (described) throw ImageError(file, "/", "a folder \"files\" beside it");
        return;
    }
    for (const auto& entry : std::filesystem::directory_iterator(settings->root)) {
        const std::string name = entry.path().filename().string();
        if (!entry.is_directory() || !isDriveLetter(name)) {
            throw ImageError(entry.path(), "/", "a folder named by a drive letter from A to Z");
        }
        settings->drives[name];
    }
    if (described) {
        readSettings(JsonText(file).parse(), *settings);
    }
    phone.files = std::move(settings);
}

void writeFilesJson(const std::filesystem::path& image, const FileSettings& settings) {
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
    writer.EndObject();
    const std::filesystem::path incoming = image / ".incoming-files.json";
    writer.layout("\n");
    system::writeDurably(incoming, writer.text());
    system::replaceDurably(incoming, image / "files.json");
}

}  // namespace ovno2::simulator
