// What the component costs its host: one call by either way, and a whole phone book.
//     ./run --windows list        (tells the Wine prefix where the simulator lies)
//     scripts/build.sh windows component_bench
//     scripts/wine.sh run build/windows/wine build/windows/bench/windows/component_bench.exe
// The native figure to compare with is that of build/release/bench/contacts_bench, ReadContacts/10000.
//
// The component is the one of this build's `dist`, taken from its file. The phone book is read by the core
// alone, through the component's slot, and late-bound: first on the system as it is, then with the same code
// linked into this program and a system that has no registry and no messages, then with a heap of this
// program's own as well. The differences are what the system needs for these: under Wine the first two are
// messages to another process, and an allocation takes several times as long as on other systems.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "base/values.h"
#include "com/class_factory.h"
#include "com/interface.h"
#include "contacts/contacts.h"
#include "core/current_platform.h"
#include "devices/session.h"
#include "host/driver/com_client.h"
#include "log/debug_log.h"
#include "simulator/control/control.h"

namespace {

// A heap for one thread: lists of free blocks by size.
class OwnHeap {
  public:
    static void* allocate(std::size_t size) {
        const std::size_t units = (size + sizeof(Block) - 1) / sizeof(Block);
        if (!used || units > mostUnits) {
            auto* const block = static_cast<Block*>(std::malloc(size + sizeof(Block)));
            if (!block) throw std::bad_alloc();
            block->units = 0;
            return block + 1;
        }
        Block*& free = lists[units];
        if (!free) refill(units);
        Block* const block = std::exchange(free, free->next);
        block->units = units;
        return block + 1;
    }
    static void release(void* memory) {
        if (!memory) return;
        Block* const block = static_cast<Block*>(memory) - 1;
        if (block->units == 0) {
            std::free(block);
        } else {
            Block*& free = lists[block->units];
            block->next = std::exchange(free, block);
        }
    }
    static inline bool used = false;

  private:
    struct alignas(16) Block {
        std::size_t units;  // 0 = the system's
        Block* next;
    };
    static constexpr std::size_t mostUnits = 64;

    static void refill(std::size_t units) {
        constexpr std::size_t count = 64;
        auto* block = static_cast<Block*>(std::malloc(count * (units + 1) * sizeof(Block)));
        if (!block) throw std::bad_alloc();
        for (std::size_t i = 0; i < count; ++i, block += units + 1)
            block->next = std::exchange(lists[units], block);
    }
    static inline Block* lists[mostUnits + 1] = {};
};

}  // namespace

void* operator new(std::size_t size) {
    return OwnHeap::allocate(size);
}
void operator delete(void* memory) noexcept {
    OwnHeap::release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    OwnHeap::release(memory);
}

namespace ovno2 {
namespace {

using com::OwnedSafeArray;
using host::Bstr;
using host::ComPointer;

// --- Time ------------------------------------------------------------------------------------------------

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// --- One call --------------------------------------------------------------------------------------------

struct Bare {
    virtual HRESULT STDMETHODCALLTYPE put(LONG* value) = 0;

  protected:
    ~Bare() = default;
};
struct BareObject final : Bare {
    HRESULT STDMETHODCALLTYPE put(LONG* value) override {
        kept = *value;
        return S_OK;
    }
    LONG kept = 0;
};

void perCall(const char* name, const std::function<void(int)>& calls) {
    constexpr int rounds = 9;
    constexpr int count = 100000;
    calls(count / 10);
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const double started = seconds();
        calls(count);
        times.push_back((seconds() - started) * 1e9 / count);
    }
    std::printf("%-44s %10.1f ns\n", name, median(times));
}

DISPID idOf(_covNo2& object, const wchar_t* name) {
    auto* text = const_cast<LPOLESTR>(name);
    DISPID id = DISPID_UNKNOWN;
    object.GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

void benchCalls(_covNo2& object) {
    BareObject bareObject;
    Bare* bare = &bareObject;
    LONG on = 1;
    Bstr word(u"Besprechung");
    perCall("  bare virtual call", [&](int count) {
        for (int i = 0; i < count; ++i) {
            asm volatile("" : "+r"(bare));  // nobody knows any more whose call it is
            bare->put(&on);
        }
    });
    perCall("  slot, a number (GetAllFields_)", [&](int count) {
        for (int i = 0; i < count; ++i)
            object.put_GetAllFields_(&on);
    });
    perCall("  slot, a text (Meeting_)", [&](int count) {
        for (int i = 0; i < count; ++i)
            object.put_Meeting_(word.address());
    });
    OwnedSafeArray uids;
    LONG result = 0;
    perCall("  slot, an array (GetAllUids)", [&](int count) {
        for (int i = 0; i < count; ++i)
            object.GetAllUids(2, uids.address(), &result);
    });

    DISPID newValue = DISPID_PROPERTYPUT;
    VARIANT argument;
    const auto put = [&](DISPID id, int count) {
        DISPPARAMS parameters = {&argument, &newValue, 1, 1};
        for (int i = 0; i < count; ++i)
            object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &parameters, nullptr,
                          nullptr, nullptr);
    };
    V_VT(&argument) = VT_I4;
    V_I4(&argument) = 1;
    perCall("  Invoke, a number", [&](int count) { put(idOf(object, L"GetAllFields_"), count); });
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = word.get();
    perCall("  Invoke, a text", [&](int count) { put(idOf(object, L"Meeting_"), count); });
    perCall("  Invoke, an array behind a script's variable", [&](int count) {
        const DISPID id = idOf(object, L"GetAllUids");
        VARIANT variable, arguments[2], uidCount;
        VariantInit(&variable);
        V_VT(&arguments[0]) = VT_BYREF | VT_VARIANT;
        V_VARIANTREF(&arguments[0]) = &variable;
        V_VT(&arguments[1]) = VT_I4;
        V_I4(&arguments[1]) = 2;
        DISPPARAMS parameters = {arguments, nullptr, 2, 0};
        for (int i = 0; i < count; ++i)
            object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &uidCount, nullptr,
                          nullptr);
        VariantClear(&variable);
    });
    perCall("  GetIDsOfNames", [&](int count) {
        for (int i = 0; i < count; ++i)
            idOf(object, L"NokiaGetAddressBookItems");
    });
}

