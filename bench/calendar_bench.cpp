// What the calendar costs: entries read with their texts, rows written into a session, and repeat rules.
// Counters are per entry.
#include <benchmark/benchmark.h>

#include "bench_machine.h"
#include "calendar/calendar_reading.h"
#include "calendar/calendar_session.h"
#include "calendar/calendar_writing.h"
#include "calendar/series_info.h"
#include "dates/iso_date.h"
#include "devices/session.h"
#include "driver/grid_object.h"
#include "library/library_start.h"
#include "platform/portable/libraries.h"
#include "simulator/control/control.h"

namespace ovno2 {
namespace {

// A machine of its own with one phone in it.
class Bench : public BenchMachine {
  public:
    explicit Bench(std::uint32_t entries) {
        static_cast<platform::portable::PortableLibraries&>(machine.libraries())
            .searchOnlyIn(OVNO2_SIMULATOR_FOLDER);
        library::recordContentVersion(50);
        simulator.reset();
        simulator.addPhone(simulator::Control::plainPhone("1"));
        simulator.run("fillCalendar", {{"serial", "1"}, {"entries", entries}});
    }
    ~Bench() { Session::DMApiTerminate(); }

    Text model = u"Nokia N95", phoneId;
    simulator::Control simulator;
};

void perEntry(benchmark::State& state, const char* name) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters[name] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                                              benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void readEntries(benchmark::State& state) {
    Bench bench(static_cast<std::uint32_t>(state.range(0)));
    for (auto _ : state) {
        HostArray<CalItem> items;
        if (Calendar::NokiaGetCalendarItems(bench.model, bench.phoneId, items, nullptr) != state.range(0) - 1)
            state.SkipWithError("the calendar did not arrive");
    }
    perEntry(state, "entry");
}
BENCHMARK(readEntries)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void writeEntries(benchmark::State& state) {
    const TextTable table({u"", u"1", u"", u"4", u"", u"5", u"", u"12", u"", u"8", u"", u"9"}, 6, 2);
    const Text cells[] = {
        u"meeting", u"2008-01-05 10:00:00", u"2008-01-05 11:00:00", u"A meeting like others", u"W1 SA",
        u"15"};
    const auto grid = std::make_shared<GridObject>(
        [&](Long, Long column) { return cells[static_cast<std::size_t>(column) - 1]; });
    for (auto _ : state) {
        state.PauseTiming();
        Bench bench(10);
        TextArray tempids, uids;
        state.ResumeTiming();
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            CalItem item;
            Calendar::WriteCalItem(bench.model, bench.phoneId, item, grid, 0, table);
        }
        if (Calendar::CalendarEndWriteSession(tempids, uids, /*writeit=*/true) != 0 ||
            tempids.upperBound() != state.range(0))
            state.SkipWithError("not all was written");
        state.PauseTiming();
        Session::DMApiTerminate();
        state.ResumeTiming();
    }
    perEntry(state, "entry");
}
BENCHMARK(writeEntries)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void takeRulesApart(benchmark::State& state, const char16_t* rule) {
    const BenchMachine machine;
    ISODate::DateTimeInit();
    const Text text(rule);
    CalSeriesInfo::SeriesInfo series;
    for (auto _ : state) {
        CalSeriesInfo::GetSeriesInfo(text, series, /*start=*/{}, /*options=*/0);
        benchmark::DoNotOptimize(series);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(takeRulesApart, short_style, u"W2 MO TH");
BENCHMARK_CAPTURE(takeRulesApart, short_style_with_end, u"W2 MO TH 20081231");
BENCHMARK_CAPTURE(takeRulesApart, calendar_style, u"FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TH");

void writeRules(benchmark::State& state) {
    const DateValue start = dateSerial(2008, 2, 19);
    for (auto _ : state)
        benchmark::DoNotOptimize(CalSeriesInfo::ruleText(0x090202, start));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(writeRules);

}  // namespace
}  // namespace ovno2
