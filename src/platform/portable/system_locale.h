// The system's own locale, in the words and pictures of the seam.
#pragma once

#include "platform/locale.h"

namespace ovno2::platform::portable {

// The item of the locale that the environment names (LC_ALL, LC_TIME, LANG), read once for the process.
// Without one, or with one that is not installed, dates are "yyyy-MM-dd", times "HH:mm:ss" and names English.
// Years always have their century. Empty for items that are none.
Text systemLocaleItem(LocaleItem item);

// A format of strftime as a picture: "%d.%m.%Y" is "dd.MM.yyyy", "%I:%M:%S %p" is "hh:mm:ss tt". What has no
// letter in pictures, such as a time-zone name, is left out; other letters are quoted.
Text pictureFromTimeFormat(TextView format);

}  // namespace ovno2::platform::portable
