#include "host/files/sent_files.h"

#include <array>
#include <fstream>
#include <rapidjson/document.h>

#include "host/files/local_name.h"
#include "host/output/console.h"
#include "host/output/json.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

std::string lineOf(const Text& path, const SentFile& file) {
    rapidjson::StringBuffer buffer;
    JsonLine line(buffer);
    line.StartObject();
    line.member("path", TextView(path));
    line.member("size", file.sent.size);
    line.member("hash", file.sent.hash);
    line.member("phoneSize", file.phoneSize);
    line.key("phoneTime");
    line.Int64(file.phoneTime.time_since_epoch().count());
    line.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

void keepForTheUser(const fs::path& path, fs::perms rights) {
    std::error_code ignored;
    fs::permissions(path, rights, ignored);
}

}  // namespace

std::optional<Content> contentOf(const fs::path& file) {
    constexpr std::uint64_t start = 14695981039346656037u, prime = 1099511628211u;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    Content content{0, start};
    std::array<char, 65536> piece;
    do {
        stream.read(piece.data(), piece.size());
        const auto count = static_cast<std::size_t>(stream.gcount());
        for (std::size_t i = 0; i < count; ++i)
            content.hash = (content.hash ^ static_cast<unsigned char>(piece[i])) * prime;
        content.size += count;
    } while (stream);
    if (stream.bad()) return std::nullopt;
    return content;
}

SentFiles::SentFiles(const Text& phoneSerial) {
    if (phoneSerial.empty()) return;
    const fs::path folder = console::stateFolder() / "sent";
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) return;
    keepForTheUser(folder, fs::perms::owner_all);
    store_ = folder / console::pathOf(toUtf8(localName(phoneSerial)) + ".jsonl");
    load();
}

void SentFiles::load() {
    std::ifstream stream(store_);
    std::size_t lines = 0;
    for (std::string line; std::getline(stream, line); ++lines)
        takeLine(line);
    stream.close();
    // Most lines tell of files that were sent anew since.
    constexpr std::size_t slack = 1000;
    if (lines <= 2 * files_.size() + slack) return;
    const fs::path fresh = fs::path(store_) += ".new";
    std::ofstream anew(fresh, std::ios::binary | std::ios::trunc);
    keepForTheUser(fresh, fs::perms::owner_read | fs::perms::owner_write);
    for (const auto& [path, file] : files_)
        anew << lineOf(path, file);
    anew.close();
    std::error_code ignored;
    if (anew) fs::rename(fresh, store_, ignored);
}

void SentFiles::takeLine(const std::string& line) {
    rapidjson::Document record;
    record.Parse(line.c_str(), line.size());
    if (record.HasParseError() || !record.IsObject()) return;
    const auto member = [&](const char* name) -> const rapidjson::Value& {
        static const rapidjson::Value none;
        const auto found = record.FindMember(name);
        return found == record.MemberEnd() ? none : found->value;
    };
    const auto& path = member("path");
    const auto &size = member("size"), &hash = member("hash"), &phoneSize = member("phoneSize"),
               &phoneTime = member("phoneTime");
    if (!path.IsString() || !size.IsUint64() || !hash.IsUint64() || !phoneSize.IsUint64() ||
        !phoneTime.IsInt64())
        return;
    files_[fromUtf8({path.GetString(), path.GetStringLength()})] = {
        {size.GetUint64(), hash.GetUint64()},
        phoneSize.GetUint64(),
        std::chrono::sys_seconds(std::chrono::seconds(phoneTime.GetInt64()))};
}

const SentFile* SentFiles::find(const Text& phonePath) const {
    const auto found = files_.find(lowerCase(phonePath));
    return found == files_.end() ? nullptr : &found->second;
}

// A line is written in one piece, so that two programs that send at the same time do not mix theirs.
void SentFiles::remember(const Text& phonePath, const SentFile& file) {
    if (store_.empty()) return;
    const Text key = lowerCase(phonePath);
    files_[key] = file;
    std::ofstream stream(store_, std::ios::binary | std::ios::app);
    keepForTheUser(store_, fs::perms::owner_read | fs::perms::owner_write);
    stream << lineOf(key, file);
}

}  // namespace ovno2::host
