// A value in a JSON file that knows its place, so that an error can name it.
//
// Nodes are short-lived and point to their parent, which must outlive them. Every reading member throws
// ImageError when the value is not what it expects.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "library/library_records.h"

namespace ovno2::simulator {

using library::Word;

// "FILE: PLACE: expected WHAT".
struct ImageError : std::runtime_error {
    ImageError(const std::filesystem::path& file, std::string_view place, std::string_view expected);
};

// Reads a whole file; throws ImageError when it cannot be read.
std::string readWhole(const std::filesystem::path& file);

// The place of a byte in a text: "line N column M", both from 1.
std::string lineAndColumn(std::string_view text, std::size_t at);

// Parses a file; text that is not JSON gives an ImageError with line and column.
nlohmann::json parseJsonFile(const std::filesystem::path& file);

class JsonNode {
  public:
    JsonNode(const nlohmann::json& root, const std::filesystem::path& fileName)
        : value(root), file(fileName) {}

    // An object with no other members than these; the file's root also has "format": 1.
    void expectMembers(std::initializer_list<const char*> allowed) const;
    void expectFormat() const;

    bool has(const char* name) const { return value.contains(name); }
    JsonNode member(const char* name) const;  // must be there
    std::optional<JsonNode> optionalMember(const char* name) const;
    std::size_t arraySize() const;  // must be an array
    JsonNode element(std::size_t at) const;

    Word word() const;  // a number or a text such as "0x20"
    Word wordBetween(Word lowest, Word highest) const;
    std::string utf8() const;
    std::u16string text() const;
    std::optional<std::u16string> textOrNull() const;
    bool boolean() const;
    const nlohmann::json& json() const { return value; }

    // Short forms for members that may be absent.
    Word word(const char* name, Word otherwise) const;
    std::optional<std::u16string> optionalText(const char* name) const;  // null counts as absent

    std::string place() const;
    [[noreturn]] void fail(std::string_view expected) const;

    template <typename Visit>
    void forEachElement(Visit visit) const {
        const std::size_t count = arraySize();
        for (std::size_t i = 0; i < count; ++i)
            visit(element(i), i);
    }
    // visit(name, node) for each member of an object.
    template <typename Visit>
    void forEachMember(Visit visit) const {
        if (!value.is_object()) fail("an object");
        for (auto item = value.begin(); item != value.end(); ++item) {
            visit(item.key(), JsonNode(item.value(), *this, item.key().c_str(), 0));
        }
    }

  private:
    JsonNode(const nlohmann::json& child, const JsonNode& parentNode, const char* name, std::size_t at)
        : value(child), file(parentNode.file), parent(&parentNode), key(name), index(at) {}

    const nlohmann::json& value;
    const std::filesystem::path& file;
    const JsonNode* parent = nullptr;
    const char* key = nullptr;  // null = element of an array
    std::size_t index = 0;
};

// An upper limit for the values that a JSON number or "0x" text may take; see JsonNode::word.
std::optional<Word> wordOf(const nlohmann::json& value);

}  // namespace ovno2::simulator
