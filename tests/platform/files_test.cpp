#include <gmock/gmock.h>
#include <set>
#include <sstream>
#include <thread>

#include "common/platform_test.h"

namespace ovno2::platform {
namespace {

constexpr Long fileNumber = 17;

class FilesSeam : public PlatformTest {
  protected:
    Files& files() { return currentPlatform().files(); }

    FailureNumber open(const std::string& name, FileAccess access, Long number = fileNumber) {
        return files().open(number, pathOf(name), access, file);
    }
    FailureNumber write(const std::string& name, FileAccess access, std::string_view bytes) {
        OpenFile* opened = nullptr;
        FailureNumber failure = files().open(fileNumber, pathOf(name), access, opened);
        if (failure == noFailure) failure = opened->write(bytes.data(), bytes.size());
        if (failure == noFailure) failure = opened->close();
        files().close(fileNumber);
        return failure;
    }

    OpenFile* file = nullptr;  // the platform's, until its number is closed
};

TEST_F(FilesSeam, AReplacedFileKeepsItsContentUntilTheNewOneIsComplete) {
    writeFile("a.txt", "old content");
    ASSERT_EQ(noFailure, open("a.txt", FileAccess::replace));
    ASSERT_EQ(noFailure, file->write("new", 3));
    EXPECT_EQ("old content", readFile("a.txt"));
    ASSERT_EQ(noFailure, file->close());
    EXPECT_EQ("new", readFile("a.txt"));
    files().close(fileNumber);

    ASSERT_EQ(noFailure, open("a.txt", FileAccess::replace));
    ASSERT_EQ(noFailure, file->write("unfinished", 10));
    files().close(fileNumber);
    EXPECT_EQ("new", readFile("a.txt"));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder()), {}));

    EXPECT_EQ(noFailure, write("log.txt", FileAccess::append, "one\r\n"));
    EXPECT_EQ(noFailure, write("log.txt", FileAccess::append, "two\r\n"));
    EXPECT_EQ("one\r\ntwo\r\n", readFile("log.txt"));
}

TEST_F(FilesSeam, ANumberIsOneOpenFileOfOneThread) {
    writeFile("a.txt", "a");
    for (const Long number : {-1, 0, 256})
        EXPECT_EQ(badFileNameOrNumber, open("a.txt", FileAccess::read, number));
    ASSERT_EQ(noFailure, open("a.txt", FileAccess::read, 255));
    EXPECT_EQ(fileAlreadyOpen, open("a.txt", FileAccess::read, 255));
    std::thread([this] {
        EXPECT_EQ(noFailure, open("a.txt", FileAccess::read, 255));
        files().close(255);
    }).join();
    EXPECT_EQ(fileAlreadyOpen, open("a.txt", FileAccess::read, 255));
    files().close(255);
    files().close(255);
    EXPECT_EQ(noFailure, open("a.txt", FileAccess::read, 255));
    files().close(255);
}

