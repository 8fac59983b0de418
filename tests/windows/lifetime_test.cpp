// How long objects and the DLL live, and what threads share.
#include <algorithm>
#include <array>
#include <thread>

#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using LifetimeTest = ComponentTest;

// The DLL loaded and asked as COM does it.
class LoadedComponent {
  public:
    LoadedComponent() : module_(LoadLibraryW(componentPath().c_str())) {}
    ~LoadedComponent() { FreeLibrary(module_); }
    LoadedComponent(const LoadedComponent&) = delete;
    LoadedComponent& operator=(const LoadedComponent&) = delete;

    bool canBeUnloaded() const { return entry<LPFNCANUNLOADNOW>("DllCanUnloadNow")() == S_OK; }
    HRESULT getClassObject(REFCLSID id, REFIID interfaceId, void** object) const {
        return entry<LPFNGETCLASSOBJECT>("DllGetClassObject")(id, interfaceId, object);
    }

  private:
    template <class Function>
    Function entry(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }
    HMODULE module_;
};

TEST_F(LifetimeTest, ObjectsFactoriesAndLocksKeepTheDllInAnyOrderOfRelease) {
    const LoadedComponent component;
    ComPointer<IClassFactory> factory;
    ComPointer<_covNo2> first, second;
    ComPointer<IDispatch> dispatch;
    EXPECT_TRUE(component.canBeUnloaded());
    ASSERT_EQ(S_OK, component.getClassObject(__uuidof(covNo2), __uuidof(IClassFactory), factory.outAny()));
    EXPECT_FALSE(component.canBeUnloaded());
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, __uuidof(_covNo2), first.outAny()));
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, __uuidof(_covNo2), second.outAny()));
    ASSERT_EQ(S_OK, second->QueryInterface(__uuidof(IDispatch), dispatch.outAny()));

    factory.reset();
    second.reset();
    EXPECT_FALSE(component.canBeUnloaded());
    dispatch.reset();
    first.reset();
    EXPECT_TRUE(component.canBeUnloaded());

    ASSERT_EQ(S_OK, component.getClassObject(__uuidof(covNo2), __uuidof(IClassFactory), factory.outAny()));
    factory->LockServer(TRUE);
    factory.reset();
    EXPECT_FALSE(component.canBeUnloaded());
    ASSERT_EQ(S_OK, component.getClassObject(__uuidof(covNo2), __uuidof(IClassFactory), factory.outAny()));
    factory->LockServer(FALSE);
    factory.reset();
    EXPECT_TRUE(component.canBeUnloaded());
}

TEST_F(LifetimeTest, WrongClassesInterfacesAndAggregationAreRefused) {
    const LoadedComponent component;
    ComPointer<IClassFactory> factory;
    void* object = &factory;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              component.getClassObject(__uuidof(IDispatch), __uuidof(IClassFactory), &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_NOINTERFACE, component.getClassObject(__uuidof(covNo2), __uuidof(IDispatch), &object));
    ASSERT_EQ(S_OK, component.getClassObject(__uuidof(covNo2), __uuidof(IClassFactory), factory.outAny()));
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(factory.get(), __uuidof(IUnknown), &object));
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, __uuidof(IClassFactory), &object));
    factory.reset();
    EXPECT_TRUE(component.canBeUnloaded());
}

TEST_F(LifetimeTest, AHostMayReleaseItsLastReferenceInsideACall) {
    addTwoContacts();
    ComPointer<_covNo2> object = create();
    _covNo2& called = *object.get();
    ComPointer<IDispatch> progress;
    *progress.out() = new host::ProgressControl([&](Long) { object.reset(); });
    OwnedSafeArray items;
    EXPECT_EQ(2, readContacts(called, items, progress.get()));
    EXPECT_EQ("", simulator.leaks());
}

TEST_F(LifetimeTest, WhatAHostKeepsOutlivesTheObjectAndTheDll) {
    addTwoContacts();
    OwnedSafeArray items;
    ComPointer<ITypeInfo> type;
    ComPointer<IDispatch> progress;
    *progress.out() = new host::ProgressControl([](Long) {});
    {
        const ComPointer<_covNo2> object = create();
        EXPECT_EQ(2, readContacts(*object.get(), items, progress.get()));
        EXPECT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.out()));
    }
    CoFreeUnusedLibrariesEx(/*dwUnloadDelay=*/0, 0);
    CoFreeUnusedLibrariesEx(/*dwUnloadDelay=*/0, 0);
    EXPECT_EQ(nullptr, GetModuleHandleW(L"ovNo2.dll"));

    EXPECT_EQ(u"0A02", textOf(slotsOf<tAdrItem>(items)[2].Uid));
    LPOLESTR name = const_cast<LPOLESTR>(L"Connect");
    MEMBERID member = MEMBERID_NIL;
    EXPECT_EQ(S_OK, type->GetIDsOfNames(&name, 1, &member));
    EXPECT_EQ(20, member);
    progress->AddRef();
    EXPECT_EQ(1u, progress->Release()) << "references that the module kept";
    EXPECT_EQ("", simulator.leaks());
}

// What a thread with an apartment of its own saw.
struct Seen {
    std::array<LONG, 20> results = {};
    float version = 0;
    bool created = false;
};

