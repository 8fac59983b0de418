// What the phone's files cost: a large file there and back, and listings.
//
// "copies" is the memory that a transfer needed at most, in parts of the file, library and module together.
// The plain copies are what to measure it by: the file from disk to disk (to the phone: forced to disk, as
// the simulator does it), and the same through the library's calls alone.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "bench_machine.h"
#include "devices/session.h"
#include "library/library_memory.h"
#include "phonefs/file_operations.h"
#include "phonefs/nokia_files.h"
#include "platform/portable/libraries.h"
#include "simulator/control/control.h"

namespace ovno2 {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t largeFile = 200'000'000;

// A line of /proc/self/status in bytes.
std::size_t memoryOf(const std::string& line) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == line) {
            std::size_t kilobytes = 0;
            status >> kilobytes;
            return kilobytes * 1024;
        }
    return 0;
}

// The most memory that was in use since it was made, beyond what was in use then.
class PeakMemory {
  public:
    PeakMemory() {
        std::ofstream("/proc/self/clear_refs") << 5;
        before_ = memoryOf("VmRSS:");
    }
    double copies() const { return static_cast<double>(memoryOf("VmHWM:") - before_) / largeFile; }

  private:
    std::size_t before_ = 0;
};

// A machine of its own with one phone that has files.
class Bench : public BenchMachine {
  public:
    Bench() {
        static_cast<platform::portable::PortableLibraries&>(machine.libraries())
            .searchOnlyIn(OVNO2_SIMULATOR_FOLDER);
        fs::create_directories(phoneFolder());
        fs::create_directories(pcFolder());
        std::ofstream(folder / "phones/one/phone.json")
            << R"({"format": 1, "serialNumber": "1", "typeName": "Nokia N95",
                   "connections": [{"deviceNumber": 1, "medium": "usb", "deviceName": "Nokia N95"}]})";
        simulator.reset();
        simulator.load(folder / "phones");
        Text model = u"Nokia N95";
        NokiaFiles::OpenFS(model, {});
    }
    ~Bench() {
        NokiaFiles::CloseFS();
        Session::DMApiTerminate();
    }

    fs::path phoneFolder() const { return folder / "phones/one/files/E"; }
    fs::path pcFolder() const { return folder / "pc"; }
    static void makeLargeFile(const fs::path& path) {
        std::string bytes(largeFile, '\0');
        std::uint32_t next = 1;
        for (char& byte : bytes)
            byte = static_cast<char>((next = next * 1664525 + 1013904223) >> 24);
        std::ofstream(path, std::ios::binary) << bytes;
    }
    void makeFiles(int count) {
        for (int i = 0; i < count; ++i)
            std::ofstream(phoneFolder() / ("picture" + std::to_string(i) + ".jpg")) << i;
    }

    simulator::Control simulator;
};

void copyPlainly(const fs::path& from, const fs::path& to, bool forced) {
    const int source = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const int target = ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    std::string piece(1 << 20, '\0');
    for (ssize_t count = 0; (count = ::read(source, piece.data(), piece.size())) > 0;)
        if (::write(target, piece.data(), static_cast<std::size_t>(count)) != count) std::abort();
    if (forced) ::fsync(target);
    ::close(source);
    ::close(target);
}

void finish(benchmark::State& state, const PeakMemory& peak) {
    state.counters["copies"] = peak.copies();
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * largeFile));
}

void PlainCopyFromThePhone(benchmark::State& state) {
    Bench bench;
    Bench::makeLargeFile(bench.phoneFolder() / "film.avi");
    const PeakMemory peak;
    for (auto _ : state)
        copyPlainly(bench.phoneFolder() / "film.avi", bench.pcFolder() / "film.avi", /*forced=*/false);
    finish(state, peak);
}
BENCHMARK(PlainCopyFromThePhone)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

