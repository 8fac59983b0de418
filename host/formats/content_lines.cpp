#include "host/formats/content_lines.h"

#include <algorithm>

#include "host/formats/charset.h"
#include "host/formats/transfer_encodings.h"

namespace ovno2::host {

namespace {

constexpr std::string_view blanks = " \t";

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string uppercased(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), upper);
    return result;
}

bool startsWithWord(std::string_view text, std::string_view word) {
    return text.size() >= word.size() && uppercased(text.substr(0, word.size())) == word;
}

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Letters, digits, and what programs put into names beside them.
bool isName(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        return (upper(c) >= 'A' && upper(c) <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    });
}

bool isBase64(std::string_view text) {
    return std::ranges::all_of(text, [](char c) {
        return (upper(c) >= 'A' && upper(c) <= 'Z') || (c >= '0' && c <= '9') || c == '+' || c == '/' ||
               c == '=' || isBlank(c);
    });
}

bool isOldVersion(std::string_view version) {
    return version == "2.1" || version == "1.0";
}

// The versions whose parameter values have escapes of their own.
bool hasCaretEscapes(std::string_view version) {
    return version == "4.0" || version == "2.0";
}

std::string withoutCarets(std::string_view value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char next = value[i] == '^' && i + 1 < value.size() ? value[i + 1] : '\0';
        constexpr std::string_view escapes = "n'^", meanings = "\n\"^";
        const std::size_t escape = next == '\0' ? std::string_view::npos : escapes.find(next);
        if (escape == std::string_view::npos) {
            text.push_back(value[i]);
        } else {
            text.push_back(meanings[escape]);
            ++i;
        }
    }
    return text;
}

// With one sort of line end.
void makeLineEndsPlain(std::string& text) {
    if (text.find('\r') == std::string::npos) return;
    std::size_t to = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (!isPair) text[to++] = text[i] == '\r' ? '\n' : text[i];
    }
    text.resize(to);
}

}  // namespace

std::string_view ContentLine::parameter(std::string_view parameterName) const {
    const auto found = std::ranges::find(parameters, parameterName, &LineParameter::name);
    return found == parameters.end() ? std::string_view() : std::string_view(found->value);
}

ContentLineReader::ContentLineReader(std::string_view file, std::string charset)
    : file_(withoutMark(file)), charset_(std::move(charset)) {}

// The line that starts at `place`, without its end; `next` is where the one behind it starts.
std::string_view ContentLineReader::lineAt(std::size_t place, std::size_t& next) const {
    std::size_t end = place;
    while (end < file_.size() && file_[end] != '\n' && file_[end] != '\r')
        ++end;
    next = end;
    const std::string_view rest = std::string_view(file_).substr(end);
    for (const std::string_view lineEnd : {"\r\r\n", "\r\n", "\r", "\n"})
        if (rest.starts_with(lineEnd)) {
            next += lineEnd.size();
            break;
        }
    return std::string_view(file_).substr(place, end - place);
}

// Puts the next line behind what has been read, without its first `blanks` characters.
bool ContentLineReader::take(std::size_t without) {
    if (place_ >= file_.size()) return false;
    const std::string_view text = lineAt(place_, place_);
    ++number_;
    logical_.append(text.substr(without));
    last_ = text.substr(0, text.find_last_not_of(blanks) + 1);
    return true;
}

// Looks for the colon behind the head, from where the search stands.
bool ContentLineReader::findColon(std::size_t from) {
    for (colon_ = from; colon_ < logical_.size(); ++colon_) {
        if (logical_[colon_] == '"') quoted_ = !quoted_;
        if (logical_[colon_] == ':' && !quoted_) return true;
    }
    return false;
}

bool ContentLineReader::next(ContentLine& line) {
    do {
        logical_.clear();
        if (!take(0)) return false;
    } while (last_.empty());
    line = ContentLine();
    line.number = number_ - 1;
    line.isOldForm = !versions_.empty() && isOldVersion(versions_.back());
    const std::size_t foldBlanks = line.isOldForm ? 0 : 1;
    quoted_ = false;
    bool found = findColon(0);
    while (!found && place_ < file_.size() && isBlank(file_[place_])) {
        take(foldBlanks);
        found = findColon(colon_);
    }
    // A lone quotation mark in the head hides no colon.
    if (!found) colon_ = logical_.find(':');
    Head head;
    head.end = std::min(colon_, logical_.size());
    if (colon_ != std::string::npos) readHead(line, head);
    joinValue(head);
    if (line.name.empty()) {
        line.parameters.clear();
        line.value = toUtf8(fromUnknownCharset(withoutBlanks(logical_)));
        return true;
    }
    readValue(line, head);
    followComponents(line);
    return true;
}

// What belongs to the value though it stands on the lines behind.
void ContentLineReader::joinValue(const Head& head) {
    const std::size_t foldBlanks = !versions_.empty() && isOldVersion(versions_.back()) ? 0 : 1;
    while (place_ < file_.size()) {
        std::size_t after = 0;
        const std::string_view coming = lineAt(place_, after);
        if (head.isQuotedPrintable && last_.ends_with('=')) {
            // A value that ends in a stray "=" takes no card's end with it.
            if (startsWithWord(coming, "END:") || startsWithWord(coming, "BEGIN:")) return;
            logical_.erase(logical_.rfind('='));
            take(0);
        } else if (!coming.empty() && isBlank(coming.front())) {
            take(foldBlanks);
        } else if (head.isBase64 && !coming.empty() && isBase64(coming)) {
            take(0);
        } else {
            return;
        }
    }
}

