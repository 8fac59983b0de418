// The simulator's library in a program that loads and frees it again and again.
#include <thread>

#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

// The number of the next handle: it grows when handles are lost.
std::uintptr_t nextHandle() {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(event);
    return reinterpret_cast<std::uintptr_t>(event);
}

TEST(SimulatorTest, StaysLoadedSoThatNoThreadBeginsAnotherWorldOrLosesHandles) {
    // A copy that nobody else in this program holds.
    const std::filesystem::path folder = windowsPath(OVNO2_SIMULATOR_FOLDER);
    const std::filesystem::path copy = folder / "copy" / "ConnAPI.dll";
    std::filesystem::create_directories(copy.parent_path());
    CopyFileW((folder / "ConnAPI.dll").c_str(), copy.c_str(), FALSE);
    std::uintptr_t handle = 0;
    for (int i = 0; i < 50; ++i) {
        std::thread([&] {
            const HMODULE library = LoadLibraryW(copy.c_str());
            ASSERT_NE(nullptr, library);
            reinterpret_cast<DWORD(__stdcall*)()>(GetProcAddress(library, "DMAPI_GetAPIVersion"))();
            FreeLibrary(library);
        }).join();
        ASSERT_NE(nullptr, GetModuleHandleW(copy.c_str())) << i;
        if (i == 0) handle = nextHandle();
    }
    EXPECT_GT(handle + 50 * 4, nextHandle()) << "a handle a thread is lost";  // their numbers go in fours
}

}  // namespace
}  // namespace ovno2::windows_tests
