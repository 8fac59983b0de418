#include "calendar/calendar_test.h"

namespace ovno2::Calendar {
namespace {

// Entries of every kind survive the way from one phone through the host's texts and grid to another.
TEST_F(CalendarTest, TheBundledCalendarReachesASecondPhoneUnchanged) {
    std::ifstream file(std::string(BUNDLED_PHONES) + "/demo/calendar.json");
    const Json demo = Json::parse(file);
    subfolders = demo["folder"]["subfolders"];
    begin(demo["entries"]);
    ASSERT_EQ(299, read());
    const std::vector<CalItem> first = items.elements();
    std::vector<std::string> before, after;
    for (Long i = 0; i <= items.upperBound(); ++i) before.push_back(text(i));

    begin(Json::array());
    for (const CalItem& one : first) {
        item = {};
        ASSERT_EQ(0, write(cellsOf(one.VCalText))) << toUtf8(one.VCalText);
    }
    ASSERT_EQ(0, commit());
    ASSERT_EQ(299, read());
    for (Long i = 0; i <= items.upperBound(); ++i) after.push_back(text(i));
    for (std::size_t i = 0; i < before.size(); ++i) EXPECT_EQ(before[i], after[i]);
}

}  // namespace
}  // namespace ovno2::Calendar