void ContentLineReader::readHead(ContentLine& line, Head& head) const {
    const std::string_view text = std::string_view(logical_).substr(0, head.end);
    std::string_view name = withoutBlanks(text.substr(0, text.find(';')));
    if (const std::size_t dot = name.rfind('.'); dot != std::string_view::npos) {
        line.group = name.substr(0, dot);
        name.remove_prefix(dot + 1);
    }
    if (!isName(name)) return;
    line.name = uppercased(name);
    for (std::size_t place = std::min(text.find(';'), text.size()); place < text.size();) {
        const std::size_t start = ++place;
        place = std::min(text.find_first_of("=;", place), text.size());
        const std::string parameter = uppercased(withoutBlanks(text.substr(start, place - start)));
        if (place == text.size() || text[place] == ';') {
            addParameter(line, head, {}, parameter);
            continue;
        }
        do {
            std::string value;
            bool quoted = false;
            for (++place; place < text.size(); ++place) {
                const char c = text[place];
                if (c == '"')
                    quoted = !quoted;
                else if (!quoted && (c == ';' || c == ','))
                    break;
                else
                    value.push_back(c);
            }
            addParameter(line, head, parameter, std::string(withoutBlanks(value)));
        } while (place < text.size() && text[place] == ',');
    }
}

void ContentLineReader::addParameter(ContentLine& line, Head& head, std::string name,
                                     std::string value) const {
    if (value.empty()) return;
    const std::string word = uppercased(value);
    const bool isQuotedPrintable = word == "QUOTED-PRINTABLE" || word == "Q";
    const bool isInBase64 = word == "BASE64" || word == "B";
    const bool isPlain = word == "7BIT" || word == "8BIT";
    if (name.empty()) {
        const bool isEncoding = word.size() > 1 && (isQuotedPrintable || isInBase64 || isPlain);
        name = isEncoding ? "ENCODING" : "TYPE";
    }
    if (name == "CHARSET") {
        head.charset = value;
    } else if (name == "ENCODING") {
        head.isQuotedPrintable = isQuotedPrintable;
        head.isBase64 = isInBase64;
        if (!isQuotedPrintable && !isInBase64 && !isPlain)
            line.trouble = "the encoding \"" + value + "\" is not known";
    } else {
        if (!versions_.empty() && hasCaretEscapes(versions_.back())) value = withoutCarets(value);
        line.parameters.push_back({std::move(name), toUtf8(fromUnknownCharset(value))});
    }
}

void ContentLineReader::readValue(ContentLine& line, const Head& head) const {
    const std::string_view raw = std::string_view(logical_).substr(head.end + 1);
    if (head.isBase64) {
        bool whole = true;
        line.isBinary = true;
        line.value = fromBase64(raw, whole);
        if (!whole) line.trouble = "its base64 is damaged";
        return;
    }
    line.wasQuotedPrintable = head.isQuotedPrintable;
    line.value = head.isQuotedPrintable ? fromQuotedPrintable(raw) : std::string(raw);
    makeLineEndsPlain(line.value);
    if (std::ranges::all_of(line.value, [](char c) { return static_cast<signed char>(c) >= 0; })) return;
    const std::string& charset = head.charset.empty() ? charset_ : head.charset;
    Text text;
    if (charset.empty()) {
        text = fromUnknownCharset(line.value);
    } else if (!fromCharset(line.value, charset, text)) {
        text = fromUnknownCharset(line.value);
        line.trouble = "the character set \"" + charset + "\" is not known";
    } else if (text.find(u'\uFFFD') != Text::npos && line.value.find("\xEF\xBF\xBD") == std::string::npos) {
        line.trouble = "some bytes are not in " + charset;
    }
    line.value = toUtf8(text);
}

void ContentLineReader::followComponents(const ContentLine& line) {
    if (line.name == "BEGIN") {
        std::string version = versionAhead();
        if (version.empty() && !versions_.empty()) version = versions_.back();
        versions_.push_back(std::move(version));
    } else if (line.name == "END" && !versions_.empty()) {
        versions_.pop_back();
    }
}

// What the component that begins here says its version is; looks no further than to the next component, so
// that no line is looked at twice.
std::string ContentLineReader::versionAhead() const {
    for (std::size_t place = place_; place < file_.size();) {
        const std::string_view text = lineAt(place, place);
        if (startsWithWord(text, "BEGIN:") || startsWithWord(text, "END:")) break;
        if (!startsWithWord(text, "VERSION")) continue;
        const std::string_view rest = text.substr(std::string_view("VERSION").size());
        if (!rest.starts_with(':') && !rest.starts_with(';')) continue;
        const std::size_t colon = rest.find(':');
        if (colon != std::string_view::npos) return std::string(withoutBlanks(rest.substr(colon + 1)));
    }
    return {};
}

std::string unescaped(const ContentLine& line, std::string_view value) {
    std::string text;
    text.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char next = value[i] == '\\' && i + 1 < value.size() ? value[i + 1] : '\0';
        if ((next == 'n' || next == 'N') && !line.wasQuotedPrintable) {
            text.push_back('\n');
            ++i;
        } else if (next == '\\' || next == ';' || next == ',' || next == ':') {
            text.push_back(next);
            ++i;
        } else {
            text.push_back(value[i]);
        }
    }
    return text;
}

std::vector<std::string_view> partsOf(std::string_view value, std::string_view separators) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\') {
            ++i;
        } else if (separators.find(value[i]) != std::string_view::npos) {
            parts.push_back(value.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(value.substr(start));
    return parts;
}

}  // namespace ovno2::host
