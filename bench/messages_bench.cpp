// What messages cost: read as the host's lines. Counters are per message.
#include <benchmark/benchmark.h>

#include "bench_machine.h"
#include "devices/session.h"
#include "library/library_start.h"
#include "messages/data_connection.h"
#include "messages/data_reading.h"
#include "messages/data_writing.h"
#include "platform/portable/libraries.h"
#include "simulator/control/control.h"

namespace ovno2 {
namespace {

// A machine of its own with one phone in it.
class Bench : public BenchMachine {
  public:
    Bench(std::int64_t messages, std::int64_t units) {
        static_cast<platform::portable::PortableLibraries&>(machine.libraries())
            .searchOnlyIn(OVNO2_SIMULATOR_FOLDER);
        library::recordContentVersion(50);
        simulator.reset();
        simulator.addPhone(simulator::Control::plainPhone("1"));
        simulator.run("fillMessages", {{"serial", "1"}, {"messages", messages}, {"units", units}});
    }
    ~Bench() { Session::DMApiTerminate(); }

    const Text model = u"Nokia N95";
    simulator::Control simulator;
};

void perMessage(benchmark::State& state) {
    const std::int64_t messages = state.iterations() * state.range(0);
    state.SetItemsProcessed(messages);
    state.counters["message"] = benchmark::Counter(static_cast<double>(messages),
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// Messages, and UTF-16 units of each.
void readMessages(benchmark::State& state) {
    const Bench bench(state.range(0), state.range(1));
    for (auto _ : state) {
        TextArray items;
        if (Data::NokiaGetDataItems(bench.model, u"", Data::messages, items, nullptr) != 0 ||
            static_cast<std::int64_t>(items.size()) != state.range(0))
            state.SkipWithError("the messages did not arrive");
    }
    perMessage(state);
}
BENCHMARK(readMessages)
    ->Args({500, 160})
    ->Args({5000, 160})
    ->Args({50000, 160})
    ->Args({5000, 16})
    ->Args({5000, 1600})
    ->Unit(benchmark::kMillisecond);

void writeMessages(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        const Bench bench(10, 160);
        TextArray tempids, uids;
        state.ResumeTiming();
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            Text item = u"1\t\t\t2\t\t\t+49 171 3920001\tA message like others";
            Data::WriteDataItem(bench.model, u"", item);
        }
        if (Data::DataEndWriteSession(tempids, uids, /*commit=*/true) != 0 ||
            tempids.upperBound() != state.range(0))
            state.SkipWithError("not all was written");
    }
    perMessage(state);
}
BENCHMARK(writeMessages)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ovno2
