// What texts, dates, files and log lines cost, next to what the system itself needs for the same.
#include <benchmark/benchmark.h>
#include <fstream>
#include <iconv.h>

#include "bench_machine.h"
#include "core/log_front.h"
#include "dates/iso_date.h"
#include "pc/convert_uml_file.h"
#include "pc/files.h"
#include "platform/portable/window_endpoint.h"

namespace ovno2 {
namespace {

constexpr std::size_t textBytes = 10'000'000;
constexpr std::size_t fileBytes = 100'000'000;

// `part` over and over, `textBytes` long.
std::string repeated(std::string_view part) {
    std::string text;
    text.reserve(textBytes + part.size());
    while (text.size() < textBytes)
        text += part;
    return text;
}

constexpr std::string_view typicalPart =
    "Schl\xC3\xBCssel liegt bei K\xC3\xA4the, Stra\xC3\x9F"
    "e 12. ";

// The kinds of text, as byte strings.
std::string textOf(std::int64_t kind) {
    switch (kind) {
        case 0:
            return repeated(typicalPart);
        case 1:  // nothing but pairs
            return repeated("\xC3\xBC\xC3\xA4\xC4\x85\xC5\x82\xC2\xBB");
        case 2:  // nothing but references
            return repeated("&#65;&#66;&#228;");
        default:  // nothing but what starts a pair and is none
            return repeated("\xC3\xC3\xC4\xC5");
    }
}

void ConvertUmlaute(benchmark::State& state) {
    const BenchMachine machine;
    const std::string bytes = textOf(state.range(0));
    const Text text(reinterpret_cast<const unsigned char*>(bytes.data()),
                    reinterpret_cast<const unsigned char*>(bytes.data()) + bytes.size());
    for (auto _ : state) {
        state.PauseTiming();
        Text converted = text;
        state.ResumeTiming();
        ConvertUmlFile::ConvertUmlauteFromFile(converted);
        benchmark::DoNotOptimize(converted.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}
BENCHMARK(ConvertUmlaute)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

// The same amount of typical text, decoded from UTF-8 by the system.
void Iconv(benchmark::State& state) {
    std::string bytes = repeated(typicalPart);
    std::vector<char> out(2 * bytes.size() + 2);
    const iconv_t converter = iconv_open("UTF-16LE", "UTF-8");
    for (auto _ : state) {
        char* in = bytes.data();
        char* to = out.data();
        std::size_t left = bytes.size() - bytes.size() % typicalPart.size();
        std::size_t room = out.size();
        if (iconv(converter, &in, &left, &to, &room) != 0) state.SkipWithError("iconv failed");
    }
    iconv_close(converter);
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}
BENCHMARK(Iconv)->Unit(benchmark::kMillisecond);

void IsoToLocal(benchmark::State& state) {
    const BenchMachine machine;
    ISODate::DateTimeInit();
    for (auto _ : state) {
        Text text = u"20080105T103000";
        benchmark::DoNotOptimize(
            ISODate::GetISO8601Date(text, /*initialiseFormats=*/true, /*convertUtc=*/false));
    }
}
BENCHMARK(IsoToLocal);

void LocalToIso(benchmark::State& state) {
    const BenchMachine machine;
    ISODate::DateTimeInit();
    Text iso = u"20080105T103000";
    const Text local = ISODate::GetISO8601Date(iso, /*initialiseFormats=*/true, /*convertUtc=*/false);
    for (auto _ : state)
        benchmark::DoNotOptimize(ISODate::ConvertToISO8601Date(local, /*dateOnly=*/false));
}
BENCHMARK(LocalToIso);

void GetFileContents(benchmark::State& state) {
    const BenchMachine machine;
    const std::filesystem::path file = machine.folder / "large.bin";
    std::ofstream(file, std::ios::binary) << std::string(fileBytes, 'x');
    for (auto _ : state)
        if (Files::GetFileContents(file.u16string(), /*decode=*/false).size() != fileBytes)
            state.SkipWithError("the file did not arrive");
    state.SetBytesProcessed(static_cast<std::int64_t>(fileBytes) * state.iterations());
}
BENCHMARK(GetFileContents)->Unit(benchmark::kMillisecond);

// The same file read into memory by the language's library.
void PlainRead(benchmark::State& state) {
    const BenchMachine machine;
    const std::filesystem::path file = machine.folder / "large.bin";
    std::ofstream(file, std::ios::binary) << std::string(fileBytes, 'x');
    for (auto _ : state) {
        std::vector<char> bytes(fileBytes);
        std::ifstream(file, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(fileBytes));
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(fileBytes) * state.iterations());
}
BENCHMARK(PlainRead)->Unit(benchmark::kMillisecond);

void LogLineToFile(benchmark::State& state) {
    BenchMachine machine;
    machine.switchLogOn();
    for (auto _ : state)
        DebugWrite(u"CAReadItem returned 0 for the item 00000001");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(LogLineToFile);

// A viewer that answers at once, in this process. Mode 2 sends chunks, 3 goes through the shared area.
void LogLineToViewer(benchmark::State& state) {
    constexpr TextView key = u"Software\\Marrowind\\Orvanta\\Debug";
    BenchMachine machine;
    platform::portable::WindowEndpoint viewer(
        machine.folder, u"Viewer",
        {.message = [](std::uint32_t, std::uint32_t, std::uint32_t) { return Long{815}; },
         .activated = {},
         .keys = {}});
    viewer.serveInBackground();
    machine.writeRegistry(key, u"hWnd", decimalText(viewer.number()));
    machine.writeRegistry(key, u"Mode", decimalText(static_cast<Long>(state.range(0))));
    machine.writeRegistry(key, u"Level", u"4");
    machine.writeRegistry(key, u"On", u"1");
    DebugLog::DebugInit();
    if (!logIsOn()) state.SkipWithError("the viewer was not found");
    for (auto _ : state)
        DebugWrite(u"CAReadItem returned 0 for the item 00000001");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(LogLineToViewer)->Arg(2)->Arg(3);

}  // namespace
}  // namespace ovno2
