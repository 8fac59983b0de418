// Content lines: the form that vCard, vCalendar and iCalendar files share.
//
//     group.NAME;PARAMETER=value,value;...:value
//
// The reader takes the old form (versions 1.0 and 2.1: bare parameters, quoted-printable, a fold keeps its
// blank) and the new one (escapes, a fold's blank goes) from what each BEGIN and the VERSION after it say.
// It knows nothing of what the lines mean. Cost is linear in the file's size, and no bytes make it fail.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ovno2::host {

struct LineParameter {
    std::string name;   // upper case; a bare one of the old form is a TYPE or an ENCODING
    std::string value;  // one a parameter: "TYPE=HOME,VOICE" is two; UTF-8
};

struct ContentLine {
    std::size_t number = 0;  // in the file, from 1
    std::string group;       // as written; mostly empty
    std::string name;        // upper case; empty when the line is no property, which then stands in `value`
    std::vector<LineParameter> parameters;  // without ENCODING and CHARSET, which have been dealt with
    // UTF-8 with its escapes, line ends as "\n"; of a base64 value the bytes.
    std::string value;
    bool isBinary = false;
    bool isOldForm = false;
    bool wasQuotedPrintable = false;  // a "\\n" in it is two characters
    std::string trouble;              // what could not be decoded, for people; empty = nothing

    // The first value of a parameter; empty = none.
    std::string_view parameter(std::string_view parameterName) const;
};

class ContentLineReader {
  public:
    // `charset` is that of values which name none; empty = UTF-8, or Windows-1252 where they are not.
    explicit ContentLineReader(std::string_view file, std::string charset = {});

    // False at the end of the file. Empty lines are passed over.
    bool next(ContentLine& line);

  private:
    struct Head {
        std::size_t end = 0;  // where the ":" stands
        std::string encoding, charset;
        bool isQuotedPrintable = false;
        bool isBase64 = false;
    };

    std::string_view lineAt(std::size_t place, std::size_t& next) const;
    bool take(std::size_t blanks);
    bool findColon(std::size_t from);
    void joinValue(const Head& head);
    void readHead(ContentLine& line, Head& head) const;
    void addParameter(ContentLine& line, Head& head, std::string name, std::string value) const;
    void readValue(ContentLine& line, const Head& head) const;
    void followComponents(const ContentLine& line);
    std::string versionAhead() const;

    std::string file_;
    std::string charset_;
    std::size_t place_ = 0;   // of the next line
    std::size_t number_ = 1;  // of that line
    std::string logical_;     // the line being read, unfolded
    std::string_view last_;   // its last piece, without blanks at the end
    std::size_t colon_ = 0;
    bool quoted_ = false;                // where the search for the colon stands
    std::vector<std::string> versions_;  // of the components around, outermost first; empty = not said
};

// A value, or a part of one, without its escapes; what is no escape stays as it is.
std::string unescaped(const ContentLine& line, std::string_view value);

// The parts of a structured value, still escaped: between separators that no backslash hides.
std::vector<std::string_view> partsOf(std::string_view value, std::string_view separators);

// How lines are written.
enum class LineForm {
    old,      // what is not plain goes quoted-printable
    current,  // folded at 75 octets
};

// What a value stands in, and so what needs a backslash.
enum class ValueKind {
    text,
    part,  // between ";"
    item,  // between ";" or ","
    uri,
};

// Writes one line after the other to the end of `text`, with CR LF.
class ContentLineWriter {
  public:
    ContentLineWriter(std::string& text, LineForm form) : text_(text), form_(form) {}

    // `head` is the name with its parameters ("TEL;TYPE=CELL"), `value` is escaped already; UTF-8.
    void line(std::string_view head, std::string_view value);
    // In base64: in the old form over several lines with an empty one behind them. `parameters` begins with
    // ";" or is empty.
    void binary(std::string_view name, std::string_view parameters, std::string_view bytes);

    // Every sort of line end becomes the form's one.
    std::string escaped(std::string_view value, ValueKind kind) const;

  private:
    void folded(std::string_view line);
    void quotedPrintable(std::string_view head, std::string_view value);

    std::string& text_;
    LineForm form_;
};

}  // namespace ovno2::host
