// A value in a JSON text that knows its place, so that an error can name it.
//
// Nodes are short-lived and point to their value and their parent, which must outlive them. The place is put
// together only when an error needs it. Every reading member throws ImageError when the value is not what it
// expects.
#pragma once

#include <initializer_list>
#include <optional>
#include <rapidjson/document.h>
#include <string>
#include <string_view>

#include "library/library_records.h"
#include "simulator/images/image_file.h"

namespace ovno2::simulator {

using library::Word;
using JsonValue = rapidjson::Value;

class JsonNode {
  public:
    JsonNode(const JsonValue& root, const std::filesystem::path& fileName) : value(root), file(fileName) {}

    // A member or an element of another node.
    JsonNode(const JsonValue& child, const JsonNode& parentNode, std::string_view name)
        : value(child), file(parentNode.file), parent(&parentNode), key(name) {}
    JsonNode(const JsonValue& child, const JsonNode& parentNode, std::size_t at)
        : value(child), file(parentNode.file), parent(&parentNode), index(at) {}

    // An object with no other members than these; the file's root also has "format": 1.
    void expectMembers(std::initializer_list<std::string_view> allowed) const;
    void expectFormat() const;

    JsonNode member(std::string_view name) const;  // must be there
    std::optional<JsonNode> optionalMember(std::string_view name) const;
    std::size_t arraySize() const {  // must be an array
        if (!value.IsArray()) fail("a list");
        return value.Size();
    }

    bool isNull() const { return value.IsNull(); }
    bool isObject() const { return value.IsObject(); }
    bool isArray() const { return value.IsArray(); }
    bool isText() const { return value.IsString(); }
    bool is(std::string_view text) const { return value.IsString() && textOf(value) == text; }

    std::optional<Word> optionalWord() const;  // a number or a text such as "0x20"
    Word word() const { return value.IsUint() ? value.GetUint() : wordOfText(); }
    Word wordBetween(Word lowest, Word highest) const {
        const bool fits = value.IsUint() && value.GetUint() >= lowest && value.GetUint() <= highest;
        return fits ? value.GetUint() : wordOfText(lowest, highest);
    }
    std::optional<std::int64_t> integer() const;
    std::string_view utf8() const {  // valid as long as the value
        if (!value.IsString()) fail("a text");
        return textOf(value);
    }
    std::u16string text() const;
    std::optional<std::u16string> textOrNull() const;
    bool boolean() const;

    // Short forms for members that may be absent.
    Word word(std::string_view name, Word otherwise) const;
    std::optional<std::u16string> optionalText(std::string_view name) const;  // null counts as absent
    bool flag(std::string_view name, bool otherwise) const;

    // The same value as the root of something of its own.
    JsonNode asRoot(const std::filesystem::path& fileName) const { return {value, fileName}; }

    std::string place() const;
    [[noreturn]] void fail(std::string_view expected) const;
    [[noreturn]] void failBelow(std::string_view path, std::string_view expected) const;

    // visit(node, index) for each element of a list.
    template <typename Visit>
    void forEachElement(Visit visit) const {
        const std::size_t count = arraySize();
        for (std::size_t i = 0; i < count; ++i)
            visit(JsonNode(value[static_cast<rapidjson::SizeType>(i)], *this, i), i);
    }
    // visit(name, node) for each member of an object.
    template <typename Visit>
    void forEachMember(Visit visit) const {
        if (!value.IsObject()) fail("an object");
        for (const auto& item : value.GetObject()) {
            const std::string_view name = textOf(item.name);
            visit(name, JsonNode(item.value, *this, name));
        }
    }

  private:
    Word wordOfText() const;
    Word wordOfText(Word lowest, Word highest) const;
    static std::string_view textOf(const JsonValue& text) {
        return {text.GetString(), text.GetStringLength()};
    }

    const JsonValue& value;
    const std::filesystem::path& file;
    const JsonNode* parent = nullptr;
    std::string_view key;  // without data: an element of a list
    std::size_t index = 0;
};

}  // namespace ovno2::simulator
