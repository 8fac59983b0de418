// A file in memory, to be read.
#pragma once

#include <algorithm>
#include <string_view>

#include "platform/files.h"

namespace ovno2 {

class MemoryFile final : public platform::OpenFile {
  public:
    explicit MemoryFile(std::string_view bytes) : bytes_(bytes) {}
    FailureNumber size(std::uint64_t& bytes) override {
        bytes = bytes_.size();
        return noFailure;
    }
    FailureNumber seek(std::uint64_t position) override {
        at_ = static_cast<std::size_t>(std::min<std::uint64_t>(position, bytes_.size()));
        return noFailure;
    }
    FailureNumber read(void* to, std::size_t bytes, std::size_t& got) override {
        got = bytes_.copy(static_cast<char*>(to), bytes, at_);
        at_ += got;
        return noFailure;
    }
    FailureNumber write(const void*, std::size_t) override { return permissionDenied; }
    FailureNumber close() override { return noFailure; }

  private:
    std::string_view bytes_;
    std::size_t at_ = 0;
};

}  // namespace ovno2
