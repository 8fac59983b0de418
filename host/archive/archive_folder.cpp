#include "host/archive/archive_folder.h"

#include <algorithm>
#include <array>

#include "host/archive/archive_names.h"
#include "host/archive/archive_times.h"
#include "host/archive/json_reading.h"
#include "host/archive/manifest.h"
#include "host/files/fetcher.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/input_file.h"
#include "host/output/json.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr fs::perms forTheUser = fs::perms::owner_read | fs::perms::owner_write;

fs::path absoluteFolder(const std::string& name) {
    fs::path path = fs::absolute(console::pathOf(name)).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

// What lies in a folder, without what other programs have on its way there.
std::vector<std::string> entriesOf(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        if (std::string name = console::textOf(entry.path().filename()); !name.starts_with(Incoming::prefix))
            names.push_back(std::move(name));
    return names;
}

bool holdsJust(const fs::path& file, std::string_view bytes) {
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(file, error)) || fs::file_size(file, error) != bytes.size())
        return false;
    std::ifstream stream(file, std::ios::binary);
    std::array<char, 65536> piece;
    while (!bytes.empty()) {
        stream.read(piece.data(), piece.size());
        const auto count = static_cast<std::size_t>(stream.gcount());
        if (count == 0 || bytes.substr(0, count) != std::string_view(piece.data(), count)) return false;
        bytes.remove_prefix(count);
    }
    return true;
}

std::string phoneName(const std::string& model, const std::string& serial) {
    return (model.empty() ? "a phone" : model) + (serial.empty() ? "" : " with the serial number " + serial);
}

}  // namespace

ArchiveFolder::ArchiveFolder(const std::string& name, const ListedPhone& phone, std::chrono::sys_seconds now,
                             bool isTrial)
    : name_(name), path_(absoluteFolder(name)), isTrial_(isTrial) {
    if (const std::string wrong = arrivalObstacle(path_); !wrong.empty()) throw CommandFailure{failed, wrong};
    std::error_code error;
    const fs::file_status there = fs::status(path_, error);
    if (fs::exists(there) && !fs::is_directory(there)) fail({}, "it is no folder.");
    try {
        if (!isTrial_) {
            fs::create_directories(path_);
            workplace_ = Incoming::alone(path_);
            if (!workplace_) fail({}, "another program is archiving into it. Wait until that has ended.");
        } else {
            workplace_ = std::make_unique<Incoming>(fs::temp_directory_path());
        }
        if (!isTrial_ || fs::exists(there)) require(phone);
        if (!isTrial_) {
            std::error_code ignored;  // not every file system knows of it
            fs::permissions(path_, fs::perms::owner_all, ignored);
            mark(phone, now);
        }
    } catch (const fs::filesystem_error& failure) {
        fail({}, failure.code().message() + ".");
    }
}

fs::path ArchiveFolder::placeOf(const std::string& path) const {
    return path_ / console::pathOf(path);
}

void ArchiveFolder::fail(const std::string& path, const std::string& why) const {
    throw CommandFailure{
        failed, "\"" + (path.empty() ? name_ : console::textOf(placeOf(path))) + "\" is not written: " + why};
}

