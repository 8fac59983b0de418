// Any text as a repeat rule: what it is taken for has a last date or none, and a word that can be written
// comes back as a rule that gives the same word again.
#include <cstdlib>
#include <cstring>

#include "calendar/series_info.h"
#include "core/attempt.h"
#include "dates/date_text.h"
#include "fuzz_home.h"

using namespace ovno2;

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzHome home;
    Text rule;
    for (std::size_t i = 0; i < size; ++i)
        rule.push_back(data[i]);
    const DateValue start = dateSerial(2008, 2, 19);
    CalSeriesInfo::SeriesInfo series;
    CalSeriesInfo::GetSeriesInfo(rule, series, localDateText(start), /*options=*/0);
    CalSeriesInfo::SeriesEndDate(localDateText(start), series);
    attempt([&] {
        const library::Word word = CalSeriesInfo::recurrenceWord(series, start, /*contentVersion=*/36);
        if (series.Frequency == CalSeriesInfo::yearly) return;  // keeps no interval in the short style
        CalSeriesInfo::SeriesInfo again;
        CalSeriesInfo::GetSeriesInfo(CalSeriesInfo::ruleText(word, start), again, /*start=*/{},
                                     /*options=*/0);
        check(CalSeriesInfo::recurrenceWord(again, start, 36) ==
              (word | ((word >> 8 & 0xFF) == 0 ? 0x100u : 0u)));
    });
    return 0;
}
