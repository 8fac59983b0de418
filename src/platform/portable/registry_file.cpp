#include "platform/portable/registry_file.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/utf8.h"
#include "base/values.h"
#include "platform/portable/code_pages.h"

namespace ovno2::platform::portable {

namespace {

constexpr TextView version4Header = u"REGEDIT4";
constexpr TextView version5Header = u"Windows Registry Editor Version 5.00";
constexpr TextView classesPath = u"HKEY_LOCAL_MACHINE\\Software\\Classes";
constexpr std::array<TextView, 5> hiveNames = {u"HKEY_CLASSES_ROOT", u"HKEY_CURRENT_USER",
                                               u"HKEY_LOCAL_MACHINE", u"HKEY_USERS", u"HKEY_CURRENT_CONFIG"};

bool isBlank(char16_t c) {
    return c == u' ' || c == u'\t';
}

TextView trimmed(TextView line) {
    while (!line.empty() && isBlank(line.front()))
        line.remove_prefix(1);
    while (!line.empty() && isBlank(line.back()))
        line.remove_suffix(1);
    return line;
}

// True for a key and for those below it.
bool isWithin(TextView path, TextView key) {
    return equalsIgnoringCase(path.substr(0, key.size()), key) &&
           (path.size() == key.size() || path[key.size()] == u'\\');
}

// The path under which a key named in a file is kept.
Text keptPath(TextView path) {
    while (!path.empty() && path.back() == u'\\')
        path.remove_suffix(1);
    constexpr TextView classes = hiveNames[0];
    return isWithin(path, classes) ? Text(classesPath).append(path.substr(classes.size())) : Text(path);
}

bool isInKnownHive(TextView path) {
    return std::ranges::any_of(hiveNames, [&](TextView hive) { return isWithin(path, hive); });
}

int hexDigit(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    return -1;
}

bool isTextType(Long type) {
    return type == static_cast<Long>(RegistryType::text) ||
           type == static_cast<Long>(RegistryType::expandableText) ||
           type == static_cast<Long>(RegistryType::textList);
}

Text quoted(TextView text) {
    Text result = u"\"";
    for (char16_t c : text) {
        if (c == u'\\' || c == u'"') result.push_back(u'\\');
        result.push_back(c);
    }
    return result.append(u"\"");
}

}  // namespace

// Goes through the text line by line and fills the file's keys.
class RegistryFile::Reader {
  public:
    explicit Reader(RegistryFile& file) : file_(file), text_(file.text_) {}

    void readAll() {
        bool header = false;
        while (at_ < text_.size()) {
            lineStart_ = at_;
            const TextView line = trimmed(currentLine());
            if (line.empty() || line.front() == u';') {
                endLine();
            } else if (!header && (line == version4Header || line.starts_with(u"Windows Registry Editor"))) {
                header = true;
                endLine();
            } else if (line.front() == u'[') {
                readKeyLine(line);
                endLine();
            } else {
                readValueLine();
            }
        }
    }

  private:
    TextView currentLine() const {
        const std::size_t end = lineEndFrom(at_);
        return TextView(text_).substr(at_, end - at_);
    }
    std::size_t lineEndFrom(std::size_t from) const {
        return std::min(text_.find_first_of(u"\r\n", from), text_.size());
    }
    void endLine() {
        at_ = lineEndFrom(at_);
        if (at_ < text_.size() && text_[at_] == u'\r') ++at_;
        if (at_ < text_.size() && text_[at_] == u'\n') ++at_;
        ++lineNumber_;
    }
    bool atLineEnd() const { return at_ >= text_.size() || text_[at_] == u'\r' || text_[at_] == u'\n'; }
    void skipBlanks() {
        while (at_ < text_.size() && isBlank(text_[at_]))
            ++at_;
    }
    bool take(char16_t c) {
        if (at_ >= text_.size() || text_[at_] != c) return false;
        ++at_;
        return true;
    }
    bool take(TextView word) {  // without regard to case
        if (!equalsIgnoringCase(TextView(text_).substr(at_, word.size()), word)) return false;
        at_ += word.size();
        return true;
    }
    void damage(std::size_t line, const char* reason) { file_.damages_.push_back({line, reason}); }