// Whether it is this phone's archive, or can become it; reads the manifest.
void ArchiveFolder::require(const ListedPhone& phone) {
    const std::optional<std::string> mark = read(archive::unfinished);
    const std::optional<std::string> details = read(archive::phone);
    if (!mark && !details) {
        if (!entriesOf(path_).empty())
            fail({}, "it is not empty, and no archive of a phone. Choose a new folder.");
        return;
    }
    rapidjson::Document known, begun;
    const rapidjson::Value* const whose =
        readJson(details ? *details : *mark, known) ? findMember(known, "phone") : nullptr;
    if (!whose)
        fail({}, std::string("whose archive it is cannot be told: ") +
                     (details ? archive::phone : archive::unfinished) + " in it is damaged.");
    const std::string serial = textMember(*whose, "serialNumber"), model = textMember(*whose, "model");
    if (serial != toUtf8(phone.serial) || (serial.empty() && model != toUtf8(phone.model)))
        fail({}, "it is the archive of another phone, " + phoneName(model, serial) + ".");
    if (mark) {
        if (readJson(*mark, begun)) interruptedRun_ = textMember(begun, "started");
        if (interruptedRun_.empty()) interruptedRun_ = "(unknown)";
    }
    if (const std::optional<std::string> text = read(archive::manifest)) {
        Manifest manifest = readManifest(*text);
        if (!manifest.problems.empty())
            fail({}, std::string(archive::manifest) +
                         " in it is damaged: \"ovphone verify\" says how. Move it " +
                         "away to have a new one made of what is there.");
        before_ = std::move(manifest.files);
    } else if (!mark) {
        interruptedRun_ = "(unknown)";  // what is there is taken as it is
    }
}

void ArchiveFolder::mark(const ListedPhone& phone, std::chrono::sys_seconds now) {
    JsonDocument document;
    document.StartObject();
    document.member("what", "An archive of this phone has begun here and not ended. Give the command again.");
    document.key("phone");
    document.StartObject();
    if (!phone.model.empty()) document.member("model", TextView(phone.model));
    if (!phone.serial.empty()) document.member("serialNumber", TextView(phone.serial));
    document.EndObject();
    document.member("started", utcText(now));
    document.EndObject();
    put(archive::unfinished, document.finished());
    now_.clear();
    written_ = 0;
}

std::optional<std::string> ArchiveFolder::read(const std::string& path) const {
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(placeOf(path), error))) return std::nullopt;
    return readInputFile(console::textOf(placeOf(path)));
}

std::optional<Digest> ArchiveFolder::digestBefore(const std::string& path) const {
    const auto found = before_.find(path);
    return found == before_.end() ? std::nullopt : std::optional(found->second);
}

void ArchiveFolder::put(const std::string& path, std::string_view bytes) {
    if (holdsJust(placeOf(path), bytes)) return keep(path, digestOf(bytes));
    ArchiveOutput output(*this, path);
    output.write(bytes);
    output.finish();
}

void ArchiveFolder::makeFolder(const std::string& path) {
    if (path.empty() || isTrial_ || folders_.contains(path)) return;
    const std::size_t end = path.rfind('/');
    if (end != std::string::npos) makeFolder(path.substr(0, end));
    const fs::path folder = placeOf(path);
    std::error_code error;
    const fs::file_status there = fs::symlink_status(folder, error);
    if (fs::is_symlink(there)) fail(path, "it is a link, which may lead anywhere.");
    if (fs::exists(there) && !fs::is_directory(there)) fail(path, "it is there and is no folder.");
    if (!fs::exists(there) && !fs::create_directory(folder, error)) fail(path, error.message() + ".");
    fs::permissions(folder, fs::perms::owner_all, error);
    folders_.insert(path);
}

void ArchiveFolder::place(const fs::path& file, const std::string& path, const Digest& digest) {
    ++written_;
    now_[path] = digest;
    if (isTrial_) return;
    if (const std::size_t end = path.rfind('/'); end != std::string::npos) makeFolder(path.substr(0, end));
    try {
        fs::permissions(file, forTheUser);
        fs::rename(file, placeOf(path));
    } catch (const fs::filesystem_error& failure) {
        fail(path, failure.code().message() + ".");
    }
}

void ArchiveFolder::keep(const std::string& path, const Digest& digest) {
    now_[path] = digest;
}

void ArchiveFolder::move(const std::string& from, const std::string& to, const Digest& digest) {
    place(placeOf(from), to, digest);
    before_.erase(from);
}

void ArchiveFolder::remove(const std::string& path) {
    before_.erase(path);
    now_.erase(path);
    std::error_code error;
    if (!isTrial_ && fs::is_regular_file(fs::symlink_status(placeOf(path), error)))
        fs::remove(placeOf(path), error);
}

