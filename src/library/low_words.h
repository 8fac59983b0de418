// Memory of the module's own whose address fits a library record: the fallback where the library has none
// left.
#pragma once

#include <cstddef>
#include <utility>

#include "library/library_memory.h"

namespace ovno2::library {

// A zeroed array of 32-bit words below 4 GiB. It stays where it is until `allocate` or its end.
class LowWords {
  public:
    LowWords() = default;
    explicit LowWords(std::size_t count) { allocate(count); }
    ~LowWords() { release(); }
    LowWords(const LowWords&) = delete;
    LowWords& operator=(const LowWords&) = delete;

    // Room for `count` zeroed words in place of what was there; false, and no words, when there is no memory.
    bool allocate(std::size_t count) {
        release();
        memory_ = &currentPlatform().memory();
        words_ = static_cast<Word*>(memory_->allocateLow(count * sizeof(Word)));
        count_ = words_ ? count : 0;
        return words_ != nullptr;
    }

    std::size_t size() const { return count_; }
    Word* at(std::size_t index) const { return words_ + index; }
    bool holds(Address address) const {
        const Address first = addressOf(words_);
        return words_ && address >= first && address - first < count_ * sizeof(Word);
    }

  private:
    void release() {
        if (words_) memory_->freeLow(words_, count_ * sizeof(Word));
        words_ = nullptr;
        count_ = 0;
    }

    platform::Memory* memory_ = nullptr;  // the one the words came from
    Word* words_ = nullptr;
    std::size_t count_ = 0;
};

}  // namespace ovno2::library
