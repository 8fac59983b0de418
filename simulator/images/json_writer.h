// Writes JSON text: the library's writers, with texts and numbers of every kind. What is not UTF-8 or UTF-16
// in a text becomes U+FFFD.
#pragma once

#include <concepts>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/base/text.h"

namespace ovno2::simulator {

struct JsonBuffer {
    rapidjson::StringBuffer buffer;
};

// `Writer` is rapidjson::Writer or PrettyWriter; what it offers for objects and lists is used as it is.
template <typename Writer>
class JsonWriterOn : private JsonBuffer, public Writer {
  public:
    JsonWriterOn() : Writer(buffer) {}

    void value(bool flag) { this->Bool(flag); }
    void value(std::signed_integral auto number) { this->Int64(number); }
    void value(std::unsigned_integral auto number) { this->Uint64(number); }
    void value(std::string_view utf8) {
        std::u16string wide;
        if (appendUtf16(wide, utf8)) {
            this->String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
        } else {
            value(wide);
        }
    }
    void value(const char* utf8) { value(std::string_view(utf8)); }
    void value(const std::string& utf8) { value(std::string_view(utf8)); }
    void value(std::u16string_view text) {
        const std::string utf8 = toUtf8(text);
        this->String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
    }
    void value(const std::u16string& text) { value(std::u16string_view(text)); }
    void value(const std::vector<std::string>& texts) {
        this->StartArray();
        for (const std::string& text : texts)
            value(text);
        this->EndArray();
    }

    template <typename Value>
    void member(const char* name, const Value& itsValue) {
        this->Key(name);
        value(itsValue);
    }

    // Text between values that are laid out by hand: what is written next stands for itself.
    void layout(std::string_view text) {
        for (const char letter : text)
            buffer.Put(letter);
        this->Reset(buffer);
    }

    // What has been written.
    std::span<const char> text() const { return {buffer.GetString(), buffer.GetSize()}; }
};

using JsonWriter = JsonWriterOn<rapidjson::Writer<rapidjson::StringBuffer>>;

// Two blanks a level.
class PrettyJsonWriter : public JsonWriterOn<rapidjson::PrettyWriter<rapidjson::StringBuffer>> {
  public:
    PrettyJsonWriter() { SetIndent(' ', 2); }
};

}  // namespace ovno2::simulator
