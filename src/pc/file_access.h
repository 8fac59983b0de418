// What the file routines share: files that are open, and objects of the automation.
//
// Functions here throw RuntimeFailure; the routines of files.h call them within `attempt`.
#pragma once

#include <memory>

#include "platform/platform.h"

namespace ovno2::Files {

// Opens for reading under the path as it is or with "\\?\" in front; null when neither opens.
std::unique_ptr<platform::OpenFile> openByWidePath(TextView path);

// The file-system object, made on first use. 429 when there is none.
platform::AutomationObject& fileSystemObject();

// Values of late-bound calls; 13 for a value of another type, 91 for an object that is nothing.
Text textOf(const platform::Variant& value);
double numberOf(const platform::Variant& value);
bool truthOf(const platform::Variant& value);
platform::ObjectPointer objectOf(const platform::Variant& value);

// A method with one text argument.
platform::Variant callWith(platform::AutomationObject& object, TextView method, TextView argument);

// No path is longer; routines that take a path apart step by step do not try.
inline constexpr std::size_t longestPath = 32767;
inline constexpr std::size_t classicPathLimit =
    260;  // paths of this length and more are too long for classic calls

}  // namespace ovno2::Files
