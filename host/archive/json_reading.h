// The JSON files of an archive, read again.
#pragma once

#include <rapidjson/document.h>
#include <string>

#include "host/output/json.h"

namespace ovno2::host {

// False for what is no JSON in UTF-8. Depth costs no stack.
bool readJson(const std::string& bytes, rapidjson::Document& document);

// The text of an object's member; empty without one.
std::string textMember(const rapidjson::Value& object, const char* name);
// Null without one.
const rapidjson::Value* findMember(const rapidjson::Value& object, const char* name);

// The members of an object that stands on a line, into another.
void writeMembers(JsonLine& line, const std::string& object);

// Takes away what says that an item is gone from the phone; gives since when, empty when it is not.
std::string takeGone(rapidjson::Value& object);

// On one line, as it is written among others.
std::string asLine(const rapidjson::Value& value);

}  // namespace ovno2::host
