#include "log/mapped_file.h"

#include "common/platform_test.h"
#include "common/recording_log.h"

namespace ovno2 {
namespace {

constexpr Long size = cMemMappedFile::MemSize;

class MappedFile : public PlatformTest {
  protected:
    MappedFile() {
        writer.MemName = u"OvTest channel";
        reader.MemName = u"OvTest channel";
    }

    Text readBack(Long position, std::size_t length) {
        Text text;
        EXPECT_EQ(cMemMappedFile::done, reader.MemRead(position, static_cast<Long>(length), text));
        return text;
    }

    cMemMappedFile writer;
    cMemMappedFile reader;
};

TEST_F(MappedFile, PiecesStartAtMultiplesOfFourWithoutAnythingBetweenThem) {
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(u"abc"));
    EXPECT_EQ(0, writer.LastWritePos());
    EXPECT_EQ(6, writer.WritePos());
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(u"defg"));
    EXPECT_EQ(8, writer.LastWritePos());
    EXPECT_EQ(16, writer.WritePos());
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(u"h"));
    EXPECT_EQ(16, writer.LastWritePos());
    EXPECT_EQ(u"abc", readBack(0, 3));
    EXPECT_EQ(Text(u"abc\0defgh", 9), readBack(0, 9));
}

TEST_F(MappedFile, APieceThatWouldReachTheEndGoesToTheStart) {
    const std::size_t half = size / 2;  // characters that fill the mapping
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(Text(half - 4, u'x')));
    EXPECT_EQ(size - 8, writer.WritePos());
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(u"abc"));  // two bytes stay free
    EXPECT_EQ(size - 8, writer.LastWritePos());
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(u"wrapped"));
    EXPECT_EQ(0, writer.LastWritePos());
    EXPECT_EQ(14, writer.WritePos());
    EXPECT_EQ(u"wrapped", readBack(0, 7));
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(Text(half - 10, u'y')));
    EXPECT_EQ(16, writer.LastWritePos());
    EXPECT_EQ(size - 4, writer.WritePos());
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(u"ab"));  // would reach the end exactly
    EXPECT_EQ(0, writer.LastWritePos());
}

TEST_F(MappedFile, ATextLongerThanTheMappingGoesOutInPieces) {
    Text text(static_cast<std::size_t>(size) + 5, u'-');
    text.replace(text.size() - 5, 5, u"tail!");
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(text));
    EXPECT_EQ(0, writer.LastWritePos());
    EXPECT_EQ(10, writer.WritePos());
    EXPECT_EQ(u"tail!-", readBack(0, 6));
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(Text(size / 2, u'f')));  // fills it to the last byte
    EXPECT_EQ(0, writer.LastWritePos());
    EXPECT_EQ(size, writer.WritePos());
    EXPECT_EQ(u"ff", readBack(size - 6, 2));
}

TEST_F(MappedFile, ReadingStaysInsideAndNeedsAMapping) {
    Text text = u"untouched";
    EXPECT_EQ(cMemMappedFile::nothingToDo, reader.MemRead(0, 5, text));
    ASSERT_EQ(cMemMappedFile::done, writer.MemWrite(u"hello"));
    for (const auto& [position, length] : {std::pair<Long, Long>{0, 0},
                                           {0, -1},
                                           {size - 4, 2},
                                           {size, 1},
                                           {-2, 1},
                                           {0, 0x7FFFFFFF},
                                           {0x7FFFFFFF, 0x7FFFFFFF}})
        EXPECT_EQ(cMemMappedFile::nothingToDo, reader.MemRead(position, length, text)) << position;
    EXPECT_EQ(u"untouched", text);
    EXPECT_EQ(u"hello", readBack(0, 5));
    EXPECT_EQ(cMemMappedFile::nothingToDo, writer.MemWrite(u""));
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
    ASSERT_TRUE(small);
    Text text;
    EXPECT_EQ(cMemMappedFile::noView, writer.MemWrite(u"x"));
    EXPECT_EQ(cMemMappedFile::noMappingOrView, reader.MemRead(0, 1, text));
    small.reset();
    writer.MemClose();
    reader.MemClose();
    EXPECT_EQ(cMemMappedFile::done, writer.MemWrite(u"x"));
    writer.MemName.clear();
    writer.MemClose();
    EXPECT_EQ(cMemMappedFile::noMapping, writer.MemWrite(u"x"));
}

TEST_F(MappedFile, TheEndIsLogged) {
    RecordingLog log;
    { cMemMappedFile file; }
    EXPECT_EQ((std::vector<std::string>{"cMem Class_Terminate", "MemClose"}), log.lines);
}

}  // namespace
}  // namespace ovno2
