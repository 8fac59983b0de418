// A JSON text and its values, parsed where it stands.
//
// Owns the text and the values that the nodes point to. Text that is not JSON is an ImageError with line and
// column. A byte order mark is passed over.
#pragma once

#include <functional>

#include "simulator/images/json_node.h"

namespace ovno2::simulator {

class JsonText {
  public:
    explicit JsonText(std::filesystem::path file);                // reads the file
    JsonText(std::string_view text, std::filesystem::path name);  // `name` is only for errors
    JsonText(const JsonText&) = delete;
    JsonText& operator=(const JsonText&) = delete;

    // The root. A text is parsed once.
    JsonNode parse();

    // The root without its member `list`, when that is a list: each element is visited as it is parsed and
    // gone afterwards, so that a long list takes no more memory than one of its elements.
    using Visit = std::function<void(const JsonNode& element)>;
    JsonNode parseStreaming(std::string_view list, const Visit& visit);

  private:
    void passMark();
    void parseMember(std::string_view list, const Visit& visit);
    void parseElements(std::string_view list, const Visit& visit);  // behind the opening bracket
    void parseValue(rapidjson::Document& values);
    bool next(char expected);  // takes this character if it is the next one behind white space
    void require(char expected);
    void requireEnd();
    [[noreturn]] void failAt(std::size_t offset, std::string_view expected) const;

    std::filesystem::path fileName;
    std::string original;  // of a text that comes from no file
    bool isFile;
    FileBytes bytes;
    rapidjson::InsituStringStream stream;
    rapidjson::Document root;
};

}  // namespace ovno2::simulator
