#include <ctime>
#include <regex>

#include "calendar/calendar_test.h"
#include "platform/environment_variable.h"

namespace ovno2::Calendar {
namespace {

// What a second phone does not get: of a repeat rule the day of the month, the interval of years and, on
// newer platforms, that it has no end; a kind without a name, no date of a to-do, no summary, the mark of a
// birthday.
std::string asKept(std::string text) {
    static const std::pair<std::regex, const char*> changes[] = {
        {std::regex("RRULE:M(?:P(\\d)\\d\\+|D(\\d))"), "RRULE:M$1$2"},
        {std::regex("RRULE:YD\\d"), "RRULE:YD"},
        {std::regex("^BEGIN:VEVENT \\| DESC"), "BEGIN:VEVENT | TYPE:Meeting | DESC"},
        {std::regex(" 2100\\d{4}"), ""},
        {std::regex("DUE: "), "DUE:20501231 "},
        {std::regex("(DESCRIPTION:[^|]*) \\| (?!SUMMARY)"), "$1 | SUMMARY:  | "},
        {std::regex(" \\| X-BIRTHDAY:1"), ""}};
    for (const auto& [pattern, replacement] : changes)
        text = std::regex_replace(text, pattern, replacement);
    return text;
}

TEST_F(CalendarTest, TheBundledCalendarReachesASecondPhoneAsFarAsItCanBeWritten) {
    std::ifstream file(std::string(BUNDLED_PHONES) + "/demo/calendar.json");
    const Json demo = Json::parse(file);
    subfolders = demo["folder"]["subfolders"];
    for (const Long number : {eNokiaPhoneType, eNokiaPhoneS60_3_FP1}) {
        platform = number;
        begin(demo["entries"]);
        ASSERT_EQ(299, read());
        const std::vector<CalItem> first = items.elements();
        std::vector<std::string> before;
        for (Long i = 0; i <= items.upperBound(); ++i)
            before.push_back(asKept(text(i)));

        // Nothing is written where nothing is changed.
        const Json untouched = stored();
        for (const CalItem& one : first) {
            item = one;
            ASSERT_EQ(0, write(cellsOf(one.VCalText)));
        }
        EXPECT_THAT(calls(), ::testing::Not(::testing::Contains("CAWriteItem")));
        CalendarEndWriteSession(tempids, uids, /*writeit=*/false);

        begin(Json::array());
        for (const CalItem& one : first) {
            item = {};
            ASSERT_EQ(0, write(cellsOf(one.VCalText))) << toUtf8(one.VCalText);
        }
        ASSERT_EQ(0, commit());
        EXPECT_EQ(300, tempids.upperBound());
        ASSERT_EQ(299, read());
        for (std::size_t i = 0; i < before.size(); ++i)
            EXPECT_EQ(before[i], asKept(text(static_cast<Long>(i))));
    }
}

// The local time in seconds since 1970, by the system's own data.
time_t systemTime(const DateFields& local) {
    tm fields{};
    fields.tm_year = local.year - 1900;
    fields.tm_mon = local.month - 1;
    fields.tm_mday = local.day;
    fields.tm_hour = local.hour;
    fields.tm_min = local.minute;
    fields.tm_isdst = -1;
    return mktime(&fields);
}
// The same of a date as the phone keeps it.
time_t storedTime(const std::string& text) {
    tm fields{};
    strptime(text.substr(0, 19).c_str(), "%Y-%m-%dT%H:%M:%S", &fields);
    return timegm(&fields);
}

bool clocksChange(DateValue date) {
    const DateFields day = fieldsOf(date);
    return systemTime(day) + 24 * 3600 != systemTime({day.year, day.month, day.day, 24});
}

Cells meetingAt(const Text& start, const Text& time, const Text& end, DateValue date) {
    const auto iso = [&](Long days) {
        return ISODate::FormatISODate(addDays(date, days), /*dateOnly=*/true);
    };
    return {{1, u"meeting"},
            {4, start + time},
            {5, end + u" 12:00:00"},
            {8, u"D7 " + iso(21) + u" EX:" + iso(7)}};
}

TEST_F(CalendarTest, TimesAndDaysReadBackInEveryZoneAndGoToThePhoneInUtc) {
    for (const Zone& zone : zones) {
        live(zone);
        const EnvironmentVariable systemZone("TZ", zone.name);
        for (const Long number :
             {eNokiaPhoneType, eNokiaPhoneS40_4, eNokiaPhoneS60_3, eNokiaPhoneS60_3_FP1}) {
            platform = number;
            begin(Json::array());
            std::vector<Cells> rows;
            std::vector<bool> rulesAgree;
            for (Long day = 1; day <= 366; ++day) {
                const DateValue date = dateSerial(2008, 1, day);
                const Text start = localDateText(date), end = localDateText(addDays(date, 1));
                const bool change =
                    clocksChange(addDays(date, -1)) || clocksChange(date) || clocksChange(addDays(date, 1));
                if (change) {
                    for (Long minutes = 30; minutes < 24 * 60; minutes += 60)
                        rows.push_back(meetingAt({}, localDateText(addMinutes(date, minutes)), end, date));
                } else if (day % 4 == 0) {
                    rows.push_back({{1, u"birthday"}, {4, start}, {5, start}, {8, u"Y1"}});
                } else if (day % 4 == 1) {
                    rows.push_back({{1, u"note"}, {4, start}, {5, end}});
                } else if (day % 4 == 2) {
                    rows.push_back({{1, u"task"}, {7, start}, {9, start + u" 00:30:00"}});
                } else {
                    rows.push_back(meetingAt(start, day % 8 == 3 ? u" 00:30:00" : u" 23:45:00", end, date));
                }
                rulesAgree.resize(rows.size(), !change && number != eNokiaPhoneS40_4);
            }
            for (const Cells& row : rows) {
                item = {};
                ASSERT_EQ(0, write(row));
            }
            ASSERT_EQ(0, commit());
            const Json phone = stored();
            ASSERT_EQ(static_cast<Long>(rows.size()) - 1, read());
            for (std::size_t i = 0; i < rows.size(); ++i) {
                SCOPED_TRACE(std::string(zone.name) + ' ' + std::to_string(number) + ' ' + phone[i].dump());
                Cells found = cellsOf(items.at(static_cast<Long>(i)).VCalText);
                found[1] = rows[i][1];
                if (rows[i][8] == u"Y1") found[8] = u"Y1";  // until a last date that the platform wants
                for (const auto& [code, cell] : rows[i])
                    EXPECT_EQ(toUtf8(cell), toUtf8(found[code]));
                if (rulesAgree[i] && rows[i][1] == u"meeting") {
                    EXPECT_EQ(systemTime(*readDateFields(rows[i][4])), storedTime(phone[i]["start"]));
                }
            }
        }
    }
}

}  // namespace
}  // namespace ovno2::Calendar