    void readKeyLine(TextView line) {
        key_ = nullptr;
        inDeletedKey_ = false;
        const std::size_t end = line.rfind(u']');
        if (end == TextView::npos) return damage(lineNumber_, "the key has no closing bracket");
        TextView path = line.substr(1, end - 1);
        const bool deletes = path.starts_with(u'-');
        if (deletes) path.remove_prefix(1);
        const Text kept = keptPath(path);
        if (!isInKnownHive(kept)) return damage(lineNumber_, "the key names no known hive");
        inDeletedKey_ = deletes;
        if (deletes) return file_.deleteKey(kept);
        key_ = &file_.addKey(kept);
        std::size_t next = lineEndFrom(at_);
        if (next < text_.size() && text_[next] == u'\r') ++next;
        if (next < text_.size() && text_[next] == u'\n') ++next;
        key_->insertAt = next;
    }

    void readValueLine() {
        const std::size_t firstLine = lineNumber_;
        Text name;
        RegistryValue value;
        bool deletes = false;
        if (const char* reason = readValue(name, value, deletes)) {
            damage(firstLine, reason);
            // A damaged value loses its first line only, so that a missing quote does not take others along.
            at_ = lineStart_;
            lineNumber_ = firstLine;
            return endLine();
        }
        endLine();
        if (!key_) {
            if (!inDeletedKey_) damage(firstLine, "the value belongs to no key");
            return;
        }
        key_->insertAt = at_;
        if (deletes) {
            key_->values.erase(name);
            return;
        }
        Value& known = key_->values[name];
        known.places.push_back({lineStart_, at_});
        if (file_.version4_ && isTextType(value.type))
            file_.version4Values_.push_back({{lineStart_, at_}, file_.lineFor(name, value)});
        known.value = std::move(value);
    }

    // Null, or what is wrong with the line. Stops at the end of the value's last line.
    const char* readValue(Text& name, RegistryValue& value, bool& deletes) {
        skipBlanks();
        if (!take(u'@') && !readQuoted(name)) return "not a line of a registry file";
        skipBlanks();
        if (!take(u'=')) return "the value has no equals sign";
        skipBlanks();
        if (take(u'-')) {
            deletes = true;
        } else if (at_ < text_.size() && text_[at_] == u'"') {
            value.type = static_cast<Long>(RegistryType::text);
            if (!readQuoted(value.text)) return "the text has no closing quote";
            value.text.push_back(u'\0');
        } else if (take(u"dword:")) {
            value.type = static_cast<Long>(RegistryType::number);
            if (!readHexNumber(value.number)) return "the number is not hexadecimal";
        } else if (take(u"hex")) {
            if (!readBytes(value)) return "the list of bytes is damaged";
        } else {
            return "the value is of no known kind";
        }
        skipBlanks();
        return atLineEnd() || text_[at_] == u';' ? nullptr : "there is more behind the value";
    }

    // A quoted text with its escapes. Line breaks inside belong to it, as exports write them, unless the next
    // line starts like an entry of its own.
    bool readQuoted(Text& to) {
        if (!take(u'"')) return false;
        while (at_ < text_.size()) {
            const char16_t c = text_[at_++];
            if (c == u'"') return true;
            if (c == u'\\' && at_ < text_.size() && (text_[at_] == u'\\' || text_[at_] == u'"')) {
                to.push_back(text_[at_++]);
                continue;
            }
            to.push_back(c);
            if (c != u'\n') continue;
            ++lineNumber_;
            const TextView line = trimmed(currentLine());
            if (line.starts_with(u'[') || line.starts_with(u"@=") ||
                (line.starts_with(u'"') && line.find(u"\"=", 1) != TextView::npos))
                return false;
        }
        return false;
    }

    bool readHexNumber(std::uint32_t& number) {
        number = 0;
        int digits = 0;
        for (int digit = 0; at_ < text_.size() && (digit = hexDigit(text_[at_])) >= 0; ++at_, ++digits)
            number = number << 4 | static_cast<std::uint32_t>(digit);
        return digits >= 1 && digits <= 8;
    }

