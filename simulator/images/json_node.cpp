#include "simulator/images/json_node.h"

#include <algorithm>
#include <charconv>
#include <fstream>

#include "simulator/base/text.h"

namespace ovno2::simulator {
namespace {

std::string message(const std::filesystem::path& file, std::string_view place, std::string_view expected) {
    const std::u8string name = file.u8string();
    std::string text(name.begin(), name.end());
    text.append(": ").append(place).append(": expected ").append(expected);
    return text;
}

}  // namespace

ImageError::ImageError(const std::filesystem::path& file, std::string_view place, std::string_view expected)
    : std::runtime_error(message(file, place, expected)) {}

std::string readWhole(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary | std::ios::ate);
    const auto size = static_cast<std::streamsize>(stream ? std::streamoff(stream.tellg()) : -1);
    if (size < 0 || !std::filesystem::is_regular_file(file)) throw ImageError(file, "/", "a readable file");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    stream.seekg(0);
    if (!stream.read(bytes.data(), size)) throw ImageError(file, "/", "a readable file");
    return bytes;
}

std::string lineAndColumn(std::string_view text, std::size_t at) {
    const std::string_view before = text.substr(0, std::min(at, text.size()));
    return "line " + std::to_string(std::count(before.begin(), before.end(), '\n') + 1) + " column " +
           std::to_string(before.size() - (before.rfind('\n') + 1) + 1);
}

nlohmann::json parseJsonFile(const std::filesystem::path& file) {
    const std::string bytes = readWhole(file);
    try {
        return nlohmann::json::parse(bytes);
    } catch (const nlohmann::json::parse_error& error) {
        throw ImageError(file, lineAndColumn(bytes, error.byte == 0 ? 0 : error.byte - 1), "JSON text");
    }
}

std::optional<Word> wordOf(const nlohmann::json& value) {
    if (value.is_number_unsigned() || value.is_number_integer()) {
        const auto number = value.get<std::int64_t>();
        const bool fits = number >= 0 && number <= 0xFFFFFFFF;
        return fits ? std::optional<Word>(static_cast<Word>(number)) : std::nullopt;
    }
    if (!value.is_string()) return std::nullopt;
    const auto& text = value.get_ref<const std::string&>();
    if (!text.starts_with("0x")) return std::nullopt;
    Word number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data() + 2, end, number, 16);
    return error == std::errc() && stopped == end ? std::optional<Word>(number) : std::nullopt;
}

void JsonNode::expectMembers(std::initializer_list<const char*> allowed) const {
    forEachMember([&](const std::string& name, const JsonNode& child) {
        const bool known =
            std::any_of(allowed.begin(), allowed.end(), [&](const char* one) { return name == one; });
        if (!known) child.fail("no member of this name");
    });
}

void JsonNode::expectFormat() const {
    if (!value.is_object()) fail("an object");
    const JsonNode format = member("format");
    if (format.word() != 1) format.fail("format 1");
}

JsonNode JsonNode::member(const char* name) const {
    const auto found = value.is_object() ? value.find(name) : value.end();
    if (found == value.end()) fail(std::string("a member \"") + name + "\"");
    return {*found, *this, name, 0};
}

std::optional<JsonNode> JsonNode::optionalMember(const char* name) const {
    const auto found = value.find(name);
    if (found == value.end()) return std::nullopt;
    return JsonNode(*found, *this, name, 0);
}

std::size_t JsonNode::arraySize() const {
    if (!value.is_array()) fail("a list");
    return value.size();
}

JsonNode JsonNode::element(std::size_t at) const {
    return {value[at], *this, nullptr, at};
}

Word JsonNode::word() const {
    const std::optional<Word> number = wordOf(value);
    if (!number) fail("a number from 0 to 4294967295, or a text such as \"0x20\"");
    return *number;
}

Word JsonNode::wordBetween(Word lowest, Word highest) const {
    const std::optional<Word> number = wordOf(value);
    if (!number || *number < lowest || *number > highest) {
        fail("a number from " + std::to_string(lowest) + " to " + std::to_string(highest));
    }
    return *number;
}

std::string JsonNode::utf8() const {
    if (!value.is_string()) fail("a text");
    return value.get<std::string>();
}

std::u16string JsonNode::text() const {
    if (!value.is_string()) fail("a text");
    return toUtf16(value.get_ref<const std::string&>());
}

std::optional<std::u16string> JsonNode::textOrNull() const {
    if (value.is_null()) return std::nullopt;
    if (!value.is_string()) fail("a text or null");
    return text();
}

bool JsonNode::boolean() const {
    if (!value.is_boolean()) fail("true or false");
    return value.get<bool>();
}

Word JsonNode::word(const char* name, Word otherwise) const {
    const std::optional<JsonNode> child = optionalMember(name);
    return child ? child->word() : otherwise;
}

std::optional<std::u16string> JsonNode::optionalText(const char* name) const {
    const std::optional<JsonNode> child = optionalMember(name);
    return child ? child->textOrNull() : std::nullopt;
}

std::string JsonNode::place() const {
    if (parent == nullptr) return "/";
    std::string path = parent->place();
    if (path.back() != '/') path += '/';
    return path + (key == nullptr ? std::to_string(index) : std::string(key));
}

void JsonNode::fail(std::string_view expected) const {
    throw ImageError(file, place(), expected);
}

}  // namespace ovno2::simulator
