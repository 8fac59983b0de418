#include <gmock/gmock.h>
#include <thread>

#include "common/platform_test.h"

namespace ovno2::platform {
namespace {

constexpr Long fileNumber = 17;

class FilesSeam : public PlatformTest {
  protected:
    Files& files() { return currentPlatform().files(); }

    FailureNumber write(const std::string& name, FileAccess access, std::string_view bytes) {
        OpenFile* file = nullptr;
        FailureNumber failure = files().open(fileNumber, pathOf(name), access, file);
        if (failure == noFailure) failure = file->write(bytes.data(), bytes.size());
        if (failure == noFailure) failure = file->close();
        files().close(fileNumber);
        return failure;
    }

    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder()), {}));
    }
};

TEST_F(FilesSeam, AReplacedFileKeepsItsContentUntilTheNewOneIsComplete) {
    writeFile("a.txt", "old content");
    OpenFile* file = nullptr;
    ASSERT_EQ(noFailure, files().open(fileNumber, pathOf("a.txt"), FileAccess::replace, file));
    ASSERT_EQ(noFailure, file->write("new", 3));
    EXPECT_EQ("old content", readFile("a.txt"));
    ASSERT_EQ(noFailure, file->close());
    EXPECT_EQ("new", readFile("a.txt"));
    files().close(fileNumber);

    ASSERT_EQ(noFailure, files().open(fileNumber, pathOf("a.txt"), FileAccess::replace, file));
    ASSERT_EQ(noFailure, file->write("unfinished", 10));
    files().close(fileNumber);
    EXPECT_EQ("new", readFile("a.txt"));
    EXPECT_EQ(1u, entries());
}

TEST_F(FilesSeam, AppendingMakesAFileAndGoesOnAtItsEnd) {
    EXPECT_EQ(noFailure, write("log.txt", FileAccess::append, "one\r\n"));
    EXPECT_EQ(noFailure, write("log.txt", FileAccess::append, "two\r\n"));
    EXPECT_EQ("one\r\ntwo\r\n", readFile("log.txt"));
}

TEST_F(FilesSeam, ANumberIsOneOpenFileOfOneThread) {
    writeFile("a.txt", "a");
    OpenFile* file = nullptr;
    for (const Long number : {-1, 0, 256})
        EXPECT_EQ(badFileNameOrNumber, files().open(number, pathOf("a.txt"), FileAccess::read, file));
    ASSERT_EQ(noFailure, files().open(255, pathOf("a.txt"), FileAccess::read, file));
    EXPECT_EQ(fileAlreadyOpen, files().open(255, pathOf("a.txt"), FileAccess::read, file));
    std::thread([this] {
        OpenFile* other = nullptr;
        EXPECT_EQ(noFailure, files().open(255, pathOf("a.txt"), FileAccess::read, other));
        files().close(255);
    }).join();
    EXPECT_EQ(fileAlreadyOpen, files().open(255, pathOf("a.txt"), FileAccess::read, file));
    files().close(255);
    files().close(255);
    EXPECT_EQ(noFailure, files().open(255, pathOf("a.txt"), FileAccess::read, file));
    files().close(255);
}

TEST_F(FilesSeam, WhatCannotBeOpenedSaysWhy) {
    std::filesystem::create_directory(folder() / "folder");
    writeFile("a.txt", "a");
    struct Case {
        const char* name;
        FileAccess access;
        FailureNumber failure;
    };
    const Case cases[] = {
        {"missing.txt", FileAccess::read, fileNotFound},
        {"missing/a.txt", FileAccess::append, pathNotFound},
        {"missing/a.txt", FileAccess::replace, pathNotFound},
        {"folder", FileAccess::read, pathAccessError},
        {"folder", FileAccess::append, pathAccessError},
        {"folder", FileAccess::replace, pathAccessError},
    };
    for (const Case& c : cases) {
        OpenFile* file = nullptr;
        EXPECT_EQ(c.failure, files().open(fileNumber, pathOf(c.name), c.access, file)) << c.name;
        EXPECT_EQ(nullptr, file) << c.name;
    }
    OpenFile* file = nullptr;
    EXPECT_EQ(badFileNameOrNumber,
              files().open(fileNumber, pathOf("a.txt") + u'\0' + u"b", FileAccess::replace, file));
    EXPECT_EQ(badFileNameOrNumber, files().open(fileNumber, u"", FileAccess::replace, file));
}

TEST_F(FilesSeam, AHiddenFileIsReplacedOnlyWhenItIsShown) {
    writeFile("a.txt", "old");
    const Text path = pathOf("a.txt");
    const Long plain = files().attributes(path);
    ASSERT_EQ(0, plain & (attributeHidden | attributeReadOnly | attributeDirectory));
    if (files().setAttributes(path, plain | attributeHidden) != noFailure)
        GTEST_SKIP() << "this file system keeps no hidden files";
    EXPECT_EQ(attributeHidden, files().attributes(path) & attributeHidden);
    EXPECT_EQ(pathAccessError, write("a.txt", FileAccess::replace, "new"));
    EXPECT_EQ(noFailure, write("a.txt", FileAccess::append, "er"));
    EXPECT_EQ(attributeHidden, files().attributes(path) & attributeHidden);
    ASSERT_EQ(noFailure, files().setAttributes(path, plain));
    EXPECT_EQ(plain, files().attributes(path));
    EXPECT_EQ("older", readFile("a.txt"));
    EXPECT_EQ(noFailure, write("a.txt", FileAccess::replace, "new"));
}

TEST_F(FilesSeam, AReadOnlyFileIsReadAndNothingElse) {
    writeFile("a.txt", "old");
    const Text path = pathOf("a.txt");
    const Long plain = files().attributes(path);
    ASSERT_EQ(noFailure, files().setAttributes(path, plain | attributeReadOnly));
    EXPECT_EQ(attributeReadOnly, files().attributes(path) & attributeReadOnly);
    EXPECT_EQ(pathAccessError, write("a.txt", FileAccess::replace, "new"));
    EXPECT_EQ(pathAccessError, write("a.txt", FileAccess::append, "new"));
    EXPECT_EQ(pathAccessError, files().remove(path));
    EXPECT_EQ("old", readFile("a.txt"));
    ASSERT_EQ(noFailure, files().setAttributes(path, plain));
    EXPECT_EQ(noFailure, files().remove(path));
    EXPECT_EQ(fileNotFound, files().remove(path));
}

TEST_F(FilesSeam, TheWideReaderReadsInPiecesAndSeeks) {
    writeFile("a.txt", "0123456789");
    std::unique_ptr<OpenFile> file;
    ASSERT_EQ(noFailure, files().openWide(pathOf("a.txt"), file));
    std::uint64_t size = 0;
    EXPECT_EQ(noFailure, file->size(size));
    EXPECT_EQ(10u, size);
    char bytes[16];
    std::size_t got = 0;
    ASSERT_EQ(noFailure, file->seek(7));
    ASSERT_EQ(noFailure, file->read(bytes, sizeof bytes, got));
    EXPECT_EQ("789", std::string_view(bytes, got));
    ASSERT_EQ(noFailure, file->read(bytes, sizeof bytes, got));
    EXPECT_EQ(0u, got);
    std::unique_ptr<OpenFile> none;
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
