#include <gmock/gmock.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "base/utf8.h"
#include "common/machine_test.h"
#include "platform/portable/registry.h"

namespace ovno2::platform::portable {
namespace {

class MachineRegistry : public MachineTest {
  protected:
    std::filesystem::path file() const { return folder.path() / "registry.reg"; }
    void put(std::string_view bytes) const { writeContent(file(), bytes); }
    // The value as UTF-8 without its terminating NUL, numbers in decimal, bytes as they are; "-" when
    // missing.
    std::string read(Long hive, TextView key, TextView name, bool view64 = false) {
        std::unique_ptr<RegistryKey> opened;
        RegistryValue value;
        if (machine.registry().open(hive, key, view64, opened) != 0 || opened->read(name, value) != 0)
            return "-";
        if (value.type == 4) return std::to_string(value.number);
        if (!value.text.empty() && value.text.back() == u'\0') value.text.pop_back();
        return toUtf8(value.text) + value.bytes;
    }
    static Long writeNumber(Registry& registry, TextView key, TextView name, std::uint32_t number) {
        std::unique_ptr<RegistryKey> opened;
        const Long result = registry.create(currentUser, key, opened);
        return result != 0 ? result
                           : opened->write(name, {.type = 4, .text = {}, .bytes = {}, .number = number});
    }
};

// Reads a file with these lines below its header.
RegistryFile parsed(const std::string& lines) {
    return RegistryFile("Windows Registry Editor Version 5.00\n" + lines);
}

// As the registry editor writes it, every kind of value once.
constexpr const char* exportedLines =
    "Windows Registry Editor Version 5.00\r\n\r\n"
    "; a comment\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\PC Connectivity Solution]\r\n"
    "\"PlatformPath\"=\"C:\\\\Program Files\\\\PC Connectivity Solution\\\\\"\r\n"
    "\"Quote\"=\"say \\\"hi\\\"\"\r\n"
    "\"Bias\"=dword:ffffffc4\r\n"
    "\"Expand\"=hex(2):25,00,54,00,45,00,4d,00,50,00,25,00,5c,\\\r\n"
    "  00,78,00,00,00\r\n"
    "\"List\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
    "\"Bytes\"=hex:00,01,ff\r\n"
    "\"Big\"=hex(b):01,02,03,04,05,06,07,08\r\n"
    "\"Plain\"=hex(1):7a,00\r\n"
    "\"Lines\"=\"first\r\nsecond\"\r\n"
    "@=\"the default\"\r\n\r\n"
    "[HKEY_CLASSES_ROOT\\Wow6432Node\\CLSID\\{1}\\LocalServer32]\r\n"
    "@=\"tray.exe\"\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Zo\xC3\xAB]\r\n"
    "\"Gr\xC3\xB6\xC3\x9F"
    "e\"=\"\xE9\x9B\xBB\"\r\n";

TEST_F(MachineRegistry, AnExportIsReadInEveryEncodingTheEditorHas) {
    using namespace std::string_literals;
    using Row = std::pair<TextView, std::string>;
    const Row values[] = {Row{u"platformpath", "C:\\Program Files\\PC Connectivity Solution\\"},
                          Row{u"Quote", "say \"hi\""},
                          Row{u"Bias", "4294967236"},
                          Row{u"Expand", "%TEMP%\\x"},
                          Row{u"List", "a\0b\0"s},
                          Row{u"Bytes", "\0\1\xFF"s},
                          Row{u"Big", "\1\2\3\4\5\6\7\10"},
                          Row{u"Plain", "z"},
                          Row{u"Lines", "first\r\nsecond"},
                          Row{u"", "the default"}};
    for (const std::string& bytes : {std::string(exportedLines), "\xEF\xBB\xBF"s + exportedLines,
                                     "\xFF\xFE" + toUtf16Bytes(fromUtf8(exportedLines))}) {
        put(bytes);
        for (const auto& [name, expected] : values)
            EXPECT_EQ(expected, read(localMachine, u"software\\PC Connectivity Solution", name))
                << toUtf8(name);
        EXPECT_EQ("tray.exe", read(classesRoot, u"CLSID\\{1}\\LocalServer32", u""));
        EXPECT_EQ("\xE9\x9B\xBB", read(localMachine, u"SOFTWARE\\ZO\u00CB", u"GR\u00D6\u00DFE"));
    }
}

TEST_F(MachineRegistry, AnAnsiExportIsReadInThePageItNames) {
    put("REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\r\n\"ACP\"="
        "\"1251\"\r\n"
        "[HKEY_CURRENT_USER\\Software\\A]\r\n\"name\"=\"\xCC\xE0\xF8\xE0\"\r\n\"list\"=hex(7):cc,00,"
        "00\r\n\"path\"=hex(2):CA,00\r\n");
    for (const bool changed : {false, true}) {  // survives the change to UTF-8
        if (changed) setRegistryText(currentUser, u"Software\\A", u"new", u"\u96FB");
        EXPECT_EQ(toUtf8(u"Маша"), read(currentUser, u"Software\\A", u"name"));
        EXPECT_EQ(std::string("\xD0\x9C\0", 3), read(currentUser, u"Software\\A", u"list"));
        EXPECT_EQ(toUtf8(u"К"), read(currentUser, u"Software\\A", u"path"));
        EXPECT_EQ(changed ? "\xE9\x9B\xBB" : "-", read(currentUser, u"Software\\A", u"new"));
    }
    EXPECT_THAT(contentOf(file()), testing::StartsWith("Windows Registry Editor Version 5.00\r\n"));
}

TEST_F(MachineRegistry, The32BitViewIsTheRedirectedKeyWhereThereIsOne) {
    put("Windows Registry Editor Version 5.00\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Both]\n\"v\"=\"64\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\Both]\n\"v\"=\"32\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Only]\n\"v\"=\"only\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\X]\n\"v\"=\"class\"\n"
        "[HKEY_CURRENT_USER\\Software\\Classes\\Y]\n\"v\"=\"mine\"\n");
    EXPECT_EQ("32", read(localMachine, u"SOFTWARE\\Both", u"v"));
    EXPECT_EQ("64", read(localMachine, u"SOFTWARE\\Both", u"v", /*view64=*/true));
    EXPECT_EQ("32", read(localMachine, u"Software\\Wow6432Node\\Both", u"v"));
    EXPECT_EQ("only", read(localMachine, u"SOFTWARE\\Only", u"v"));
    EXPECT_EQ("class", read(classesRoot, u"X", u"v"));
    EXPECT_EQ("mine", read(classesRoot, u"Y", u"v"));
    setRegistryText(localMachine, u"SOFTWARE\\Both", u"v", u"changed");
    EXPECT_EQ("changed", read(localMachine, u"SOFTWARE\\Both", u"v"));
    EXPECT_EQ("64", read(localMachine, u"SOFTWARE\\Both", u"v", /*view64=*/true));
}

TEST_F(MachineRegistry, ADamagedLineCostsOnlyItself) {
    for (const std::string line :
         {"\"open=1", "\"v\"=\"no end", "\"v\"=dword:xyz", "\"v\"=dword:123456789", "\"v\"=hex:0g",
          "\"v\"=hex:100", "\"v\"=hex(2:00", "\"v\"\"x\"", "\"v\"=what:1", "nonsense", "\"v\"=\"a\" b",
          "\"v\"=hex:01 02", "\"v\"=hex:01,\\ x"}) {
        const RegistryFile file = parsed("[HKEY_CURRENT_USER\\K]\n" + line + "\n\"good\"=\"yes\"\n");
        ASSERT_EQ(1u, file.damages().size()) << line;
        EXPECT_EQ(3u, file.damages()[0].line) << line;
        EXPECT_TRUE(file.find(u"HKEY_CURRENT_USER\\K", u"good")) << line;
        EXPECT_FALSE(file.find(u"HKEY_CURRENT_USER\\K", u"v")) << line;
    }
    const RegistryFile keys =
        parsed("[HKEY_CURRENT_USER\\K\n[HKEY_NOBODY\\K]\n\"a\"=\"1\"\n[HKEY_USERS\\K]\n\"b\"=\"2\"\n");
    EXPECT_EQ(3u, keys.damages().size());
    EXPECT_TRUE(keys.find(u"HKEY_USERS\\K", u"b"));
    EXPECT_FALSE(keys.find(u"HKEY_CURRENT_USER\\K", u"a"));
}

TEST_F(MachineRegistry, LaterLinesWinAndDeletionsDelete) {
    const RegistryFile file = parsed(
        "[HKEY_CURRENT_USER\\A]\n\"v\"=\"1\"\n\"w\"=\"1\"\n[HKEY_CURRENT_USER\\A\\B]\n\"v\"=\"1\"\n"
        "[HKEY_CURRENT_USER\\AB]\n\"v\"=\"1\"\n[HKEY_CURRENT_USER\\C]\n\"v\"=\"1\"\n"
        "[hkey_current_user\\a]\n\"V\"=\"2\"\n\"w\"=-\n[-HKEY_CURRENT_USER\\A\\B]\n\"v\"=\"3\"\n"
        "[-HKEY_CURRENT_USER\\C]\n");
    EXPECT_TRUE(file.damages().empty());
    EXPECT_EQ(Text(u"2\0", 2), file.find(u"HKEY_CURRENT_USER\\A", u"v")->text);
    EXPECT_FALSE(file.find(u"HKEY_CURRENT_USER\\A", u"w"));
    EXPECT_FALSE(file.hasKey(u"HKEY_CURRENT_USER\\A\\B"));
    EXPECT_FALSE(file.hasKey(u"HKEY_CURRENT_USER\\C"));
    EXPECT_TRUE(file.hasKey(u"HKEY_CURRENT_USER\\AB"));
    EXPECT_TRUE(file.hasKey(u"HKEY_CURRENT_USER")) << "a key brings those above it";
}

TEST_F(MachineRegistry, AnEditLeavesEverythingElseAsItStandsAndDamageIsReportedOnce) {
    testing::internal::CaptureStderr();
    put("Windows Registry Editor Version 5.00\r\n\r\n; mine\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n"
        "\"v\"=\"old\"\r\nbroken line\r\n\"w\"=hex:01,\\\r\n  02\r\n\r\n"
        "[HKEY_CURRENT_USER\\Software\\A]\r\n\"V\"=\"newer\"");
    setRegistryNumber(currentUser, u"Software\\A", u"w", 16);
    setRegistryText(currentUser, u"Software\\A", u"v", u"newest \"\\");
    setRegistryText(currentUser, u"Software\\A", u"x", u"added");
    setRegistryText(currentUser, u"Software\\New", u"y", u"1");
    EXPECT_EQ(
        "Windows Registry Editor Version 5.00\r\n\r\n; mine\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n"
        "\"v\"=\"old\"\r\nbroken line\r\n\"w\"=dword:00000010\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n"
        "\"v\"=\"newest "
        "\\\"\\\\\"\r\n\"x\"=\"added\"\r\n\r\n[HKEY_CURRENT_USER\\Software\\New]\r\n\"y\"=\"1\"\r\n",
        contentOf(file()));
    std::unique_ptr<RegistryKey> key;
    ASSERT_EQ(0, machine.registry().create(currentUser, u"Software\\A", key));
    EXPECT_EQ(0, key->remove(u"V"));
    EXPECT_EQ("-", read(currentUser, u"Software\\A", u"v")) << "an older line does not come back";
    EXPECT_EQ(file().string() + ": line 6: not a line of a registry file; the rest is used\n",
              testing::internal::GetCapturedStderr());
}

TEST_F(MachineRegistry, ChangesOfOthersAreSeenAndKept) {
    Machine other(folder.path());
    setRegistryText(currentUser, u"Software\\A", u"mine", u"1");
    EXPECT_EQ("1", read(currentUser, u"Software\\A", u"mine"));
    EXPECT_EQ(0, writeNumber(other.registry(), u"Software\\A", u"theirs", 2));
    EXPECT_EQ("2", read(currentUser, u"Software\\A", u"theirs"));
    put("Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\Software\\A]\n\"edited\"=\"by hand\"\n");
    EXPECT_EQ("by hand", read(currentUser, u"Software\\A", u"edited"));
    EXPECT_EQ("-", read(currentUser, u"Software\\A", u"mine"));
}

TEST_F(MachineRegistry, WritersInSeveralProcessesAndThreadsLoseNothing) {
    constexpr int writers = 3, values = 12;
    const auto nameOf = [](int writer, int value) { return decimalText(Long{writer * values + value}); };
    const auto write = [&](Registry& registry, int writer) {
        bool written = true;
        for (int i = 0; i < values; ++i)
            written = writeNumber(registry, u"Software\\Shared", nameOf(writer, i), 1) == 0 && written;
        return written;
    };
    const pid_t process = fork();
    if (process == 0) _exit(write(Machine(folder.path()).registry(), 0) ? 0 : 1);
    std::thread thread([&] { EXPECT_TRUE(write(machine.registry(), 1)); });
    EXPECT_TRUE(write(machine.registry(), 2));
    thread.join();
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_EQ(0, status);
    for (int writer = 0; writer < writers; ++writer)
        for (int i = 0; i < values; ++i)
            EXPECT_EQ("1", read(currentUser, u"Software\\Shared", nameOf(writer, i)));
}

TEST_F(MachineRegistry, AFileThatCannotBeReplacedKeepsItsContent) {
    setRegistryText(currentUser, u"Software\\A", u"v", u"kept");
    std::filesystem::create_directory(file().string() + ".new");
    EXPECT_NE(0, writeNumber(machine.registry(), u"Software\\A", u"v", 1));
    EXPECT_EQ("kept", read(currentUser, u"Software\\A", u"v"));
    std::filesystem::remove(file().string() + ".new");
    EXPECT_EQ(0, writeNumber(machine.registry(), u"Software\\A", u"v", 1));
    EXPECT_EQ("1", read(currentUser, u"Software\\A", u"v"));
}

}  // namespace
}  // namespace ovno2::platform::portable