void useComponent(Seen& seen, const std::string& serial) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
        ComPointer<_covNo2> object;
        CLSID classId;
        CLSIDFromProgID(L"ovNo2.covNo2", &classId);
        seen.created = SUCCEEDED(
            CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, __uuidof(_covNo2), object.outAny()));
        for (LONG& result : seen.results) {
            if (!object) break;
            TextVariable model(u"Nokia N95"), phone(Text(serial.begin(), serial.end())), book;
            OwnedSafeArray items, groups, table(host::newTable(tableOf({1, 2, 3})));
            object->NokiaGetAddressBookItems(model.address(), phone.address(), book.address(),
                                             items.address(), table.address(), groups.address(), nullptr,
                                             nullptr, nullptr, &result);
            object->GetApiVersion(&seen.version);
        }
    }
    CoUninitialize();
}

TEST_F(LifetimeTest, TwoThreadsInTwoApartmentsShareNothing) {
    addTwoContacts();
    simulator.addPhone(simulator.plainPhone("356300010000018"), simulator.phoneBook(Json::array()));
    const ComPointer<_covNo2> own = create();
    Seen first, second;
    std::thread one(useComponent, std::ref(first), serial);
    std::thread two(useComponent, std::ref(second), "356300010000018");
    one.join();
    two.join();
    EXPECT_TRUE(first.created && second.created);
    EXPECT_THAT(first.results, ::testing::Each(2));
    EXPECT_THAT(second.results, ::testing::Each(0));
    EXPECT_EQ(first.version, second.version);
}

// The object stays on the thread that made it, which answers while it waits for messages.
TEST_F(LifetimeTest, AnotherApartmentReachesTheObjectThroughAProxy) {
    addTwoContacts();
    const ComPointer<_covNo2> object = create();
    ComPointer<IStream> stream;
    ASSERT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(__uuidof(_covNo2), object.get(), stream.out()));
    LONG phones = -100;
    std::vector<Text> serials;
    float version = 0;
    HANDLE const done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread other([&, given = stream.get()] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            ComPointer<_covNo2> proxy;
            EXPECT_EQ(S_OK, CoUnmarshalInterface(given, __uuidof(_covNo2), proxy.outAny()));
            EXPECT_NE(object.get(), proxy.get());
            OwnedSafeArray arrays[6];
            if (proxy) {
                EXPECT_EQ(S_OK,
                          proxy->GetConnectedDevices(arrays[0].address(), arrays[1].address(),
                                                     arrays[2].address(), arrays[3].address(),
                                                     arrays[4].address(), arrays[5].address(), -1, &phones));
                EXPECT_EQ(S_OK, proxy->GetApiVersion(&version));
            }
            serials = textsOf(arrays[2]);
        }
        CoUninitialize();
        SetEvent(done);
    });
    while (MsgWaitForMultipleObjects(1, &done, FALSE, 30000, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
    other.join();
    CloseHandle(done);
    EXPECT_EQ(1, phones);
    EXPECT_EQ(std::vector<Text>{u"356300010000017"}, serials);
    EXPECT_GT(version, 0);
}

// The blocks in use of the heaps of this process.
std::size_t blocksInUse() {
    HANDLE heaps[64];
    const DWORD count = std::min<DWORD>(GetProcessHeaps(std::size(heaps), heaps), std::size(heaps));
    std::size_t blocks = 0;
    for (DWORD i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry))
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) ++blocks;
    }
    return blocks;
}

TEST_F(LifetimeTest, UseAfterUseTakesNoMoreMemory) {
    addTwoContacts();
    const auto use = [&] {
        const ComPointer<_covNo2> object = create();
        OwnedSafeArray items;
        EXPECT_EQ(2, readContacts(*object.get(), items));
    };
    for (int i = 0; i < 3; ++i)
        use();
    const std::size_t before = blocksInUse();
    constexpr std::size_t rounds = 20;
    EXPECT_LT(rounds, before);
    for (std::size_t i = 0; i < rounds; ++i)
        use();
    EXPECT_LT(blocksInUse(), before + rounds);
}

TEST_F(LifetimeTest, AnUnloadedDllLeavesNothingBehindAndLoadsAgain) {
    addTwoContacts();
    DWORD before = 0;
    for (int round = 0; round < 4; ++round) {
        {
            const ComPointer<_covNo2> object = create();
            OwnedSafeArray items;
            EXPECT_EQ(2, readContacts(*object.get(), items));
        }
        // A thread that has used the module and lives on while it is unloaded.
        Seen seen;
        HANDLE used = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        HANDLE unloaded = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        std::thread other([&] {
            useComponent(seen, serial);
            SetEvent(used);
            WaitForSingleObject(unloaded, INFINITE);
        });
        WaitForSingleObject(used, INFINITE);
        CoFreeUnusedLibrariesEx(/*dwUnloadDelay=*/0, 0);
        CoFreeUnusedLibrariesEx(/*dwUnloadDelay=*/0, 0);
        EXPECT_EQ(nullptr, GetModuleHandleW(L"ovNo2.dll"));
        SetEvent(unloaded);
        other.join();
        CloseHandle(used);
        CloseHandle(unloaded);
        EXPECT_EQ(2, seen.results[0]);
        EXPECT_EQ("", simulator.leaks());

        DWORD handles = 0;
        GetProcessHandleCount(GetCurrentProcess(), &handles);
        if (round == 1) before = handles;
        if (round > 1) {
            EXPECT_LE(handles, before);
        }
    }
}

}  // namespace
}  // namespace ovno2::windows_tests
