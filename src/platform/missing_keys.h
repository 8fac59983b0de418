// Registry keys that were not there a moment ago.
//
// The module asks for its log's switches all the time, and on most machines their keys do not exist. Looking
// for them each time would take a large part of a long read.
#pragma once

#include <array>
#include <chrono>
#include <mutex>

#include "platform/registry.h"

namespace ovno2::platform {

class MissingKeys {
  public:
    // True when the key was missing less than `moment` ago.
    bool contain(Long hive, TextView path, bool view64, std::chrono::nanoseconds moment) {
        const std::lock_guard guard(mutex_);
        for (const Entry& entry : entries_) {
            if (entry.hive == hive && entry.view64 == view64 && entry.path == path)
                return Clock::now() - entry.seen < moment;
        }
        return false;
    }

    // Keeps the latest few.
    void add(Long hive, TextView path, bool view64) {
        const std::lock_guard guard(mutex_);
        Entry* place = &entries_[next_];
        for (Entry& entry : entries_) {
            if (entry.hive == hive && entry.view64 == view64 && entry.path == path) place = &entry;
        }
        if (place == &entries_[next_]) next_ = (next_ + 1) % entries_.size();
        place->path = path;
        place->hive = hive;
        place->view64 = view64;
        place->seen = Clock::now();
    }

    // A key was made.
    void clear() {
        const std::lock_guard guard(mutex_);
        for (Entry& entry : entries_)
            entry.hive = 0;
    }

  private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        Long hive = 0;  // 0 = none
        bool view64 = false;
        Text path;
        Clock::time_point seen;
    };
    std::mutex mutex_;
    std::array<Entry, 4> entries_;
    std::size_t next_ = 0;
};

}  // namespace ovno2::platform
