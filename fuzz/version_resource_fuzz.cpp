// Any bytes as an executable: reading its version ends, stays inside the file, and leaves the version alone
// when there is none.
#include <cstdlib>

#include "../tests/platform/memory_file.h"
#include "platform/portable/version_resource.h"

using namespace ovno2;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemoryFile file({reinterpret_cast<const char*>(data), size});
    constexpr platform::FileVersion before = {.file = {0xABCD, 1, 2, 3}, .product = {0xABCD, 4, 5, 6}};
    platform::FileVersion version = before;
    const bool found = platform::portable::readVersionResource(file, version);
    const auto same = [](const auto& a, const auto& b) {
        return std::equal(std::begin(a), std::end(a), std::begin(b));
    };
    if (!found && !(same(version.file, before.file) && same(version.product, before.product))) std::abort();
    return 0;
}
