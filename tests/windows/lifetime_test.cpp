// How long objects and the DLL live, and what threads share.
#include <algorithm>
#include <set>
#include <thread>

#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

class LifetimeTest : public ComponentTest {
  protected:
    // Creates an object in an apartment of this thread's own and reads a phone book with it a few times.
    static std::set<LONG> useComponent(TextView phone) {
        std::set<LONG> results;
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            const ComPointer<_covNo2> object = create();
            for (int i = 0; i < 20; ++i) {
                OwnedSafeArray items;
                results.insert(readContacts(*object.get(), items, /*progress=*/nullptr, phone));
            }
        }
        CoUninitialize();
        return results;
    }
    void use() {
        const ComPointer<_covNo2> object = create();
        OwnedSafeArray items;
        EXPECT_EQ(2, readContacts(*object.get(), items));
    }
    static void unload() {
        CoFreeUnusedLibrariesEx(/*dwUnloadDelay=*/0, 0);
        CoFreeUnusedLibrariesEx(/*dwUnloadDelay=*/0, 0);
        EXPECT_EQ(nullptr, GetModuleHandleW(L"ovNo2.dll"));
    }
};

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
    unload();

    EXPECT_EQ(u"0A02", textOf(slotsOf<tAdrItem>(items)[2].Uid));
    LPOLESTR name = const_cast<LPOLESTR>(L"Connect");
    MEMBERID member = MEMBERID_NIL;
    EXPECT_EQ(S_OK, type->GetIDsOfNames(&name, 1, &member));
    EXPECT_EQ(20, member);
    progress->AddRef();
    EXPECT_EQ(1u, progress->Release()) << "references that the module kept";
    EXPECT_EQ("", simulator.leaks());
}

// The object stays on the thread that made it, which answers while it waits for messages.
TEST_F(LifetimeTest, AnotherApartmentReachesTheObjectThroughAProxy) {
    addTwoContacts();
    const ComPointer<_covNo2> object = create();
    ComPointer<IStream> stream;
    ASSERT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(__uuidof(_covNo2), object.get(), stream.out()));
    DeviceLists lists;
    HANDLE const done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread other([&, given = stream.get()] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            ComPointer<_covNo2> proxy;
            EXPECT_EQ(S_OK, CoUnmarshalInterface(given, __uuidof(_covNo2), proxy.outAny()));
            EXPECT_NE(object.get(), proxy.get());
            if (proxy) {
                EXPECT_EQ(1, lists.read(*proxy.get()));
            }
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
    EXPECT_THAT(textsOf(lists.serials), ::testing::ElementsAre(u"356300010000017"));
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
    simulator.addPhone(simulator.plainPhone("356300010000018"), simulator.phoneBook(Json::array()));
    DWORD before = 0;
    for (int round = 0; round < 4; ++round) {
        use();
        // A thread that has used the module and lives on while it is unloaded.
        HANDLE used = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        HANDLE unloaded = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        std::thread other([&] {
            EXPECT_THAT(useComponent(u"356300010000018"), ::testing::ElementsAre(0));
            SetEvent(used);
            WaitForSingleObject(unloaded, INFINITE);
        });
        for (int i = 0; i < 20; ++i)  // at the same time, and nothing is shared
            use();
        WaitForSingleObject(used, INFINITE);
        unload();
        SetEvent(unloaded);
        other.join();
        CloseHandle(used);
        CloseHandle(unloaded);
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
