// What reading contacts costs: whole phone books, the module's own share of that, its memory, and its
// smallest parts.
//
// The module's share is the time of a read less the time of the same library calls made alone, in the same
// order and with the same records. Counters are per contact; "peak" is the memory the module needed at most,
// in parts of the text it handed over.
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>
#include <malloc.h>

#include "contacts/contact_fields.h"
#include "content/sessions.h"
#include "content/state.h"
#include "phone_bench.h"

namespace {

// Bytes of the program's own allocations, counted while a benchmark asks for it.
bool countsMemory = false;
std::size_t liveBytes = 0;
std::size_t peakBytes = 0;

void count(void* block) {
    liveBytes += malloc_usable_size(block);
    peakBytes = std::max(peakBytes, liveBytes);
}

}  // namespace

__attribute__((noinline)) void* operator new(std::size_t size) {
    void* const block = std::malloc(size);
    if (!block) throw std::bad_alloc();
    if (countsMemory) count(block);
    return block;
}
__attribute__((noinline)) void operator delete(void* block) noexcept {
    if (countsMemory) liveBytes -= malloc_usable_size(block);
    std::free(block);
}
__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace ovno2 {
namespace {

class Bench : public PhoneBench {
  public:
    using PhoneBench::PhoneBench;

    // The library calls of `read` from the connection on, alone.
    void callLibraryAlone() {
        using namespace library;
        CAAPI_Initialize(30, 0);
        Word medium = 1;
        Handle connection = 0, operation = 0;
        DAOpenCA(u"1", &medium, signature::targetContacts, &connection);
        ItemIdListRecord list{sizeof list, 0, 0};
        CAGetIDList(connection, 1, 0, &list);
        CABeginOperation(connection, 0, &operation);
        auto* const ids = static_cast<ItemIdRecord*>(pointerTo(list.items));
        for (Word i = 0; i < list.count; ++i) {
            ContactRecord contact{};
            contact.size = sizeof contact;
            CAReadItem(operation, &ids[i], 0, 1, &contact);
            CAFreeItemData(connection, 1, &contact);
        }
        CAEndOperation(operation);
        DACloseCA(connection);
        CAAPI_Terminate(0);
    }
};

// Processor time of this thread: what else the machine does is left out.
double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

void readContacts(benchmark::State& state, bool logIsOn) {
    const auto contacts = static_cast<std::uint32_t>(state.range(0));
    Bench bench(contacts);
    if (logIsOn) bench.switchLogOn();
    double whole = 0, library = 0;
    std::int64_t reads = 0;
    for (auto _ : state) {
        HostArray<AdrItem> items;
        double started = processorSeconds();
        const Long highest = bench.read(items);
        const double time = processorSeconds() - started;
        if (highest != static_cast<Long>(contacts)) state.SkipWithError("the phone book did not arrive");
        started = processorSeconds();
        bench.callLibraryAlone();
        library += processorSeconds() - started;
        whole += time;
        state.SetIterationTime(time);
        ++reads;
    }
    const double perContact = 1e6 / (static_cast<double>(reads) * contacts);
    state.counters["us"] = whole * perContact;
    state.counters["us_library"] = library * perContact;
    state.counters["us_module"] = (whole - library) * perContact;
}

void ReadContacts(benchmark::State& state) {
    readContacts(state, /*logIsOn=*/false);
}
void ReadContactsWithLog(benchmark::State& state) {
    readContacts(state, /*logIsOn=*/true);
}
BENCHMARK(ReadContacts)->Arg(1000)->Arg(10000)->Arg(100000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReadContactsWithLog)->Arg(1000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

// Rows in the host's table, 1,000 contacts.
void ReadContactsByTableRows(benchmark::State& state) {
    Bench bench(1000);
    const TextTable table = fieldTable(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        HostArray<AdrItem> items;
        Text model = u"Nokia N95";
        Text phoneId;
        Contacts::NokiaGetAddressBookItems(model, phoneId, items, table, {}, nullptr);
    }
}
BENCHMARK(ReadContactsByTableRows)->Arg(20)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond);

void PeakMemory(benchmark::State& state) {
    const auto contacts = static_cast<std::uint32_t>(state.range(0));
    Bench bench(contacts);
    std::size_t handedOver = 0;
    for (auto _ : state) {
        HostArray<AdrItem> items;
        liveBytes = peakBytes = 0;
        countsMemory = true;
        bench.read(items);
        countsMemory = false;
        handedOver = 0;
        for (const AdrItem& item : items.elements())
            handedOver += (item.Location.size() + item.FieldValues.size() + item.FieldValuesAsRead.size() +
                           item.Uid.size()) *
                          sizeof(char16_t);
    }
    state.counters["peak"] = static_cast<double>(peakBytes) / static_cast<double>(handedOver);
    state.counters["bytes_per_contact"] = static_cast<double>(peakBytes) / contacts;
}
BENCHMARK(PeakMemory)->Arg(1000)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);

void SetFieldAlone(benchmark::State& state) {
    Bench bench;
    const TextTable table = fieldTable(static_cast<std::size_t>(state.range(0)));
    const Contacts::FieldDefinitions definitions(table);
    std::vector<Text> values(definitions.rows());
    Text value = u"+49 171 5551234";
    for (auto _ : state) {
        benchmark::DoNotOptimize(Contacts::SetField(values, definitions, 21, 22, value));
        values[9].clear();
    }
}
BENCHMARK(SetFieldAlone)->Arg(20)->Arg(2000);

void CopyToDataStructAlone(benchmark::State& state) {
    Bench bench;
    library::LowWords array(fieldsPerContact * 5);
    for (std::size_t i = 0; i < array.size(); ++i)
        *array.at(i) = i % 5 == 0 ? 20 : static_cast<library::Word>(i);
    std::vector<Content::DataItem> items;
    for (auto _ : state)
        Content::CopyToDataStruct(items, library::addressOf(array.at(0)), fieldsPerContact);
    benchmark::DoNotOptimize(items.data());
}
BENCHMARK(CopyToDataStructAlone);

void LogLineWhileOff(benchmark::State& state) {
    Bench bench;
    Long n = 0;
    for (auto _ : state)
        DebugLine(u"caIDList.iUIDCount:", decimal{++n}, u":", hex{static_cast<std::uint32_t>(n)});
}
BENCHMARK(LogLineWhileOff);

}  // namespace
}  // namespace ovno2
