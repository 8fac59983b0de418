// The registry values through which the log finds its viewer.
//
// An instance owns them: its constructor writes the window's handle, the switch, the mode and, when one was
// chosen, the level; its destructor gives each value back what it was before, unless somebody else has
// changed it meanwhile. What a viewer left behind that ended without a destructor is not given back.
#pragma once

#include <array>
#include <optional>

#include "host/output/text.h"

namespace ovno2::host {

enum class LogMode : Long { chunks = 2, shared = 3 };

// The handle of the viewer that is published and answers, or hangs; 0 when there is none.
Long runningViewer();

class PublishedViewer {
  public:
    // `level` is 0 to 15; without one the level stays what it is.
    PublishedViewer(Long window, LogMode mode, std::optional<Long> level);
    ~PublishedViewer();
    PublishedViewer(const PublishedViewer&) = delete;
    PublishedViewer& operator=(const PublishedViewer&) = delete;

    // False when the registry did not take the values, or another viewer has put its own there.
    bool isPublished() const;

    void setLevel(Long level);

  private:
    struct Value {
        TextView name;
        Text before, written;  // empty = no such value
    };

    void write(Value& value, const Text& text);

    std::array<Value, 4> values_;
};

}  // namespace ovno2::host