// --- A phone book ----------------------------------------------------------------------------------------

constexpr std::uint32_t contacts = 10000;
constexpr std::uint32_t fieldsPerContact = 20;
constexpr int reads = 15;

// The table of bench/contacts_bench.cpp.
TextTable fieldTable() {
    constexpr Long columns = 6;
    std::vector<Long> codes = {1,  2,  3,  4,  5,  16, 17, 19, 20, 21, 22, 24, 25, 23, 35, 28, 29, 50,
                               51, 60, 61, 15, 67, 18, 6,  7,  8,  12, 13, 9,  10, 11, 43, 44, 80, 70};
    for (Long code = 1000; code < 1020; ++code)
        codes.push_back(code);
    std::vector<Text> cells;
    for (const Long code : codes)
        for (Long column = 0; column < columns; ++column)
            cells.push_back(column == 4 ? decimalText(code) : u"label");
    return TextTable(std::move(cells), codes.size(), columns);
}

// Runs `read`, which gives the time it took, or a negative one when the phone book did not arrive.
void perRead(const char* name, const std::function<double()>& read) {
    std::vector<double> times;
    for (int i = 0; i < reads; ++i)
        times.push_back(1e3 * read());
    const double fastest = *std::min_element(times.begin(), times.end());
    if (fastest < 0)
        std::printf("%-44s the phone book did not arrive\n", name);
    else
        std::printf("%-44s %10.1f ms   fastest %6.1f ms\n", name, median(times), fastest);
}

// The time of `step`, which gives the highest index.
template <class Step>
double timeOf(Step&& step) {
    const double started = seconds();
    const LONG highest = step();
    const double time = seconds() - started;
    return highest == static_cast<LONG>(contacts) ? time : -1;
}

double readByCore(const TextTable& fields) {
    HostArray<AdrItem> items;
    Text model = u"Nokia N95", phone;
    return timeOf([&] {
        return static_cast<LONG>(
            Contacts::NokiaGetAddressBookItems(model, phone, items, fields, {}, /*Progressbar=*/nullptr));
    });
}

double readBySlot(_covNo2& object, OwnedSafeArray& table) {
    Bstr model(u"Nokia N95"), phone, book;
    OwnedSafeArray items, groups;
    return timeOf([&] {
        LONG result = 0;
        object.NokiaGetAddressBookItems(model.address(), phone.address(), book.address(), items.address(),
                                        table.address(), groups.address(), nullptr, nullptr, nullptr,
                                        &result);
        return result;
    });
}

double readByInvoke(_covNo2& object, OwnedSafeArray& table) {
    Bstr model(u"Nokia N95"), phone, book;
    OwnedSafeArray items, groups;
    const std::pair<VARTYPE, void*> variables[] = {{VT_ARRAY | VT_BSTR, groups.address()},
                                                   {VT_ARRAY | VT_BSTR, table.address()},
                                                   {VT_ARRAY | VT_RECORD, items.address()},
                                                   {VT_BSTR, book.address()},
                                                   {VT_BSTR, phone.address()},
                                                   {VT_BSTR, model.address()}};
    VARIANT arguments[std::size(variables)], result;
    VariantInit(&result);
    for (std::size_t i = 0; i < std::size(variables); ++i) {
        V_VT(&arguments[i]) = static_cast<VARTYPE>(VT_BYREF | variables[i].first);
        V_BYREF(&arguments[i]) = variables[i].second;
    }
    DISPPARAMS parameters = {arguments, nullptr, std::size(arguments), 0};
    return timeOf([&] {
        object.Invoke(idOf(object, L"NokiaGetAddressBookItems"), IID_NULL, LOCALE_USER_DEFAULT,
                      DISPATCH_METHOD, &parameters, &result, nullptr, nullptr);
        return V_I4(&result);
    });
}

