// Whole files as bytes, and the decision which of them are texts.
#include "common/platform_test.h"
#include "pc/byte_table.h"
#include "pc/files.h"
#include "pc/get_file_contents_mod.h"

namespace ovno2::Files {
namespace {

using FileBytesTest = PlatformTest;

std::string textOf(const FileBytes& content) {
    return {content.all().begin(), content.all().end()};
}

TEST_F(FileBytesTest, AFileIsReadWholeOrNotAtAll) {
    const std::string bytes("\xFF\xFE\0a\r\n\x80", 7);
    writeFile("a.bin", bytes);
    writeFile("empty", "");
    FileBytes content;
    EXPECT_TRUE(GetFileBytes(pathOf("a.bin"), content));
    EXPECT_EQ(bytes, textOf(content));
    EXPECT_FALSE(GetFileBytes(pathOf("missing"), content));
    EXPECT_FALSE(GetFileBytes(pathOf(""), content));
    EXPECT_EQ(bytes, textOf(content)) << "as it was";
    EXPECT_TRUE(GetFileBytes(pathOf("empty"), content));
    EXPECT_EQ(0u, content.size);
}

TEST_F(FileBytesTest, AFileIsReplacedOnlyByAllOfTheBytes) {
    writeFile("a.bin", "before");
    Text target = pathOf("a.bin");
    const ByteSource failing = [calls = 0](std::span<std::uint8_t> piece) mutable -> std::size_t {
        if (++calls == 2) throw RuntimeFailure(invalidProcedureCall);
        return piece.size();
    };
    EXPECT_EQ(-1, WriteFileBytes(target, failing, /*showError=*/false));
    EXPECT_EQ("before", readFile("a.bin"));

    const ByteSource threeAndTwo = [left = 2](std::span<std::uint8_t> piece) mutable -> std::size_t {
        for (int i = 0; i < 3; ++i)
            piece[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>('a' + i);
        return left == 0 ? 0 : static_cast<std::size_t>(1 + left--);
    };
    target = pathOf("new") + u"\\a.bin";
    EXPECT_EQ(0, WriteFileBytes(target, threeAndTwo, /*showError=*/false));
    EXPECT_EQ("abcab", readFile("new/a.bin"));
}

TEST_F(FileBytesTest, WhatDecodingWouldLeaveAloneIsNoEncodedText) {
    const auto spaced = [](std::size_t count, char filler) {
        std::string bytes;
        for (std::size_t i = 0; i < count; ++i)
            bytes += {filler, 'a'};
        return bytes;
    };
    for (const std::string& bytes :
         {std::string(), std::string("\xFF"), std::string("\xFE\xFF"), std::string("\xFF\xFE"),
          std::string("\xEF\xBB"), std::string("\xEF\xBB\xBF"), std::string("\xEF\xBB\xBFtext"),
          std::string("\xFF\xFE\xE4\0", 4), std::string("plain text that goes on for a while"),
          std::string(20, '\0'), std::string(21, '\0'), spaced(11, '\0'), spaced(11, '\x08'),
          spaced(11, '\x09'), spaced(10, '\0'), std::string(21, '\x80')}) {
        Text text;
        const auto* const first = reinterpret_cast<const std::uint8_t*>(bytes.data());
        ByteTable().append(text, first, bytes.size());
        const Text before = text;
        const Long encoding = GetFileContentsMod::ConvertFromUnicodeSub(text);
        EXPECT_EQ(encoding != GetFileContentsMod::ansiOrUtf8 || text != before,
                  GetFileContentsMod::isEncodedText({first, bytes.size()}))
            << bytes;
    }
}

}  // namespace
}  // namespace ovno2::Files
