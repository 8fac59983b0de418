#include "host/archive/json_reading.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace ovno2::host {

bool readJson(const std::string& bytes, rapidjson::Document& document) {
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
    document.Parse<flags>(bytes.data(), bytes.size());
    return !document.HasParseError();
}

const rapidjson::Value* findMember(const rapidjson::Value& object, const char* name) {
    if (!object.IsObject()) return nullptr;
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

std::string textMember(const rapidjson::Value& object, const char* name) {
    const rapidjson::Value* const value = findMember(object, name);
    return value && value->IsString() ? std::string(value->GetString(), value->GetStringLength())
                                      : std::string();
}

void writeMembers(JsonLine& line, const std::string& object) {
    rapidjson::Document read;
    if (readJson(object, read) && read.IsObject())
        for (const auto& member : read.GetObject()) {
            line.text(fromUtf8({member.name.GetString(), member.name.GetStringLength()}));
            member.value.Accept(line);
        }
}

std::string takeGone(rapidjson::Value& object) {
    std::string since = textMember(object, "goneSince");
    const rapidjson::Value* const onPhone = findMember(object, "onPhone");
    const bool isGone = onPhone && onPhone->IsBool() && !onPhone->GetBool();
    for (const char* const name : {"onPhone", "goneSince"})
        if (object.HasMember(name)) object.RemoveMember(name);
    if (!isGone) return {};
    return since.empty() ? "(unknown)" : since;
}

std::string asLine(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace ovno2::host
