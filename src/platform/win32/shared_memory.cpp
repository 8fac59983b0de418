// Named file mappings on 32-bit Windows.

#include <windows.h>

#include "platform/win32/wide.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

class Mapping : public SharedArea {
  public:
    explicit Mapping(DWORD access) : access_(access) {}
    ~Mapping() override {
        Mapping::unmap();
        if (handle_) CloseHandle(handle_);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    DWORD access() const { return access_; }
    bool hold(HANDLE handle) {
        handle_ = handle;
        return handle_ != nullptr;
    }

    std::byte* map(std::size_t size) override {
        if (view_) return size <= size_ ? view_ : nullptr;
        // A mapping that is smaller is refused by the platform. A size of 0 would mean the whole mapping.
        if (size > 0) view_ = static_cast<std::byte*>(MapViewOfFile(handle_, access_, 0, 0, size));
        if (view_) size_ = size;
        return view_;
    }

    void unmap() override {
        if (view_) UnmapViewOfFile(view_);
        view_ = nullptr;
        size_ = 0;
    }

  private:
    HANDLE handle_ = nullptr;
    DWORD access_;
    std::byte* view_ = nullptr;
    std::size_t size_ = 0;
};

class NamedMappings : public SharedMemory {
  public:
    std::unique_ptr<SharedArea> open(TextView name, bool forWriting) override {
        auto area = std::make_unique<Mapping>(forWriting ? FILE_MAP_WRITE : FILE_MAP_READ);
        const bool opened =
            area->hold(OpenFileMappingW(area->access(), /*bInheritHandle=*/FALSE, wide(Text(name))));
        if (!opened) return nullptr;
        return area;
    }

    std::unique_ptr<SharedArea> create(TextView name, std::size_t size) override {
        if (name.empty() || size == 0) return nullptr;
        auto area = std::make_unique<Mapping>(FILE_MAP_WRITE);
        const bool created =
            area->hold(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, /*sizeHigh=*/0,
                                          static_cast<DWORD>(size), wide(Text(name))));
        if (!created) return nullptr;
        return area;
    }
};

}  // namespace

std::unique_ptr<SharedMemory> makeSharedMemory() {
    return std::make_unique<NamedMappings>();
}

}  // namespace ovno2::platform::win32
