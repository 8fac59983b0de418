#include "simulator/images/json_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <rapidjson/reader.h>

namespace ovno2::simulator {
namespace {

constexpr int deepest = 64;
constexpr std::size_t elementBytes = 32768;  // values of one element; more comes from the heap

// The parser recurses: what is nested deeper than any image ends it before the program's stack does.
class ShallowValues {
  public:
    explicit ShallowValues(rapidjson::Document& document) : values(document) {}

    bool Null() { return values.Null(); }
    bool Bool(bool value) { return values.Bool(value); }
    bool Int(int value) { return values.Int(value); }
    bool Uint(unsigned value) { return values.Uint(value); }
    bool Int64(std::int64_t value) { return values.Int64(value); }
    bool Uint64(std::uint64_t value) { return values.Uint64(value); }
    bool Double(double value) { return values.Double(value); }
    bool RawNumber(const char* text, rapidjson::SizeType length, bool copy) {
        return values.RawNumber(text, length, copy);
    }
    bool String(const char* text, rapidjson::SizeType length, bool copy) {
        return values.String(text, length, copy);
    }
    bool Key(const char* text, rapidjson::SizeType length, bool copy) {
        return values.Key(text, length, copy);
    }
    bool StartObject() { return ++depth <= deepest && values.StartObject(); }
    bool EndObject(rapidjson::SizeType count) { return --depth, values.EndObject(count); }
    bool StartArray() { return ++depth <= deepest && values.StartArray(); }
    bool EndArray(rapidjson::SizeType count) { return --depth, values.EndArray(count); }

  private:
    rapidjson::Document& values;
    int depth = 0;
};

FileBytes copyOf(std::string_view text) {
    FileBytes bytes;
    bytes.data = std::make_unique_for_overwrite<char[]>(text.size() + 1);
    bytes.size = text.size();
    std::copy(text.begin(), text.end(), bytes.data.get());
    bytes.data[text.size()] = '\0';
    return bytes;
}

// "line N column M" of a byte, both from 1.
std::string lineAndColumn(std::string_view text, std::size_t at) {
    const std::string_view before = text.substr(0, std::min(at, text.size()));
    return "line " + std::to_string(std::count(before.begin(), before.end(), '\n') + 1) + " column " +
           std::to_string(before.size() - (before.rfind('\n') + 1) + 1);
}

}  // namespace

JsonText::JsonText(std::filesystem::path file)
    : fileName(std::move(file)), isFile(true), bytes(readWhole(fileName)), stream(bytes.data.get()) {
    passMark();
}

JsonText::JsonText(std::string_view text, std::filesystem::path name)
    : fileName(std::move(name)),
      original(text),
      isFile(false),
      bytes(copyOf(text)),
      stream(bytes.data.get()) {
    passMark();
}

JsonNode JsonText::parse() {
    parseValue(root);
    requireEnd();
    return {root, fileName};
}

JsonNode JsonText::parseStreaming(std::string_view list, const Visit& visit) {
    if (!next('{')) return parse();
    root.SetObject();
    if (!next('}')) {
        do
            parseMember(list, visit);
        while (next(','));
        require('}');
    }
    requireEnd();
    return {root, fileName};
}

void JsonText::parseMember(std::string_view list, const Visit& visit) {
    rapidjson::Document name(&root.GetAllocator());
    rapidjson::SkipWhitespace(stream);
    if (stream.Peek() != '"') failAt(stream.Tell(), "JSON text");
    parseValue(name);
    require(':');
    if (list == std::string_view(name.GetString(), name.GetStringLength()) && next('[')) {
        parseElements(list, visit);
        return;
    }
    rapidjson::Document value(&root.GetAllocator());
    parseValue(value);
    root.AddMember(static_cast<JsonValue&>(name), static_cast<JsonValue&>(value), root.GetAllocator());
}

void JsonText::parseElements(std::string_view list, const Visit& visit) {
    if (next(']')) return;
    const JsonNode rootNode(root, fileName);
    const JsonNode listNode(root, rootNode, list);  // only its place counts
    alignas(std::max_align_t) std::array<char, elementBytes> room;
    rapidjson::CrtAllocator heap;
    std::size_t index = 0;
    do {
        rapidjson::Document::AllocatorType allocator(room.data(), room.size());
        rapidjson::Document element(&allocator, elementBytes / 8, &heap);
        parseValue(element);
        visit(JsonNode(element, listNode, index++));
    } while (next(','));
    require(']');
}

void JsonText::parseValue(rapidjson::Document& values) {
    rapidjson::ParseResult result;
    const auto parseInto = [&](rapidjson::Document& handler) {
        ShallowValues shallow(handler);
        result = rapidjson::Reader().Parse<rapidjson::kParseInsituFlag | rapidjson::kParseStopWhenDoneFlag>(
            stream, shallow);
        return !result.IsError();
    };
    values.Populate(parseInto);
    if (!result.IsError()) return;
    const bool tooDeep = result.Code() == rapidjson::kParseErrorTermination;
    failAt(result.Offset(), tooDeep ? "less deep nesting" : "JSON text");
}

void JsonText::passMark() {
    static constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (std::string_view(bytes).starts_with(mark)) stream.src_ += mark.size();
}

bool JsonText::next(char expected) {
    rapidjson::SkipWhitespace(stream);
    if (stream.Peek() != expected) return false;
    stream.Take();
    return true;
}

void JsonText::require(char expected) {
    if (!next(expected)) failAt(stream.Tell(), "JSON text");
}

void JsonText::requireEnd() {
    rapidjson::SkipWhitespace(stream);
    // The parser takes a NUL for the end.
    if (stream.Tell() != bytes.size) failAt(stream.Tell(), "JSON text");
}

void JsonText::failAt(std::size_t offset, std::string_view expected) const {
    // What has been parsed is overwritten, line ends in texts included.
    const std::string place =
        isFile ? lineAndColumn(readWhole(fileName), offset) : lineAndColumn(original, offset);
    throw ImageError(fileName, place, expected);
}

}  // namespace ovno2::simulator
