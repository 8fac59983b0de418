// Chooses the log's lines from the entry of a routine to its exit, with everything that happens in between.
//
// Keeps how many entries of the routine are open. Detail routines that are not sent leave the indent of the
// others' lines wrong, therefore names alone are counted. An exit that never came, because a program ended in
// the middle, counts until the routine is entered anew at the same depth or an outer one.
#pragma once

#include "host/output/text.h"

namespace ovno2::host {

class RoutineFilter {
  public:
    // Case does not count. The empty name chooses every line.
    explicit RoutineFilter(TextView routine);

    bool shows(TextView line);

  private:
    Text routine_;  // in lower case
    int open_ = 0;
    std::size_t outermost_ = 0;  // indent of the first open entry
};

}  // namespace ovno2::host
