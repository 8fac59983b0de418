// What a long operation does for its host on the way: its progress control is advanced.
#pragma once

#include "base/failure.h"
#include "platform/automation.h"

namespace ovno2::Content {

// Advances the late-bound control's property "value". Without a control, or when it refuses, the step fails
// and nothing else happens.
class Progress {
  public:
    // `control` may be null and must outlive the progress.
    explicit Progress(const platform::ObjectPointer& control) : control_(control) {}
    void advance(Long by = 1) const;

  private:
    const platform::ObjectPointer& control_;
};

}  // namespace ovno2::Content
