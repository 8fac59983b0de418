// Any bytes as an executable: reading its version ends, stays inside the file, and leaves the version alone
// when there is none.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/portable/version_resource.h"

using namespace ovno2;
using namespace ovno2::platform;

namespace {

class FileInMemory final : public OpenFile {
  public:
    FileInMemory(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    FailureNumber size(std::uint64_t& bytes) override {
        bytes = size_;
        return noFailure;
    }
    FailureNumber seek(std::uint64_t position) override {
        position_ = static_cast<std::size_t>(std::min<std::uint64_t>(position, size_));
        return noFailure;
    }
    FailureNumber read(void* to, std::size_t bytes, std::size_t& got) override {
        got = std::min(bytes, size_ - position_);
        if (got != 0) std::memcpy(to, data_ + position_, got);
        position_ += got;
        return noFailure;
    }
    FailureNumber write(const void*, std::size_t) override { std::abort(); }
    FailureNumber close() override { return noFailure; }

  private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t position_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FileInMemory file(data, size);
    FileVersion version;
    std::fill(std::begin(version.file), std::end(version.file), std::uint16_t{0xABCD});
    std::fill(std::begin(version.product), std::end(version.product), std::uint16_t{0xABCD});
    const FileVersion before = version;
    const bool found = portable::readVersionResource(file, version);
    if (!found && std::memcmp(&version, &before, sizeof version) != 0) std::abort();
    return 0;
}