    // Behind "hex": an optional type in parentheses, a colon, bytes with commas between, over several lines
    // when a backslash ends them.
    bool readBytes(RegistryValue& value) {
        std::uint32_t type = static_cast<std::uint32_t>(RegistryType::binary);
        if (take(u'(') && (!readHexNumber(type) || !take(u')'))) return false;
        if (!take(u':')) return false;
        std::string bytes;
        for (;;) {
            skipBlanks();
            if (take(u'\\')) {
                skipBlanks();
                if (!atLineEnd()) return false;
                endLine();
                continue;
            }
            if (atLineEnd() || text_[at_] == u';') break;
            std::uint32_t byte = 0;
            if (!readHexNumber(byte) || byte > 0xFF) return false;
            bytes.push_back(static_cast<char>(byte));
            skipBlanks();
            if (!take(u',') && !atLineEnd() && text_[at_] != u';') return false;
        }
        value.type = static_cast<Long>(type);
        if (isTextType(value.type)) {
            value.text = file_.version4_ ? file_.ansiPage_->fromAnsi(bytes) : fromUtf16Bytes(bytes);
        } else if (value.type == static_cast<Long>(RegistryType::number)) {
            for (std::size_t i = 0; i < bytes.size() && i < sizeof value.number; ++i)
                value.number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << 8 * i;
        } else {
            value.bytes = std::move(bytes);
        }
        return true;
    }

    RegistryFile& file_;
    const Text& text_;
    Key* key_ = nullptr;  // the section the next value belongs to
    bool inDeletedKey_ = false;
    std::size_t at_ = 0;
    std::size_t lineStart_ = 0;
    std::size_t lineNumber_ = 1;
};

RegistryFile::RegistryFile(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE") || (bytes.size() >= 2 && bytes[1] == '\0')) {
        encoding_ = Encoding::utf16;
        text_ = fromUtf16Bytes(bytes.starts_with("\xFF\xFE") ? bytes.substr(2) : bytes);
        reread();
    } else if (bytes.starts_with("\xEF\xBB\xBF")) {
        encoding_ = Encoding::markedUtf8;
        text_ = fromUtf8(bytes.substr(3));
        reread();
    } else if (bytes.substr(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()))
                   .starts_with("REGEDIT4")) {
        version4_ = true;
        readAnsi(bytes);
    } else if (readUtf8(bytes, text_)) {
        reread();
    } else {
        readAnsi(bytes);
    }
}

// The file itself may say which page it is written in.
void RegistryFile::readAnsi(std::string_view bytes) {
    ansiPage_ = &usualCodePageTable();
    text_ = ansiPage_->fromAnsi(bytes);
    reread();
    const RegistryValue* named =
        find(u"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", u"ACP");
    const Long number = named ? numericLong(named->text) : 0;
    if (number <= 0 || static_cast<std::uint32_t>(number) == usualCodePage) return;
    const CodePageTable* page = codePageTable(static_cast<std::uint32_t>(number));
    if (!page) return;
    ansiPage_ = page;
    text_ = ansiPage_->fromAnsi(bytes);
    reread();
}

void RegistryFile::reread() {
    keys_.clear();
    damages_.clear();
    version4Values_.clear();
    lineEnd_ = text_.find(u"\r\n") != Text::npos ? u"\r\n" : u"\n";
    Reader(*this).readAll();
}

const RegistryFile::Key* RegistryFile::findKey(TextView path) const {
    const auto found = keys_.find(path);
    return found == keys_.end() ? nullptr : &found->second;
}

bool RegistryFile::hasKey(TextView path) const {
    return findKey(path) != nullptr;
}

const RegistryValue* RegistryFile::find(TextView path, TextView name) const {
    const Key* key = findKey(path);
    if (!key) return nullptr;
    const auto found = key->values.find(name);
    return found == key->values.end() ? nullptr : &found->second.value;
}

// A key brings all keys above it along.
RegistryFile::Key& RegistryFile::addKey(TextView path) {
    const auto [place, added] = keys_.try_emplace(Text(path));
    Key& key = place->second;  // stays where it is when the table grows
    TextView above = path;
    for (std::size_t end = above.rfind(u'\\'); added && end != TextView::npos; end = above.rfind(u'\\')) {
        above = above.substr(0, end);
        if (!keys_.try_emplace(Text(above)).second) break;
    }
    return key;
}

void RegistryFile::deleteKey(TextView path) {
    std::erase_if(keys_, [&](const auto& key) { return isWithin(key.first, path); });
}

// FNV-1a over the letters of the basic alphabet in lower case. Others do not count: what differs only in
// them, or in their case, is told apart by comparing.
std::size_t RegistryFile::NameHash::operator()(TextView name) const {
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const char16_t c : name) {
        if (c >= 0x80) continue;
        hash = (hash ^ static_cast<std::uint64_t>(c >= u'A' && c <= u'Z' ? c + 32 : c)) * 0x100000001B3u;
    }
    return static_cast<std::size_t>(hash);
}