TEST_F(FilesSeam, LinesThatSeveralAppendAtOnceStayWhole) {
    const auto lineOf = [](char writer, std::size_t line) {
        return std::string(10 + line % 50, writer) + std::to_string(line) + "\n";
    };
    std::multiset<std::string> expected, written;
    std::vector<std::thread> threads;
    for (const char writer : {'a', 'b', 'c', 'd'}) {
        for (std::size_t line = 0; line < 500; ++line)
            expected.insert(lineOf(writer, line));
        threads.emplace_back([&, writer] {
            for (std::size_t line = 0; line < 500; ++line)
                EXPECT_EQ(noFailure, write("log.txt", FileAccess::append, lineOf(writer, line)));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::istringstream log(readFile("log.txt"));
    for (std::string line; std::getline(log, line);)
        written.insert(line + "\n");
    EXPECT_EQ(expected, written);
}

TEST_F(FilesSeam, WhatCannotBeOpenedSaysWhy) {
    std::filesystem::create_directory(folder() / "folder");
    const std::string withNul("a.txt\0b", 7);
    using Row = std::tuple<std::string, FileAccess, FailureNumber>;
    for (const auto& [name, access, failure] :
         {Row{std::string("missing.txt"), FileAccess::read, fileNotFound},
          Row{"missing/a.txt", FileAccess::append, pathNotFound},
          Row{"missing/a.txt", FileAccess::replace, pathNotFound},
          Row{"folder", FileAccess::read, pathAccessError},
          Row{"folder", FileAccess::append, pathAccessError},
          Row{"folder", FileAccess::replace, pathAccessError},
          Row{withNul, FileAccess::replace, badFileNameOrNumber}}) {
        file = nullptr;
        EXPECT_EQ(failure, open(name, access)) << name;
        EXPECT_EQ(nullptr, file) << name;
    }
    EXPECT_EQ(badFileNameOrNumber, files().open(fileNumber, u"", FileAccess::replace, file));
}

TEST_F(FilesSeam, AHiddenFileIsAppendedToAndAReadOnlyOneIsReadAndNothingElse) {
    const Text path = pathOf("a.txt");
    using Row = std::tuple<Long, FailureNumber, std::string>;
    for (const auto& [attribute, appended, content] :
         {Row{attributeHidden, noFailure, "older"}, Row{attributeReadOnly, pathAccessError, "old"}}) {
        writeFile("a.txt", "old");
        const Long plain = files().attributes(path);
        ASSERT_EQ(0, plain & (attributeHidden | attributeReadOnly | attributeDirectory));
        if (files().setAttributes(path, plain | attribute) != noFailure) {
            EXPECT_EQ(attributeHidden, attribute) << "which not every file system keeps";
            continue;
        }
        EXPECT_EQ(pathAccessError, write("a.txt", FileAccess::replace, "new"));
        EXPECT_EQ(appended, write("a.txt", FileAccess::append, "er"));
        if (attribute == attributeReadOnly) {
            EXPECT_EQ(pathAccessError, files().remove(path));
        }
        EXPECT_EQ(attribute, files().attributes(path) & (attributeHidden | attributeReadOnly));
        EXPECT_EQ(content, readFile("a.txt"));
        ASSERT_EQ(noFailure, files().setAttributes(path, plain));
        EXPECT_EQ(plain, files().attributes(path));
        EXPECT_EQ(noFailure, write("a.txt", FileAccess::replace, "new"));
        EXPECT_EQ(noFailure, files().remove(path));
        EXPECT_EQ(fileNotFound, files().remove(path));
    }
}

TEST_F(FilesSeam, TheWideReaderReadsInPiecesAndSeeks) {
    writeFile("a.txt", "0123456789");
    std::unique_ptr<OpenFile> wide, none;
    ASSERT_EQ(noFailure, files().openWide(pathOf("a.txt"), wide));
    std::uint64_t size = 0;
    EXPECT_EQ(noFailure, wide->size(size));
    EXPECT_EQ(10u, size);
    char bytes[16];
    std::size_t got = 0;
    ASSERT_EQ(noFailure, wide->seek(7));
    ASSERT_EQ(noFailure, wide->read(bytes, sizeof bytes, got));
    EXPECT_EQ("789", std::string_view(bytes, got));
    ASSERT_EQ(noFailure, wide->read(bytes, sizeof bytes, got));
    EXPECT_EQ(0u, got);
    EXPECT_NE(noFailure, files().openWide(pathOf("missing"), none));
    EXPECT_NE(noFailure, files().openWide(pathOf("."), none));
    EXPECT_FALSE(none);
    EXPECT_EQ(noFailure, files().openWide(u"\\\\?\\" + pathOf("a.txt"), none));
}

TEST_F(FilesSeam, FoldersAreMadeOneByOneOrAsATree) {
    EXPECT_EQ(noFailure, files().makeFolder(pathOf("a")));
    EXPECT_EQ(pathAccessError, files().makeFolder(pathOf("a")));
    EXPECT_EQ(pathNotFound, files().makeFolder(pathOf("b/c")));
    EXPECT_EQ(0, files().makeFolderTree(pathOf("b") + u"\\c\\d\\"));
    EXPECT_NE(0, files().makeFolderTree(pathOf("b") + u"\\c\\d"));
    EXPECT_EQ(attributeDirectory, files().attributes(pathOf("b") + u"\\c\\d") & attributeDirectory);
    EXPECT_TRUE(files().pathExists(pathOf("b") + u"\\c"));
    EXPECT_FALSE(files().pathExists(pathOf("b") + u"\\e"));
    EXPECT_EQ(noAttributes, files().attributes(pathOf("b") + u"\\e"));
    writeFile("file", "");
    EXPECT_NE(0, files().makeFolderTree(pathOf("file") + u"\\below"));
    EXPECT_FALSE(files().shortPath(pathOf("b")).empty());
    EXPECT_TRUE(files().shortPath(pathOf("e")).empty());
}

}  // namespace
}  // namespace ovno2::platform