std::vector<std::string> ArchiveFolder::untouchedBelow(const std::string& folder) const {
    std::vector<std::string> paths;
    for (auto one = before_.lower_bound(folder + "/");
         one != before_.end() && one->first.starts_with(folder + "/"); ++one)
        if (!now_.contains(one->first)) paths.push_back(one->first);
    return paths;
}

void ArchiveFolder::requireRoom() const {
    const fs::path probe = workplace() / "room";
    std::ofstream stream(probe, std::ios::binary);
    stream << std::string(std::size_t{64} << 10, 'x');
    stream.close();
    std::error_code ignored;
    fs::remove(probe, ignored);
    if (!stream) fail({}, "the disk is full.");
}

// What an interrupted run has brought here is part of the archive.
void ArchiveFolder::adopt() {
    constexpr std::string_view ours[] = {"contacts", "calendar",       "messages", "notes",
                                         "files",    "files-replaced", "page"};
    if (const std::optional<std::string> list = read(archive::fileList))
        now_.emplace(archive::fileList, digestOf(*list));
    for (const std::string_view top : ours) {
        std::error_code error;
        const fs::path folder = path_ / top;
        if (!fs::is_directory(fs::symlink_status(folder, error))) continue;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (!fs::is_regular_file(entry.symlink_status())) continue;
            std::string path = console::textOf(entry.path().lexically_relative(path_));
            if constexpr (fs::path::preferred_separator == '\\') std::ranges::replace(path, '\\', '/');
            if (now_.contains(path)) continue;
            const std::optional<Digest> digest = digestOfFile(entry.path());
            if (!digest) fail(path, "it cannot be read.");
            now_.emplace(path, *digest);
        }
    }
}

std::vector<std::string> ArchiveFolder::finish(bool isOver) {
    std::vector<std::string> gone;
    try {
        if (!interruptedRun_.empty() && !isTrial_) adopt();
        for (const auto& [path, digest] : before_) {
            if (now_.contains(path)) continue;
            std::error_code error;
            if (!fs::is_regular_file(fs::symlink_status(placeOf(path), error)))
                gone.push_back(path);
            else if (interruptedRun_.empty())
                now_.emplace(path, digest);
            else if (const std::optional<Digest> now = digestOfFile(placeOf(path)))
                now_.emplace(path, *now);
        }
        if (isTrial_) return gone;
        const std::map<std::string, Digest> files = now_;
        ArchiveOutput output(*this, archive::manifest);
        for (const auto& [path, digest] : files)
            output.write(manifestLine(path, digest));
        output.finish();
        now_.erase(archive::manifest);
        if (isOver) fs::remove(placeOf(archive::unfinished));
    } catch (const fs::filesystem_error& failure) {
        fail({}, failure.code().message() + ".");
    }
    return gone;
}

ArchiveOutput::ArchiveOutput(ArchiveFolder& folder, std::string path)
    : folder_(folder),
      path_(std::move(path)),
      file_(folder.workplace() / ("written-" + std::to_string(++folder.outputs_))) {
    stream_.open(file_, std::ios::binary | std::ios::trunc);
    if (!stream_) folder_.fail(path_, "the folder takes no files.");
}

ArchiveOutput::~ArchiveOutput() {
    stream_.close();
    std::error_code ignored;
    fs::remove(file_, ignored);
}

void ArchiveOutput::write(std::string_view bytes) {
    hash_.add(bytes);
    size_ += bytes.size();
    stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream_) folder_.fail(path_, "the disk may be full.");
}

void ArchiveOutput::finish() {
    stream_.close();
    if (!stream_) folder_.fail(path_, "the disk may be full.");
    const Digest digest = hash_.finished();
    const fs::path place = folder_.placeOf(path_);
    std::error_code error;
    const bool isThere = fs::is_regular_file(fs::symlink_status(place, error)) &&
                         fs::file_size(place, error) == size_ && digestOfFile(place) == digest;
    if (isThere)
        folder_.keep(path_, digest);
    else
        folder_.place(file_, path_, digest);
}

}  // namespace ovno2::host