// What the library does for a transfer; the file's bytes stay in one piece.
library::FileRecord namedRecord(const library::LibraryString& name) {
    library::FileRecord record{};
    record.name = library::addressOf(name.get());
    return record;
}

void LibraryCopyFromThePhone(benchmark::State& state) {
    Bench bench;
    Bench::makeLargeFile(bench.phoneFolder() / "film.avi");
    const library::Handle session = stateOf<NokiaFiles::State>().FSHandle;
    Text folder = u"E:";
    NokiaFiles::ChangeDir(folder);
    const library::LibraryString name(u"film.avi");
    const PeakMemory peak;
    for (auto _ : state) {
        library::FileRecord record = namedRecord(name);
        Address data = 0;
        library::CONAReadFile(session, &record, &data, 0, 0);
        std::ofstream(bench.pcFolder() / "film.avi", std::ios::binary)
            .write(static_cast<const char*>(library::pointerTo(data)), record.size);
    }
    finish(state, peak);
}
BENCHMARK(LibraryCopyFromThePhone)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

void GetFile(benchmark::State& state) {
    Bench bench;
    Bench::makeLargeFile(bench.phoneFolder() / "film.avi");
    const Text target = (bench.pcFolder() / "").u16string();
    const PeakMemory peak;
    for (auto _ : state)
        if (NokiaFiles::GetFile(u"E:\\film.avi", target) != 0) state.SkipWithError("failed");
    finish(state, peak);
    if (fs::file_size(bench.pcFolder() / "film.avi") != largeFile) state.SkipWithError("not whole");
}
BENCHMARK(GetFile)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

void PlainCopyToThePhone(benchmark::State& state) {
    Bench bench;
    Bench::makeLargeFile(bench.pcFolder() / "film.avi");
    const PeakMemory peak;
    for (auto _ : state)
        copyPlainly(bench.pcFolder() / "film.avi", bench.phoneFolder() / "film.avi", /*forced=*/true);
    finish(state, peak);
}
BENCHMARK(PlainCopyToThePhone)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

void LibraryCopyToThePhone(benchmark::State& state) {
    Bench bench;
    Bench::makeLargeFile(bench.pcFolder() / "film.avi");
    const library::Handle session = stateOf<NokiaFiles::State>().FSHandle;
    Text folder = u"E:";
    NokiaFiles::ChangeDir(folder);
    const library::LibraryString name(u"film.avi");
    const PeakMemory peak;
    for (auto _ : state) {
        const std::unique_ptr<char[]> bytes(new char[largeFile]);
        std::ifstream(bench.pcFolder() / "film.avi", std::ios::binary).read(bytes.get(), largeFile);
        library::FileRecord record = namedRecord(name);
        record.size = largeFile;
        library::CONAWriteFile(session, &record, bytes.get(), 0);
    }
    finish(state, peak);
}
BENCHMARK(LibraryCopyToThePhone)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

void PutFile(benchmark::State& state) {
    Bench bench;
    Bench::makeLargeFile(bench.pcFolder() / "film.avi");
    const Text source = (bench.pcFolder() / "film.avi").u16string();
    const PeakMemory peak;
    for (auto _ : state) {
        Text target = u"E:";
        if (NokiaFiles::PutFile(source, target) != 0) state.SkipWithError("failed");
    }
    finish(state, peak);
    if (fs::file_size(bench.phoneFolder() / "film.avi") != largeFile) state.SkipWithError("not whole");
}
BENCHMARK(PutFile)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

void ListFolder(benchmark::State& state) {
    Bench bench;
    bench.makeFiles(static_cast<int>(state.range(0)));
    std::size_t listed = 0;
    for (auto _ : state) {
        HostArray<DirItem> items;
        Text model = u"Nokia N95";
        NokiaFiles::GetDirContents(model, items, u"E:");
        listed = items.size();
    }
    if (listed != static_cast<std::size_t>(state.range(0))) state.SkipWithError("not whole");
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ListFolder)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ovno2