Text RegistryFile::lineFor(TextView name, const RegistryValue& value) const {
    Text line = name.empty() ? Text(u"@") : quoted(name);
    line.push_back(u'=');
    const auto type = static_cast<RegistryType>(value.type);
    TextView body = value.text;
    if (body.ends_with(u'\0')) body.remove_suffix(1);
    if (type == RegistryType::text && body.find_first_of(TextView(u"\0\r\n", 3)) == TextView::npos &&
        isWellFormed(body))
        return line + quoted(body) + lineEnd_;
    if (type == RegistryType::number) {
        const Text digits = lowerCase(hexText(value.number));
        return line.append(u"dword:").append(8 - digits.size(), u'0').append(digits).append(lineEnd_);
    }
    line.append(u"hex");
    if (type != RegistryType::binary)
        line.append(u"(").append(lowerCase(hexText(static_cast<std::uint32_t>(value.type)))).append(u")");
    line.push_back(u':');
    constexpr std::size_t widest = 76;
    std::size_t lineLength = line.size();
    const std::string bytes = isTextType(value.type) ? toUtf16Bytes(value.text) : value.bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0) {
            line.push_back(u',');
            if (++lineLength >= widest) {
                line.append(u"\\").append(lineEnd_).append(u"  ");
                lineLength = 2;
            }
        }
        constexpr TextView digits = u"0123456789abcdef";
        const auto byte = static_cast<unsigned char>(bytes[i]);
        line.push_back(digits[byte >> 4]);
        line.push_back(digits[byte & 15]);
        lineLength += 2;
    }
    return line.append(lineEnd_);
}

// Before the first edit of a REGEDIT4 file: what was ANSI in it becomes what version 5 writes.
void RegistryFile::upgradeToVersion5() {
    if (!version4_) return;
    for (std::size_t i = version4Values_.size(); i-- > 0;) {
        const auto& [place, line] = version4Values_[i];
        text_.replace(place.begin, place.end - place.begin, line);
    }
    const std::size_t header = text_.find(version4Header);
    text_.replace(header, version4Header.size(), version5Header);
    version4_ = false;
    reread();
}

void RegistryFile::insertLines(std::size_t at, Text lines) {
    if (at > 0 && text_[at - 1] != u'\n' && text_[at - 1] != u'\r') lines.insert(0, lineEnd_);
    text_.insert(at, lines);
    reread();
}

void RegistryFile::createKey(TextView path) {
    if (hasKey(path)) return;
    upgradeToVersion5();
    Text lines;
    if (text_.empty()) lines.append(version5Header).append(lineEnd_);
    lines.append(lineEnd_).append(u"[").append(path).append(u"]").append(lineEnd_);
    insertLines(text_.size(), std::move(lines));
}

void RegistryFile::set(TextView path, TextView name, const RegistryValue& value) {
    upgradeToVersion5();
    const Key* key = findKey(path);
    if (!key || key->insertAt == Text::npos) {
        // A key known only from those below it gets a section of its own.
        keys_.erase(Text(path));
        createKey(path);
        key = findKey(path);
    }
    const Text line = lineFor(name, value);
    const auto known = key->values.find(name);
    if (known == key->values.end()) return insertLines(key->insertAt, line);
    const Place place = known->second.places.back();
    text_.replace(place.begin, place.end - place.begin, line);
    reread();
}

bool RegistryFile::remove(TextView path, TextView name) {
    if (!find(path, name)) return false;
    upgradeToVersion5();
    const std::vector<Place> places = findKey(path)->values.find(name)->second.places;
    for (std::size_t i = places.size(); i-- > 0;)
        text_.erase(places[i].begin, places[i].end - places[i].begin);
    reread();
    return true;
}

std::string RegistryFile::bytes() const {
    switch (encoding_) {
        case Encoding::utf16:
            return "\xFF\xFE" + toUtf16Bytes(text_);
        case Encoding::markedUtf8:
            return "\xEF\xBB\xBF" + toUtf8(text_);
        case Encoding::utf8:
            break;
    }
    return toUtf8(text_);
}

}  // namespace ovno2::platform::portable
