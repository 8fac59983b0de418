#include "host/archive/saved_files.h"

#include "host/archive/archive_names.h"
#include "host/archive/json_reading.h"
#include "host/archive/manifest.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/output/incoming.h"

namespace ovno2::host {

namespace {

// Nothing that was changed by hand leads to another place.
std::string placeMember(const rapidjson::Value& object, const char* name, const char* top) {
    std::string path = textMember(object, name);
    return path.starts_with(std::string(top) + "/") && staysInside(path) ? path : std::string();
}

SavedVersion versionOf(const rapidjson::Value& object, const char* place, const char* top) {
    SavedVersion version{placeMember(object, place, top), 0, textMember(object, "changed")};
    if (const auto* const size = findMember(object, "size"); size && size->IsUint64())
        version.size = size->GetUint64();
    return version;
}

SavedFile savedFileOf(rapidjson::Value& object) {
    SavedFile saved;
    saved.isFolder = textMember(object, "kind") != "file";
    saved.latest = versionOf(object, saved.isFolder ? "folder" : "file", archive::files);
    saved.goneSince = takeGone(object);
    saved.line = asLine(object);
    if (const auto* const replaced = findMember(object, "replaced"); replaced && replaced->IsArray())
        for (const rapidjson::Value& one : replaced->GetArray())
            saved.replaced.push_back(versionOf(one, "file", archive::replacedFiles));
    return saved;
}

std::pair<std::string, std::string> parted(const std::string& path) {
    const std::size_t end = path.rfind('/');
    return {path.substr(0, end == std::string::npos ? 0 : end), path.substr(end + 1)};
}

}  // namespace

SavedFiles::SavedFiles(const std::string& bytes, const std::string& name) {
    rapidjson::Document document;
    if (!readJson(bytes, document) || !document.IsArray())
        throw CommandFailure{failed, "\"" + name +
                                         "\" is damaged: it is no array in JSON. Move it away, or put back "
                                         "what it was."};
    for (rapidjson::Value& object : document.GetArray()) {
        const std::string path = textMember(object, "path");
        if (path.empty()) continue;
        SavedFile saved = savedFileOf(object);
        if (!saved.latest.file.empty()) {
            const auto [folder, own] = parted(saved.latest.file);
            namesIn(folder).give(fromUtf8(own));
        }
        files_.insert_or_assign(path, std::move(saved));
    }
}

SavedFile* SavedFiles::find(const std::string& phonePath) {
    const auto found = files_.find(phonePath);
    return found == files_.end() ? nullptr : &found->second;
}

LocalNames& SavedFiles::namesIn(const std::string& folder) {
    return names_[folder];
}

std::string SavedFiles::placeFor(const PhoneEntry& entry, const std::string& folder) {
    const SavedFile* const known = find(toUtf8(entry.path));
    if (known && !known->isSeen && known->isFolder == entry.isFolder && !known->latest.file.empty() &&
        parted(known->latest.file).first == folder)
        return known->latest.file;
    // A drive becomes a folder named by its letter.
    Text wanted = entry.name;
    if (entry.isDrive() && wanted.ends_with(u':')) wanted.pop_back();
    // Nothing may be taken for a folder in which files arrive.
    if (wanted.starts_with(fromUtf8(Incoming::prefix))) wanted = u"_" + wanted;
    return folder + "/" + toUtf8(namesIn(folder).give(wanted));
}

}  // namespace ovno2::host
