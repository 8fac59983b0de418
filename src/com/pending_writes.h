// What a call will write into the host's variables: prepared while it may still fail, put in place when it no
// longer can.
//
// Every argument of a call prepares its writes first; only when all of them succeeded are they put in place.
// So a call that runs out of memory leaves all of the host's variables as they were.
#pragma once

#include <vector>

#include "com/texts.h"

namespace ovno2::com {

class PendingWrites {
  public:
    // `place` will hold what `current` holds now when the write is put in place; nothing is written where
    // that is the value already.
    void text(BSTR* place, BSTR current, TextView value) {
        if (viewOf(current) != value) texts_.push_back({place, Bstr(value)});
    }
    void number(LONG* place, LONG current, LONG value) {
        if (current != value) numbers_.push_back({place, value});
    }

    void putInPlace() noexcept {
        for (PendingText& write : texts_) {
            SysFreeString(*write.place);
            *write.place = write.value.release();
        }
        for (const PendingNumber& write : numbers_)
            *write.place = write.value;
        texts_.clear();
        numbers_.clear();
    }

  private:
    struct PendingText {
        BSTR* place;
        Bstr value;
    };
    struct PendingNumber {
        LONG* place;
        LONG value;
    };
    std::vector<PendingText> texts_;
    std::vector<PendingNumber> numbers_;
};

}  // namespace ovno2::com
