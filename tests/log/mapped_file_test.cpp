#include "log/mapped_file.h"

#include "common/platform_test.h"

namespace ovno2 {
namespace {

constexpr Long size = cMemMappedFile::MemSize;
constexpr Long done = cMemMappedFile::done, nothingToDo = cMemMappedFile::nothingToDo;

class MappedFile : public PlatformTest {
  protected:
    MappedFile() { writer.MemName = reader.MemName = u"OvTest channel"; }

    Text readBack(Long position, std::size_t length) {
        Text text;
        EXPECT_EQ(done, reader.MemRead(position, static_cast<Long>(length), text));
        return text;
    }

    cMemMappedFile writer, reader;
};

TEST_F(MappedFile, PiecesStartAtMultiplesOfFourAndGoToTheStartBeforeTheyReachTheEnd) {
    constexpr std::size_t half = size / 2;  // characters that fill the mapping
    const struct {
        std::size_t length;
        Long begin, end;  // negative ones count from the end
    } pieces[] = {{3, 0, 6},  {4, 8, 16},          {1, 16, 18}, {half - 4, 0, -8},     {3, -8, -2},
                  {7, 0, 14}, {half - 10, 16, -4}, {2, 0, 4},   {2 * half + 5, 0, 10}, {half, 0, size}};
    char16_t letter = u'a';
    for (const auto& piece : pieces) {
        const Long begin = piece.begin < 0 ? size + piece.begin : piece.begin;
        const Long end = piece.end < 0 ? size + piece.end : piece.end;
        Text text(piece.length, letter++);
        text.back() = u'!';
        ASSERT_EQ(done, writer.MemWrite(text));
        EXPECT_EQ(begin, writer.LastWritePos()) << piece.length;
        EXPECT_EQ(end, writer.WritePos()) << piece.length;
        EXPECT_EQ(piece.length > 1 ? letter - 1 : u'!', readBack(begin, 1)[0]) << piece.length;
        if (end == size) break;  // all of it, where no reader comes
        EXPECT_EQ(u"!", readBack(end - 2, 1)) << piece.length;
        if (letter == u'd') {
            EXPECT_EQ(Text(u"aa!\0bbb!!", 9), readBack(0, 9)) << "nothing between them";
        }
    }
    EXPECT_EQ(u"jj", readBack(size - 6, 2));
}

TEST_F(MappedFile, ReadingStaysInsideAndNeedsAMapping) {
    Text text = u"untouched";
    EXPECT_EQ(nothingToDo, reader.MemRead(0, 5, text));
    ASSERT_EQ(done, writer.MemWrite(u"hello"));
    constexpr Long huge = 0x7FFFFFFF;
    for (const auto& [position, length] :
         {std::pair<Long, Long>{0, 0}, {0, -1}, {size - 4, 2}, {size, 1}, {-2, 1}, {0, huge}, {huge, huge}})
        EXPECT_EQ(nothingToDo, reader.MemRead(position, length, text)) << position;
    EXPECT_EQ(u"untouched", text);
    EXPECT_EQ(u"hello", readBack(0, 5));
    EXPECT_EQ(nothingToDo, writer.MemWrite(u""));
}

TEST_F(MappedFile, CreateFileTellsWhetherSomebodyHoldsTheMapping) {
    EXPECT_EQ(cMemMappedFile::createdNew, reader.CreateFile());
    EXPECT_EQ(cMemMappedFile::createdNew, reader.CreateFile());
    writer.MemWrite(u"x");
    EXPECT_EQ(cMemMappedFile::openedExisting, reader.CreateFile());
    writer.MemClose();
    EXPECT_EQ(cMemMappedFile::createdNew, reader.CreateFile());
}

TEST_F(MappedFile, AMappingThatAnotherProgramMadeTooSmallIsNotWrittenTo) {
    auto small = currentPlatform().sharedMemory().create(u"OvTest channel", 100);
    ASSERT_TRUE(small && small->map(100));
    EXPECT_FALSE(small->map(size));
    Text text;
    EXPECT_EQ(cMemMappedFile::noView, writer.MemWrite(u"x"));
    EXPECT_EQ(cMemMappedFile::noMappingOrView, reader.MemRead(0, 1, text));
    small.reset();
    writer.MemClose();
    reader.MemClose();
    EXPECT_EQ(done, writer.MemWrite(u"x"));
    writer.MemName.clear();
    writer.MemClose();
    EXPECT_EQ(cMemMappedFile::noMapping, writer.MemWrite(u"x"));
}

}  // namespace
}  // namespace ovno2
