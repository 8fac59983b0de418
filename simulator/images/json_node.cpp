#include "simulator/images/json_node.h"

#include <algorithm>
#include <charconv>

#include "simulator/base/text.h"

namespace ovno2::simulator {

void JsonNode::expectMembers(std::initializer_list<std::string_view> allowed) const {
    forEachMember([&](std::string_view name, const JsonNode& child) {
        if (std::find(allowed.begin(), allowed.end(), name) == allowed.end())
            child.fail("no member of this name");
    });
}

void JsonNode::expectFormat() const {
    if (!value.IsObject()) fail("an object");
    const std::optional<JsonNode> format = optionalMember("format");
    if (!format) fail("format 1");
    if (format->optionalWord() != 1) format->fail("format 1");
}

JsonNode JsonNode::member(std::string_view name) const {
    const std::optional<JsonNode> found = optionalMember(name);
    if (!found) fail(std::string("a member \"").append(name).append("\""));
    return *found;
}

std::optional<JsonNode> JsonNode::optionalMember(std::string_view name) const {
    if (!value.IsObject()) return std::nullopt;
    const auto found =
        value.FindMember(JsonValue(name.data(), static_cast<rapidjson::SizeType>(name.size())));
    if (found == value.MemberEnd()) return std::nullopt;
    return JsonNode(found->value, *this, textOf(found->name));
}

std::optional<Word> JsonNode::optionalWord() const {
    if (value.IsUint()) return value.GetUint();
    if (!value.IsString()) return std::nullopt;
    const std::string_view text = textOf(value);
    if (!text.starts_with("0x")) return std::nullopt;
    Word number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data() + 2, end, number, 16);
    return error == std::errc() && stopped == end ? std::optional<Word>(number) : std::nullopt;
}

Word JsonNode::wordOfText() const {
    const std::optional<Word> number = optionalWord();
    if (!number) fail("a number from 0 to 4294967295, or a text such as \"0x20\"");
    return *number;
}

Word JsonNode::wordOfText(Word lowest, Word highest) const {
    const std::optional<Word> number = optionalWord();
    if (!number || *number < lowest || *number > highest) {
        fail("a number from " + std::to_string(lowest) + " to " + std::to_string(highest));
    }
    return *number;
}

std::optional<std::int64_t> JsonNode::integer() const {
    return value.IsInt64() ? std::optional<std::int64_t>(value.GetInt64()) : std::nullopt;
}

std::u16string JsonNode::text() const {
    std::u16string text;
    if (!appendUtf16(text, utf8())) fail("UTF-8 text");
    return text;
}

std::optional<std::u16string> JsonNode::textOrNull() const {
    if (value.IsNull()) return std::nullopt;
    if (!value.IsString()) fail("a text or null");
    return text();
}

bool JsonNode::boolean() const {
    if (!value.IsBool()) fail("true or false");
    return value.GetBool();
}

Word JsonNode::word(std::string_view name, Word otherwise) const {
    const std::optional<JsonNode> child = optionalMember(name);
    return child ? child->word() : otherwise;
}

std::optional<std::u16string> JsonNode::optionalText(std::string_view name) const {
    const std::optional<JsonNode> child = optionalMember(name);
    return child ? child->textOrNull() : std::nullopt;
}

bool JsonNode::flag(std::string_view name, bool otherwise) const {
    const std::optional<JsonNode> child = optionalMember(name);
    return child ? child->boolean() : otherwise;
}

std::string JsonNode::place() const {
    if (parent == nullptr) return "/";
    std::string path = parent->place();
    if (path.back() != '/') path += '/';
    return key.data() == nullptr ? path + std::to_string(index) : path.append(key);
}

void JsonNode::fail(std::string_view expected) const {
    throw ImageError(file, place(), expected);
}

void JsonNode::failBelow(std::string_view path, std::string_view expected) const {
    const std::string above = place();
    throw ImageError(file, (above == "/" ? "" : above) + "/" + std::string(path), expected);
}

}  // namespace ovno2::simulator
