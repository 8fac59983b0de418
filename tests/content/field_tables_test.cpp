#include "content/field_tables.h"

#include "content/content_test.h"

namespace ovno2::Content {
namespace {

class FieldTablesTest : public ContentTest {
  protected:
    const FieldTables& tablesFor(int version) {
        simulator.shape({{"deviceManagement", version}});
        state().DmApiVersion = 0;
        InitFieldTables();
        return state().Fields;
    }
    ~FieldTablesTest() override { simulator.shape({{"deviceManagement", nullptr}}); }
};

// Id 36 is one that only old libraries give a meaning, 65 one that only new ones do.
TEST_F(FieldTablesTest, FollowTheLibrarysVersion) {
    for (const bool old : {false, true, false}) {
        const FieldTables& tables = tablesFor(old ? 29 : 30);
        EXPECT_EQ(old ? 30 : 0, tables.code(36));
        EXPECT_EQ(old ? 0 : 23, tables.code(65));
        EXPECT_EQ(old ? 0 : 30, tables.alternativeCode(32));
        for (const Word none : {529u, 0xFFFFFFFFu})
            EXPECT_EQ(0, tables.code(none) + tables.alternativeCode(none));
    }
}

TEST_F(FieldTablesTest, PutEveryFieldIntoOneOfFourGroups) {
    const Word oldIds[] = {31, 32, 64, 65, 96, 97, 256, 257};
    const Long oldGroups[] = {1, 2, 2, 3, 3, 4, 4, 0};
    const Word ids[] = {31, 32, 255, 256, 511, 512, 767, 768};
    for (std::size_t i = 0; i < std::size(ids); ++i) {
        EXPECT_EQ(oldGroups[i], tablesFor(29).group(oldIds[i])) << oldIds[i];
        EXPECT_EQ(oldGroups[i], tablesFor(30).group(ids[i])) << ids[i];
    }
}

}  // namespace
}  // namespace ovno2::Content
