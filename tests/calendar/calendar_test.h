// What the calendar tests share: a simulated phone with calendars, time zones, and a host with a grid.
#pragma once

#include <fstream>
#include <gmock/gmock.h>
#include <map>

#include "base/utf8.h"
#include "calendar/calendar_connection.h"
#include "calendar/calendar_folders.h"
#include "calendar/calendar_reading.h"
#include "calendar/calendar_session.h"
#include "calendar/calendar_writing.h"
#include "common/phone_test.h"
#include "content/sessions.h"
#include "core/settings.h"
#include "dates/date_parser.h"
#include "dates/date_text.h"
#include "dates/iso_date.h"
#include "devices/devices.h"
#include "devices/session.h"
#include "driver/grid_object.h"
#include "library/library_start.h"
#include "platform/portable/time_zone.h"

namespace ovno2::Calendar {

using Control = simulator::Control;
using Json = Control::Json;

// Minutes west of Greenwich; the rules as the registry has them, no month for a zone without daylight time.
struct Zone {
    const char* name;  // as the system knows it
    Long bias = 0;
    Long daylightBias = 0;
    platform::SystemTime daylight = {}, standard = {};
};

constexpr platform::SystemTime sundayIn(std::uint16_t month, std::uint16_t occurrence) {
    return {.month = month, .dayOfWeek = 0, .day = occurrence, .hour = 2};
}

inline const Zone berlin = {"Europe/Berlin", -60, -60, sundayIn(3, 5), sundayIn(10, 5)};
inline const Zone zones[] = {
    berlin,
    {"Europe/London", 0, -60, sundayIn(3, 5), sundayIn(10, 5)},
    {"America/New_York", 300, -60, sundayIn(3, 2), sundayIn(11, 1)},
    {"America/St_Johns", 210, -60, sundayIn(3, 2), sundayIn(11, 1)},
    {"Pacific/Honolulu", 600},
    {"Asia/Kolkata", -330},
    {"Pacific/Kiritimati", -840},
    {"Pacific/Auckland", -720, -60, sundayIn(9, 5), sundayIn(4, 1)},
    {"Australia/Adelaide", -570, -60, sundayIn(10, 1), sundayIn(4, 1)},
    {"Australia/Lord_Howe", -630, -30, sundayIn(10, 1), sundayIn(4, 1)},
};

// A row of a grid: cells by field code.
using Cells = std::map<Long, Text>;

class CalendarTest : public PhoneTest {
  protected:
    CalendarTest() {
        clock().set({.year = 2008, .month = 7, .day = 1, .hour = 12});
        processes().onStartCaptured = [](TextView) { return nullptr; };
        setRegistryText(platform::currentUser, u"Control Panel\\International", u"sShortDate", u"dd.MM.yyyy");
        live(berlin);
    }
    ~CalendarTest() override {
        letGo();
        EXPECT_EQ(0, simulator.balance()["closedInside"]);
    }

    void live(const Zone& zone) {
        static constexpr TextView key = u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation";
        using platform::localMachine;
        setRegistryNumber(localMachine, key, u"Bias", static_cast<std::uint32_t>(zone.bias));
        setRegistryNumber(localMachine, key, u"ActiveTimeBias", static_cast<std::uint32_t>(zone.bias));
        setRegistryNumber(localMachine, key, u"DaylightBias", static_cast<std::uint32_t>(zone.daylightBias));
        setRegistryBytes(localMachine, key, u"DaylightStart",
                         platform::portable::bytesOfTransition(zone.daylight));
        setRegistryBytes(localMachine, key, u"StandardStart",
                         platform::portable::bytesOfTransition(zone.standard));
    }
    void letGo() {
        CloseCalendarConnection();
        Content::PIMApiTerminate();
        Session::DMApiTerminate();
    }
    // A fresh thread with the phone whose calendar has these entries, as the image keeps them.
    void begin(const Json& entries, Long contentVersion = 50, const Json& identity = Json::object()) {
        letGo();
        simulator.reset();
        resetThreadState();
        usePlatform(machine);
        stateOf<Devices::State>().platformType = platform;
        ISODate::DateTimeInit();
        library::recordContentVersion(contentVersion);
        image_ = folder.path() / "phone";
        std::filesystem::create_directories(image_);
        const Json calendar = {
            {"format", 1},
            {"folder", {{"id", 1}, {"name", "\\"}, {"path", "\\"}, {"subfolders", subfolders}}},
            {"entries", entries}};
        std::ofstream(image_ / "calendar.json") << calendar;
        Json phone = Control::plainPhone(serial);
        phone.update(identity);
        simulator.run("addPhone", {{"phone", phone}, {"image", image_.string()}});
        simulator.journal(true);
    }

