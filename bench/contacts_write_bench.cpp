// What writing contacts costs: new ones and unchanged ones, in one session with its commit. The time is for
// the whole; "contact" is that of one.
#include <algorithm>
#include <benchmark/benchmark.h>

#include "contacts/contact_writing.h"
#include "contacts/write_session.h"
#include "phone_bench.h"

namespace ovno2 {
namespace {

// The time of one contact.
benchmark::Counter perContact(std::uint32_t contacts) {
    return {static_cast<double>(contacts),
            benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert};
}

Long writeAll(PhoneBench& bench, std::vector<AdrItem>& items, bool isNew) {
    Text model = u"Nokia N95", serial;
    for (AdrItem& item : items) {
        Text id = isNew ? Text() : item.Uid;
        const Long status = Contacts::WriteContact(model, serial, id, item.FieldValues, bench.table, isNew,
                                                   /*isrewrite=*/0, /*pCallBack=*/0);
        if (status != 0) return status;
    }
    TextArray temporaryIds, uids;
    return Contacts::ContactsEndWriteSession(temporaryIds, uids, /*writeit=*/true);
}

std::vector<AdrItem> bookOf(PhoneBench& bench) {
    HostArray<AdrItem> items;
    bench.read(items);
    std::vector<AdrItem> book = std::move(items.elements());
    book.erase(book.begin());  // index 0 stays empty
    return book;
}

void WriteNewContacts(benchmark::State& state) {
    const auto contacts = static_cast<std::uint32_t>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto bench = std::make_unique<PhoneBench>(contacts);
        std::vector<AdrItem> book = bookOf(*bench);
        state.ResumeTiming();
        if (writeAll(*bench, book, /*isNew=*/true) != 0) state.SkipWithError("not written");
        state.PauseTiming();
        bench.reset();
        state.ResumeTiming();
    }
    state.counters["contact"] = perContact(contacts);
}
BENCHMARK(WriteNewContacts)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(2);

// "texts" is the number of texts given to the library for each contact: only what changes is.
void WriteUnchangedContacts(benchmark::State& state) {
    const auto contacts = static_cast<std::uint32_t>(state.range(0));
    PhoneBench bench(contacts);
    std::vector<AdrItem> book = bookOf(bench);
    bool failed = false;
    for (auto _ : state)
        failed |= writeAll(bench, book, /*isNew=*/false) != 0;
    bench.simulator.journal(true);
    failed |= writeAll(bench, book, /*isNew=*/false) != 0;
    if (failed) state.SkipWithError("not written");
    const std::vector<std::string> calls = bench.simulator.readJournal();
    const auto texts = std::ranges::count_if(
        calls, [](const std::string& call) { return call.find("CONAAllocString") != std::string::npos; });
    state.counters["texts"] = static_cast<double>(texts) / contacts;
    state.counters["contact"] = perContact(contacts);
}
BENCHMARK(WriteUnchangedContacts)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
}  // namespace ovno2
