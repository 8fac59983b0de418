#include "pc/files.h"

#include <gmock/gmock.h>

#include "common/failing_allocator.h"
#include "common/platform_test.h"
#include "common/recording_log.h"
#include "pc/ansi.h"

namespace ovno2 {
namespace {

using namespace std::string_view_literals;
using namespace Files;

class FileRoutines : public PlatformTest {
  protected:
    Long write(const std::string& name, TextView text, Long encoding, bool append = false) {
        Text path = pathOf(name);
        return WriteFileContents(path, text, append, encoding, /*showError=*/false);
    }
    static auto entriesOf(const std::filesystem::path& path) {
        return std::distance(std::filesystem::directory_iterator(path), {});
    }
};

TEST_F(FileRoutines, FilesAreReadAsBytesOrDecoded) {
    using Row = std::tuple<std::string_view, Text, Long>;
    for (const auto& [bytes, decoded, expected] :
         {Row{""sv, Text(), 0}, Row{"plain \x80\xE4\0\r\n"sv, Text(u"plain €ä\0\r\n", 11), 0},
          Row{"\xFF\xFE\x41\0\xAC\x20\x42"sv, u"A€", 4},
          Row{"\0H\0e\0l\0l\0o\0 \0w\0o\0r\0l\0d"sv, u"Hello world", 3}}) {
        writeFile("file", bytes);
        Long encoding = 77;
        EXPECT_EQ(fromAnsi(bytes), GetFileContents(pathOf("file"), /*decode=*/false, encoding));
        EXPECT_EQ(0, encoding);
        EXPECT_EQ(decoded, GetFileContents(pathOf("file"), /*decode=*/true, encoding));
        EXPECT_EQ(expected, encoding);
        EXPECT_EQ(fromAnsi(bytes), GetFileContentsW(pathOf("file"), /*decode=*/false));
        EXPECT_EQ(decoded, GetFileContentsW(pathOf("file"), /*decode=*/true));
    }
}

TEST_F(FileRoutines, AMissingFileIsEmptyAndIsLogged) {
    std::filesystem::create_directory(folder() / "folder");
    for (const char* name : {"missing", "no/where", "folder"}) {
        Long encoding = 77;
        RecordingLog log;
        EXPECT_EQ(u"", GetFileContents(pathOf(name), /*decode=*/true, encoding));
        EXPECT_EQ(77, encoding);
        EXPECT_THAT(log.lines, ::testing::Contains("File not found:" + toUtf8(pathOf(name))));
        EXPECT_EQ("GetFileContents>", log.lines.back());
    }
    for (const Text& path : {Text(), Text(40000, u'\\')})
        EXPECT_EQ(u"", GetFileContents(path, /*decode=*/false));
}

// Whole files as they are, for what is too large to be held as text.
TEST_F(FileRoutines, BytesAreReadAndReplacedWholeOrNotAtAll) {
    const std::string bytes("\xFF\xFE\0a\r\n\x80", 7);
    writeFile("a.bin", bytes);
    writeFile("empty", "");
    FileBytes content;
    EXPECT_TRUE(GetFileBytes(pathOf("a.bin"), content));
    EXPECT_FALSE(GetFileBytes(pathOf("missing"), content));
    EXPECT_FALSE(GetFileBytes(pathOf(""), content));
    EXPECT_EQ(bytes, std::string(content.all().begin(), content.all().end())) << "as it was";
    EXPECT_TRUE(GetFileBytes(pathOf("empty"), content));
    EXPECT_EQ(0u, content.size);

    Text target = pathOf("a.bin");
    const ByteSource failing = [calls = 0](std::span<std::uint8_t> piece) mutable -> std::size_t {
        if (++calls == 2) throw RuntimeFailure(invalidProcedureCall);
        return piece.size();
    };
    EXPECT_EQ(-1, WriteFileBytes(target, failing, /*showError=*/false));
    EXPECT_EQ(bytes, readFile("a.bin"));
    const ByteSource threeAndTwo = [left = 3](std::span<std::uint8_t> piece) mutable -> std::size_t {
        std::copy_n("abc", 3, piece.begin());
        return left == 1 ? 0 : static_cast<std::size_t>(left--);
    };
    target = pathOf("new") + u"\\a.bin";
    EXPECT_EQ(0, WriteFileBytes(target, threeAndTwo, /*showError=*/false));
    EXPECT_EQ("abcab", readFile("new/a.bin"));
}

TEST_F(FileRoutines, TheWideReaderKeepsChunksThatHoldTheRequiredText) {
    constexpr std::size_t chunk = 4'096'000;
    std::string bytes = std::string(chunk, 'a') + std::string(chunk, 'b') + "ccc";
    bytes[chunk + 5] = '!';
    writeFile("file", bytes);
    const Text path = pathOf("file");
    EXPECT_EQ(fromAnsi(bytes), GetFileContentsW(path, /*decode=*/false));
    EXPECT_EQ(fromAnsi(bytes.substr(chunk, chunk)), GetFileContentsW(path, /*decode=*/false, u"b!b"));
    EXPECT_EQ(u"ccc", GetFileContentsW(path, /*decode=*/false, u"cc"));
    EXPECT_EQ(u"", GetFileContentsW(path, /*decode=*/false, u"ab"));  // across two chunks
    EXPECT_EQ(u"aaa", GetFileContentsW(path, /*decode=*/false, u"", 3));
    EXPECT_EQ(u"", GetFileContentsW(path, /*decode=*/false, u"b", 3));
    EXPECT_EQ(chunk, GetFileContentsW(path, /*decode=*/false, u"", 5'000'000).size());
    writeFile("wide", "\xFF\xFE" + std::string(2 * chunk + 3, 'x'));
    EXPECT_EQ(Text(chunk + 1, u'\u7878'), GetFileContentsW(pathOf("wide"), /*decode=*/true));
}

TEST_F(FileRoutines, TextsAreWrittenInTheEncodingAskedFor) {
    using Row = std::tuple<Text, Long, std::string_view>;
    for (const auto& [text, encoding, bytes] :
         {Row{Text(u"abc"), 4, "\xFF\xFE\x61\0\x62\0\x63\0"sv},
          Row{u"abc", 2, "\xFE\xFF\0\x61\0\x62\0\x63"sv}, Row{u"a€", 3, "\0\x61\x20\xAC"sv},
          Row{u"\uFEFFa", 4, "\xFF\xFE\x61\0"sv}, Row{u"", 4, "\xFF\xFE"sv}, Row{u"€中Ł", 0, "\x80?L"sv},
          Row{u"abc", 7, "abc"sv}, Row{Text(u"a\0b", 3), 0, "a\0b"sv},
          Row{Text(u"a\0b\0", 4), 4, "\xFF\xFE\x61\0\x62\0"sv},  // bytes already
          Row{Text(u"ÿþa\0", 4), 4, "\xFF\xFE\x61\0"sv}, Row{Text(u"\0a", 2), 2, "\xFE\xFF\0\x61"sv}}) {
        EXPECT_EQ(0, write("file", text, encoding));
        EXPECT_EQ(bytes, readFile("file")) << toUtf8(text) << " " << encoding;
    }
    EXPECT_EQ(0, write("file", u"ab", 4));
    EXPECT_EQ(0, write("file", u"c", 4, /*append=*/true));
    EXPECT_EQ("\xFF\xFE\x61\0\x62\0\x63\0"sv, readFile("file"));
    EXPECT_EQ(1, entriesOf(folder()));
}

TEST_F(FileRoutines, EveryCharacterSurvivesAFile) {
    Text units;
    for (unsigned c = 1; c < 0x10000; ++c)
        units += static_cast<char16_t>(c);
    for (const Long encoding : {2, 4}) {
        Long found = 0;
        EXPECT_EQ(0, write("units", units, encoding));
        EXPECT_EQ(units, GetFileContents(pathOf("units"), /*decode=*/true, found));
        EXPECT_EQ(encoding, found);
    }
}

TEST_F(FileRoutines, MissingFoldersAreMadeAndThePathComesBackAsItWasUsed) {
    Text path = pathOf("new") + u"/deep\\?er/wh?at.txt";
    EXPECT_EQ(0, WriteFileContents(path, u"abc", /*append=*/false, 0, /*showError=*/false));
    EXPECT_EQ(pathOf("new") + u"\\deep\\er\\wh_at.txt", path);
    EXPECT_EQ("abc", readFile("new/deep/er/wh_at.txt"));
    Text none;
    EXPECT_EQ(0, WriteFileContents(none, u"abc", /*append=*/false, 0, /*showError=*/false));
    writeFile("file", "content");
    EXPECT_EQ(-1, write("file/below", u"abc", 0));
    EXPECT_EQ(-1, write("new", u"abc", 0));
    EXPECT_EQ("content", readFile("file"));
}

TEST_F(FileRoutines, AHiddenFileIsReplacedAndStaysHidden) {
    writeFile("file", "old content");
    const Text path = pathOf("file");
    if (SetAttributes(path, GetAttributes(path) | platform::attributeHidden) == 0)
        GTEST_SKIP() << "this file system keeps no hidden files";
    EXPECT_EQ(0, write("file", u"new", 0));
    EXPECT_EQ("new", readFile("file"));
    EXPECT_EQ(platform::attributeHidden, GetAttributes(path) & platform::attributeHidden);
    // Read-only as well: the write fails, and the file is hidden again.
    const Long both = GetAttributes(path) | platform::attributeReadOnly;
    ASSERT_NE(0, SetAttributes(path, both));
    EXPECT_EQ(-1, write("file", u"newer", 0));
    EXPECT_EQ(both, GetAttributes(path));
    EXPECT_EQ("new", readFile("file"));
    SetAttributes(path, both & ~platform::attributeReadOnly);
}

TEST_F(FileRoutines, TestsSeeThroughQuotesAndStopAtStars) {
    writeFile("a.txt", "12345");
    const Text file = pathOf("a.txt"), missing = file + u"x", folder = FolderPart(file);
    using Row = std::tuple<Text, bool, bool, bool>;
    for (const auto& [path, readable, exists, isFolder] :
         {Row{file, true, true, false}, Row{u'"' + file + u'"', true, true, false},
          Row{folder, false, true, true}, Row{missing, false, false, false},
          Row{u'"' + folder + u"\\*.txt\"", false, false, true},
          Row{u"\\\\", false, FileExists(u"\\\\"), false}, Row{u"", false, false, false}}) {
        EXPECT_EQ(readable, FileExistsW_(path)) << toUtf8(path);
        EXPECT_EQ(exists, FileExists(path)) << toUtf8(path);
        EXPECT_EQ(isFolder, FolderExists(path)) << toUtf8(path);
    }
    EXPECT_EQ(GetAttributes(folder), GetAttributes(folder + u"*.*"));
    EXPECT_EQ(platform::noAttributes, GetAttributes(missing));
    EXPECT_EQ(0, SetAttributes(missing, 0));
    EXPECT_EQ(5, FileSize(file));
    EXPECT_EQ(0, FileSize(missing));
    EXPECT_EQ(0, FileSize(missing, /*skipExistenceTest=*/true));
}

TEST_F(FileRoutines, PathsAreSplitAtTheLastBackslashElseTheLastSlash) {
    using Texts = std::array<TextView, 3>;
    for (const auto& [path, folder, name] :
         {Texts{u"C:\\a\\b.txt", u"C:\\a", u"b.txt"}, Texts{u"a/b/c.d.e", u"a/b", u"c.d.e"},
          Texts{u"a\\b/c", u"a", u"b/c"}, Texts{u"name", u"", u"name"}, Texts{u"a\\", u"a", u""},
          Texts{u"\\a", u"", u"a"}, Texts{u"", u"", u""}, Texts{u"http://host", u"http://host", u"host"},
          Texts{u"http://host/a", u"http://host", u"a"}, Texts{u"\"C:\\a\\b.txt\"", u"C:\\a", u"b.txt"},
          Texts{u"\"a\"\\\"b\"", u"\"a\"", u"\"b\""}}) {
        EXPECT_EQ(folder, FolderPart(path)) << toUtf8(path);
        EXPECT_EQ(name, FileNamePart(path)) << toUtf8(path);
    }
    EXPECT_EQ(u"C:\\a\\", FolderPart(u"C:\\a\\b", /*keepSeparator=*/true));
    EXPECT_EQ(u"c.d", FileNamePart(u"a/b/c.d.e", /*keepExtension=*/false));
    EXPECT_EQ(u"", FileNamePart(u"a\\.profile", /*keepExtension=*/false));
    using Cut = std::pair<Text, TextView>;
    for (auto [path, rest] :
         {Cut{u"a\\b\\", u"a\\b"}, Cut{u"a/", u"a"}, Cut{u"a\\/", u"a\\"}, Cut{u"a", u"a"}, Cut{}}) {
        RemoveTrailingSeparator(path);
        EXPECT_EQ(rest, path);
    }
}

TEST_F(FileRoutines, FoldersAreMadeWithAllThatIsMissingAbove) {
    EXPECT_EQ(0, MkDirRecourse(pathOf("a") + u"\\b\\c\\"));
    EXPECT_TRUE(FolderExists(pathOf("a") + u"\\b\\c"));
    EXPECT_EQ(0, MkDirRecourse(pathOf("a")));
    EXPECT_EQ(0, MkDirRecourse(pathOf("d") + u"\\e.f\\g", u"sub"));
    EXPECT_TRUE(FolderExists(pathOf("d") + u"\\e.f\\g"));
    EXPECT_EQ(0, MkDir_(pathOf("h") + u"\\i\\"));
    EXPECT_TRUE(FolderExists(pathOf("h") + u"\\i"));
    writeFile("file", "content");
    MkDirRecourse(pathOf("file") + u"\\below");
    EXPECT_EQ("content", readFile("file"));
}

TEST_F(FileRoutines, ShortNamesOfShortPathsNameTheSameFile) {
    std::filesystem::create_directory(folder() / "a folder with a long name");
    writeFile("a folder with a long name/file.txt", "found");
    EXPECT_EQ(u"found",
              GetFileContents(GetShortFileName(pathOf("a folder with a long name/file.txt")), false));
    const Text longName = u'\\' + Text(250, u'n');
    EXPECT_EQ(GetShortFileName(pathOf(".")) + longName, GetShortFileName(pathOf(".") + longName));
    for (const Text& same : {Text(u"no such file"), Text(100'000, u'\\'), u"http://" + Text(300, u'h')})
        EXPECT_EQ(same, GetShortFileName(same));
}

TEST_F(FileRoutines, AnyAllocationMayFail) {
    FileExistsW_(pathOf("warm-up"));  // what the thread keeps is made
    const auto descriptors = entriesOf("/proc/self/fd");
    const Text path = pathOf("new") + u"/folder/file.txt", written(1000, u'x');
    Text used = path;
    Long result = 0;
    failEveryAllocation([&] { result = WriteFileContents(used, written, /*append=*/false, 4, true); },
                        [&](long n) {
                            const std::string content = readFile("new/folder/file.txt");
                            EXPECT_EQ(result == 0 ? 2002u : 0u, content.size()) << n << ": all or nothing";
                            std::filesystem::remove_all(folder() / "new");
                            used = path;
                        });
    EXPECT_EQ(0, result);

    writeFile("file.txt", "\xFF\xFE" + std::string(1000, 'x'));
    const Text file = pathOf("file.txt"), whole(500, u'\u7878');
    Text text;
    failEveryAllocation(
        [&] { text = GetFileContents(file, /*decode=*/true); },
        [&](long n) { EXPECT_TRUE(text == whole || text.empty() || text.size() == 1002) << n; });
    EXPECT_EQ(whole, text);
    failEveryAllocation([&] { text = GetFileContentsW(file, /*decode=*/true); },
                        [&](long n) { EXPECT_TRUE(text == whole || text.empty()) << n; });
    EXPECT_EQ(whole, text);

    const Text deep = pathOf("a") + u"\\b\\c", longPath = pathOf("a") + u'\\' + Text(300, u'n');
    failEveryAllocation(
        [&] {
            MkDirRecourse(deep, u"sub");
            MkDirRecourse(longPath);
            FileExistsW_(deep);
            FileSize(deep, /*skipExistenceTest=*/true);
            GetShortFileName(longPath);
        },
        [](long) {});
    EXPECT_TRUE(FolderExists(deep));
    EXPECT_GE(descriptors, entriesOf("/proc/self/fd"));
}

}  // namespace
}  // namespace ovno2