    Long read() { return NokiaGetCalendarItems(model, phoneId, items, progressbar); }
    // The lines of an entry, " | " between them, without the identifier's.
    std::string text(Long index = 0) {
        std::string all;
        for (const Text& line : split(removeAll(items.at(index).VCalText, u'\n'), u'\r'))
            if (!line.starts_with(u"X-IRMC-LUID")) all += (all.empty() ? "" : " | ") + toUtf8(line);
        return all;
    }

    Long write(const Cells& cells) {
        std::vector<Text> table;
        for (const auto& cell : cells)
            table.insert(table.end(), {u"", decimalText(cell.first)});
        const auto grid = std::make_shared<GridObject>([&](Long row, Long column) -> Text {
            EXPECT_EQ(7, row);
            return std::next(cells.begin(), column - 1)->second;
        });
        return WriteCalItem(model, phoneId, item, grid, 7, TextTable(table, cells.size(), 2));
    }
    Long commit() { return CalendarEndWriteSession(tempids, uids, /*writeit=*/true); }
    // The entries as the phone keeps them.
    Json stored() const {
        std::ifstream file(image_ / "calendar.json");
        return Json::parse(file)["entries"];
    }

    static Text local(const Text& iso) {
        Text text = iso;
        return ISODate::GetISO8601Date(text, /*initialiseFormats=*/true, /*convertUtc=*/true);
    }
    // What a host puts into its grid for an entry's text.
    static Cells cellsOf(const Text& entry) {
        Cells cells;
        for (const Long code : {1, 3, 8, 9, 11, 12, 15})
            cells[code];
        for (const Text& line : split(removeAll(entry, u'\n'), u'\r')) {
            const std::size_t colon = line.find(u':');
            const Text name = line.substr(0, colon), value = line.substr(colon + 1);
            if (name == u"TYPE") cells[1] = value;
            if (line == u"BEGIN:VTODO") cells[1] = u"task";
            if (name == u"DESCRIPTION") cells[3] = replaceAll(value, u"\\n", u"\r\n");
            if (name == u"DTSTART") cells[4] = local(value);
            if (name == u"DTEND") cells[5] = local(value);
            if (name == u"STATUS") cells[6] = value;
            if (name == u"DUE") cells[7] = local(value);
            if (name == u"RRULE") cells[8] = value;
            if (name == u"EXDATE") cells[8] += u" EX:" + value;
            if (name == u"AALARM") cells[9] = local(value);
            if (name == u"LOCATION") cells[11] = value;
            if (name == u"SUMMARY") cells[12] = value;
            if (name == u"PRIORITY") cells[13] = value;
            if (name == u"CALENDAR") cells[15] = value;
        }
        return cells;
    }

    Text model = u"Nokia N95";
    Text phoneId;
    const std::string serial = "356300010000017";
    Json subfolders = Json::array();
    Long platform = 0;  // that the host has set
    HostArray<CalItem> items;
    platform::ObjectPointer progressbar;
    CalItem item;
    TextArray tempids, uids;

  private:
    std::filesystem::path image_;
};

}  // namespace ovno2::Calendar
