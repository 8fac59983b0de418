#include "windows/component_test.h"

#include "common/field_table.h"
#include "core/current_platform.h"

namespace ovno2::windows_tests {

namespace {

constexpr wchar_t softwareKey[] = L"SOFTWARE\\PC Connectivity Solution";
constexpr wchar_t folderValue[] = L"PlatformPath";

class RegisteredComponent : public ::testing::Environment {
  public:
    void SetUp() override {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        DWORD bytes = sizeof before_;
        hadFolder_ = RegGetValueW(HKEY_LOCAL_MACHINE, softwareKey, folderValue, RRF_RT_REG_SZ, nullptr,
                                  before_, &bytes) == ERROR_SUCCESS;
        const std::wstring folder = windowsPath(OVNO2_SIMULATOR_FOLDER).wstring();
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, softwareKey, folderValue, REG_SZ, folder.c_str(),
                        static_cast<DWORD>((folder.size() + 1) * sizeof(wchar_t)));
        ASSERT_EQ(0, run(L"regsvr32 /s \"" + componentPath().wstring() + L"\""));
    }
    void TearDown() override {
        run(L"regsvr32 /s /u \"" + componentPath().wstring() + L"\"");
        if (hadFolder_)
            RegSetKeyValueW(HKEY_LOCAL_MACHINE, softwareKey, folderValue, REG_SZ, before_,
                            static_cast<DWORD>((wcslen(before_) + 1) * sizeof(wchar_t)));
        else
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, softwareKey, folderValue);
    }

  private:
    wchar_t before_[1024] = {};
    bool hadFolder_ = false;
};

const auto* const environment = ::testing::AddGlobalTestEnvironment(new RegisteredComponent);

}  // namespace

std::filesystem::path windowsPath(const char* path) {
    wchar_t full[1024] = {};
    GetFullPathNameW(std::filesystem::path(path).c_str(), static_cast<DWORD>(std::size(full)), full, nullptr);
    return full;
}

std::filesystem::path componentPath() {
    return windowsPath(OVNO2_DIST) / "ovNo2.dll";
}

int run(const std::wstring& commandLine, std::string* output) {
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    CreatePipe(&read, &write, &inherited, 0);
    SetHandleInformation(read, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = write;
    start.hStdError = write;
    PROCESS_INFORMATION process = {};
    std::wstring line = commandLine;
    const BOOL started =
        CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process);
    CloseHandle(write);
    std::string printed;
    char buffer[4096];
    for (DWORD got = 0; ReadFile(read, buffer, sizeof buffer, &got, nullptr) && got > 0;)
        printed.append(buffer, got);
    CloseHandle(read);
    std::erase(printed, '\r');
    if (output) *output = printed;
    if (!started) return -1;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    return static_cast<int>(status);
}

std::vector<Text> textsOf(const OwnedSafeArray& array) {
    std::vector<Text> texts;
    for (const BSTR text : slotsOf<BSTR>(array))
        texts.push_back(textOf(text));
    return texts;
}

std::vector<Long> numbersOf(const OwnedSafeArray& array) {
    const std::span<LONG> numbers = slotsOf<LONG>(array);
    return {numbers.begin(), numbers.end()};
}

SAFEARRAY* newTexts(const std::vector<Text>& texts, LONG lowerBound) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_BSTR, lowerBound, static_cast<ULONG>(texts.size()));
    for (std::size_t i = 0; i < texts.size(); ++i)
        static_cast<BSTR*>(array->pvData)[i] = com::newBstr(texts[i]);
    return array;
}

ComponentTest::ComponentTest() {
    simulator.reset();
}

ComponentTest::~ComponentTest() {
    EXPECT_EQ("", simulator.leaks());
}

ComPointer<_covNo2> ComponentTest::create() {
    CLSID classId;
    ComPointer<_covNo2> object;
    EXPECT_EQ(S_OK, CLSIDFromProgID(L"ovNo2.covNo2", &classId));
    EXPECT_EQ(S_OK,
              CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, __uuidof(_covNo2), object.outAny()));
    return object;
}

LONG ComponentTest::readContacts(_covNo2& object, OwnedSafeArray& items, IDispatch* progress,
                                 TextView phone) {
    Bstr model(u"Nokia N95"), phoneId(phone), book;
    OwnedSafeArray table(host::newTable(tableOf({1, 2, 3, 23})));
    OwnedSafeArray groups;
    LONG result = 0;
    EXPECT_EQ(S_OK, object.NokiaGetAddressBookItems(model.address(), phoneId.address(), book.address(),
                                                    items.address(), table.address(), groups.address(),
                                                    nullptr, &progress, nullptr, &result));
    return result;
}

}  // namespace ovno2::windows_tests
