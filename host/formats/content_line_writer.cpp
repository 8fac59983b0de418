#include <algorithm>

#include "host/formats/content_lines.h"
#include "host/formats/transfer_encodings.h"

namespace ovno2::host {

namespace {

constexpr std::size_t longestLine = 75;  // octets, without its end
constexpr std::string_view lineEnd = "\r\n";

// Of the UTF-8 character that starts at `place`.
std::size_t characterLength(std::string_view text, std::size_t place) {
    std::size_t length = 1;
    while (place + length < text.size() && (static_cast<unsigned char>(text[place + length]) & 0xC0) == 0x80)
        ++length;
    return length;
}

bool isPlain(std::string_view text) {
    for (const char c : text)
        if (c < ' ' || c > '~') return false;
    return true;
}

// One character; those in `hidden` are harmless elsewhere.
std::string quoted(std::string_view character, std::string_view hidden) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : character) {
        if (c == '\n') {
            text.append("=0D=0A");
        } else if (c >= ' ' && c <= '~' && c != '=' && hidden.find(c) == std::string_view::npos) {
            text.push_back(c);
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text.append({'=', digits[byte >> 4], digits[byte & 0xF]});
        }
    }
    return text;
}

}  // namespace

void ContentLineWriter::line(std::string_view head, std::string_view value) {
    if (form_ == LineForm::old && (!isPlain(value) || head.size() + 1 + value.size() > longestLine)) {
        quotedPrintable(head, value);
        return;
    }
    std::string whole(head);
    whole.append(":").append(value);
    folded(whole);
}

void ContentLineWriter::folded(std::string_view line) {
    std::size_t room = longestLine;
    for (std::size_t place = 0; place < line.size();) {
        const std::size_t length = characterLength(line, place);
        if (length > room) {
            text_.append(lineEnd).append(" ");
            room = longestLine - 1;
        }
        text_.append(line.substr(place, length));
        room -= std::min(room, length);
        place += length;
    }
    text_.append(lineEnd);
}

void ContentLineWriter::quotedPrintable(std::string_view head, std::string_view value) {
    const std::size_t start = text_.size();
    text_.append(head);
    if (!std::ranges::all_of(value, [](char c) { return static_cast<signed char>(c) >= 0; }))
        text_.append(";CHARSET=UTF-8");
    text_.append(";ENCODING=QUOTED-PRINTABLE:");
    std::size_t used = text_.size() - start;
    // A blank at a line's end would be lost, one at its start taken for a fold; readers take a line that
    // begins with "BEGIN:" or "END:" for the edge of a component.
    constexpr std::string_view hiddenAtEnd = " ", hiddenAtStart = " BbEe";
    for (std::size_t place = 0; place < value.size();) {
        const std::string_view character = value.substr(place, characterLength(value, place));
        place += character.size();
        std::string unit = quoted(character, place == value.size() ? hiddenAtEnd : "");
        if (used + unit.size() >= longestLine) {
            text_.append("=").append(lineEnd);
            used = 0;
            unit = quoted(character, hiddenAtStart);
        }
        text_.append(unit);
        used += unit.size();
    }
    text_.append(lineEnd);
}

void ContentLineWriter::binary(std::string_view name, std::string_view parameters, std::string_view bytes) {
    std::string whole(name);
    whole.append(form_ == LineForm::old ? ";ENCODING=BASE64" : ";ENCODING=b").append(parameters);
    folded(whole.append(":").append(toBase64(bytes)));
    if (form_ == LineForm::old) text_.append(lineEnd);
}

std::string ContentLineWriter::escaped(std::string_view value, ValueKind kind) const {
    const bool isOld = form_ == LineForm::old;
    std::string_view hidden = ";,";
    if (kind == ValueKind::uri || (isOld && kind == ValueKind::text)) hidden = {};
    if (isOld && kind == ValueKind::part) hidden = ";";
    std::string text;
    text.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c == '\r' || c == '\n') {
            if (c == '\r' && i + 1 < value.size() && value[i + 1] == '\n') ++i;
            text.append(isOld ? "\n" : "\\n");
        } else {
            if (c == '\\' || hidden.find(c) != std::string_view::npos) text.push_back('\\');
            text.push_back(c);
        }
    }
    return text;
}

}  // namespace ovno2::host