void benchReads(_covNo2& object) {
    const TextTable fields = fieldTable();
    OwnedSafeArray table(host::newTable(fields));
    perRead("  core alone", [&] { return readByCore(fields); });
    Session::DMApiTerminate();
    perRead("  slot", [&] { return readBySlot(object, table); });
    perRead("  Invoke", [&] { return readByInvoke(object, table); });
}

// The system without its registry and its messages.
class QuietSystem : public platform::Platform {
  public:
    platform::Registry& registry() override { return registry_; }
    platform::Windows& windows() override { return windows_; }
    platform::Files& files() override { return native_.files(); }
    platform::SharedMemory& sharedMemory() override { return native_.sharedMemory(); }
    platform::Processes& processes() override { return native_.processes(); }
    platform::Locale& locale() override { return native_.locale(); }
    platform::Clock& clock() override { return native_.clock(); }
    platform::CodePages& codePages() override { return native_.codePages(); }
    platform::Memory& memory() override { return native_.memory(); }
    platform::Libraries& libraries() override { return native_.libraries(); }
    platform::Automation& automation() override { return native_.automation(); }

  private:
    class NoRegistry : public platform::Registry {
        Long open(Long, TextView, bool, std::unique_ptr<platform::RegistryKey>&) override {
            return platform::registryNotFound;
        }
        Long create(Long, TextView, std::unique_ptr<platform::RegistryKey>&) override {
            return platform::registryAccessDenied;
        }
        Text profileString(TextView, TextView, TextView, std::size_t) override { return {}; }
    };
    class NoMessages : public platform::Windows {
        bool isVisible(Long) override { return false; }
        Long send(Long, std::uint32_t, std::uint32_t, std::uint32_t, Long& answer) override {
            answer = 0;
            return platform::invalidWindowHandle;
        }
        void processPendingMessages() override {}
        FailureNumber activate(TextView) override { return invalidProcedureCall; }
        FailureNumber sendKeys(TextView) override { return invalidProcedureCall; }
        FailureNumber callProcedure(Long, Long, Long, Long, Long, Long&) override {
            return invalidProcedureCall;
        }
        Long messageBox(TextView, Long) override { return 0; }
    };

    platform::Platform& native_ = platform::nativePlatform();
    NoRegistry registry_;
    NoMessages windows_;
};

ComPointer<_covNo2> createObject() {
    const std::filesystem::path file = std::filesystem::absolute(OVNO2_DIST) / "ovNo2.dll";
    const HMODULE library = LoadLibraryW(file.c_str());
    ComPointer<IClassFactory> factory;
    ComPointer<_covNo2> object;
    const auto getClassObject = reinterpret_cast<LPFNGETCLASSOBJECT>(
        reinterpret_cast<void*>(library ? GetProcAddress(library, "DllGetClassObject") : nullptr));
    if (getClassObject &&
        SUCCEEDED(getClassObject(__uuidof(covNo2), __uuidof(IClassFactory), factory.outAny())))
        factory->CreateInstance(nullptr, __uuidof(_covNo2), object.outAny());
    return object;
}

}  // namespace
}  // namespace ovno2

int main() {
    using namespace ovno2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const simulator::Control simulator;
    DebugLog::connect();
    ComPointer<_covNo2> object = createObject();
    if (!object) {
        std::puts("The component cannot be created.");
        return 1;
    }
    std::puts("One call");
    benchCalls(*object.get());

    simulator.addPhone(simulator::Control::plainPhone("1"));
    simulator.fillContacts("1", contacts, fieldsPerContact);
    std::printf("Reading %u contacts\n", contacts);
    benchReads(*object.get());
    object.reset();

    std::puts("The same without the system's registry and messages");
    QuietSystem quiet;
    resetThreadState();
    usePlatform(quiet);
    DebugLog::connect();
    com::classFactory().CreateInstance(nullptr, __uuidof(_covNo2), object.outAny());
    benchReads(*object.get());
    std::puts("The same without its heap, too");
    OwnHeap::used = true;
    benchReads(*object.get());
    object.reset();
    resetThreadState();
    CoUninitialize();
}
