// JSON as the commands write it, by RapidJSON: arrays with an item a line for what may be long, indented
// documents for the rest.
//
// Texts are UTF-16 and come out as valid UTF-8 whatever they hold: half a character becomes U+FFFD. RapidJSON
// would take them apart character by character; here they go into its buffer in one pass.
#pragma once

#include <functional>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <string_view>

#include "host/output/text.h"

namespace ovno2::host {

// At most this many bytes a unit of a text, and two quotes.
inline constexpr std::size_t longestQuotedUnit = 6;

// Writes a text with its quotes and escapes; `to` has room for the longest. Gives the end of what was
// written.
char* writeQuoted(char* to, TextView text);

// A writer of RapidJSON's that takes texts, and members in one call.
template <class Base>
class JsonWriter : public Base {
  public:
    using Base::Base;

    void text(TextView value) {
        begin();
        const std::size_t room = longestQuotedUnit * value.size() + 2;
        char* const start = this->os_->Push(room);
        char* const end = writeQuoted(start, value);
        this->os_->Pop(room - static_cast<std::size_t>(end - start));
    }
    // An array of one text, on one line. Nearly every value of a contact is one.
    [[gnu::always_inline]] void listOf(TextView value) {
        begin();
        const std::size_t room = longestQuotedUnit * value.size() + 4;
        char* const start = this->os_->Push(room);
        *start = '[';
        char* end = writeQuoted(start + 1, value);
        *end++ = ']';
        this->os_->Pop(room - static_cast<std::size_t>(end - start));
    }
    // `name` holds only what needs no escape; likewise every other `const char*` here.
    [[gnu::always_inline]] void key(std::string_view name) {
        begin();
        char* to = this->os_->Push(name.size() + 2);
        *to++ = '"';
        to = std::copy(name.begin(), name.end(), to);
        *to = '"';
    }

    void member(std::string_view name, TextView value) {
        key(name);
        text(value);
    }
    void member(std::string_view name, std::string_view utf8) { member(name, fromUtf8(utf8)); }
    void member(std::string_view name, const char* value) {
        key(name);
        key(value);
    }
    void member(std::string_view name, std::uint64_t value) {
        key(name);
        this->Uint64(value);
    }
    void member(std::string_view name, Long value) {
        key(name);
        this->Int(value);
    }
    void member(std::string_view name, bool value) {
        key(name);
        this->Bool(value);
    }

  private:
    // What stands between this value and the one before it.
    void begin() {
        if constexpr (std::is_same_v<Base, rapidjson::PrettyWriter<rapidjson::StringBuffer>>)
            this->PrettyPrefix(rapidjson::kStringType);
        else
            this->Prefix(rapidjson::kStringType);
    }
};

using JsonLine = JsonWriter<rapidjson::Writer<rapidjson::StringBuffer>>;

// A document of its own, indented; a line break at the end.
class JsonDocument : public JsonWriter<rapidjson::PrettyWriter<rapidjson::StringBuffer>> {
  public:
    JsonDocument() : JsonWriter(buffer_) { SetIndent(' ', 2); }
    std::string finished() const { return std::string(buffer_.GetString(), buffer_.GetSize()) + "\n"; }

  private:
    rapidjson::StringBuffer buffer_;
};

// An array with one item a line.
class JsonLines {
  public:
    using Write = std::function<void(std::string_view)>;

    // `write` gets the array in large pieces.
    explicit JsonLines(Write write) : write_(std::move(write)) {}

    // Takes one value, which must be complete before the next call.
    JsonLine& next();
    void end();

  private:
    void add(std::string_view text);
    void handOn();

    Write write_;
    bool isEmpty_ = true;
    rapidjson::StringBuffer buffer_;
    JsonLine line_{buffer_};
};

}  // namespace ovno2::host
