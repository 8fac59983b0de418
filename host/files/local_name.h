// Names of the phone's files on this computer.
//
// A phone may report any name. What becomes of it here:
//
//   control characters, < > : " / \ | ? *, and what is no character    each becomes "_"
//   a blank or "." at the end, and each "." of "." and ".."            "_"
//   names of devices (CON, PRN, AUX, NUL, COM1 ..., LPT1 ...), also with an extension    get "_" in front
//   an empty name                                                      "_"
//   a name of more than 240 bytes                                      is cut in front of its extension
//   a name that a folder has already, in whatever case                 gets " (2)", " (3)" ... there
//
// The same on every system, so that a folder of phone files can be carried from one to another.
#pragma once

#include <map>

#include "host/output/text.h"

namespace ovno2::host {

Text localName(TextView phoneName);

// The names that are given out in one local folder.
class LocalNames {
  public:
    // A name of the folder that was not given out before.
    Text give(TextView phoneName);

  private:
    std::map<Text, int> taken_;  // in lower case; how often each was wanted
};

}  // namespace ovno2::host
