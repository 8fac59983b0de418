#include "common/every_fault.h"
#include "core/attempt.h"

namespace ovno2 {
namespace {

class PhoneFaults : public EveryFault<PhoneTest> {
  protected:
    void attachPhones() override {
        simulator.addPhone(simulator::Control::plainPhone("356300010000017"));
        simulator.addPhone(simulator::Control::plainPhone("356300010000025", "Nokia 6300"));
    }

    void bluetoothPhone() {
        simulator.run("surroundings",
                      {{"bluetooth", simulator::Control::Json::parse(R"({"format": 1, "found": [
            {"deviceNumber": 7, "deviceName": "Nokia 6300", "address": "00:1A:2B:3C:4D:5E", "state": 8,
             "passkey": "1234"}]})")}});
    }

    static bool isEither(const Text& text, TextView one, TextView other) {
        return text == one || text == other || text.empty();
    }
};

// With the arrays, an entry is the phone's or empty, and an array that was not begun is as the host passed
// it.
TEST_F(PhoneFaults, AListHoldsPhonesOrWhatItHeld) {
    TextArray models, ids, addresses, names;
    LongArray media, types;
    const auto isList = [](const TextArray& array, const std::vector<Text>& whole, Fault fault) {
        const std::vector<Text>& entries = array.elements();
        if (entries == std::vector<Text>{u"kept"} || entries.empty()) return fault != Fault::none;
        if (fault == Fault::none) return entries == whole;
        for (std::size_t i = 0; i < entries.size(); ++i)
            if (!entries[i].empty() && std::count(whole.begin(), whole.end(), entries[i]) == 0) return false;
        return true;
    };
    forEveryFault(
        {.prepare =
             [&] {
                 models = ids = addresses = names = TextArray({u"kept"});
                 media = types = LongArray({-5});
             },
         .run =
             [&](covNo2& phone) {
                 return phone.GetConnectedDevices(models, media, ids, addresses, names, types);
             },
         .done = 2,
         .otherwise = {-1, -2, -3, -7}},
        [&](Long result, Fault fault) {
            EXPECT_TRUE(isList(models, {u"Nokia N95", u"Nokia 6300"}, fault));
            EXPECT_TRUE(isList(ids, {u"356300010000017", u"356300010000025"}, fault));
            EXPECT_TRUE(isList(names, {u"Nokia N95", u"Nokia 6300"}, fault));
            EXPECT_TRUE(isList(addresses, {u"", u""}, fault));
            if (result < 0) {
                EXPECT_EQ(u"kept", ids.at(0));
            }
            if (fault == Fault::none) {
                EXPECT_EQ((std::vector<Long>{eMediaUSB, eMediaUSB}), media.elements());
                EXPECT_EQ((std::vector<Long>{eNokiaPhoneS60_5, eNokiaPhoneS60_5}), types.elements());
            }
            if (fault == Fault::library && result == 2) {
                EXPECT_EQ(2u, models.size());
            }
        });
}

constexpr Long allMedia = 30;  // in the library's numbering

TEST_F(PhoneFaults, MediaAreListedOrNone) {
    forEveryFault({.prepare = [] {},
                   .run = [](covNo2& phone) { return phone.GetConnections(); },
                   .done = allMedia,
                   .otherwise = {0, -1, -9}},
                  [](Long, Fault) {});
}

// A medium is switched off or stays on; nothing tells which, but the next list.
TEST_F(PhoneFaults, AMediumIsSwitchedOrStays) {
    forEveryFault(
        {.prepare = [] {},
         .run = [](covNo2& phone) { return phone.Connect(eMediaBT, -1, {}, {}, /*Dicsonnect=*/true); },
         .done = 0,
         .otherwise = {-1, -9}},
        [&](Long result, Fault fault) {
            covNo2 phone;
            const Long active = phone.GetConnections();
            EXPECT_TRUE(active == (allMedia & ~8) || (fault != Fault::none && active == allMedia))
                << active << " after " << result;
        });
}

// Bluetooth phones are found whole or not at all, but for texts that found no memory.
TEST_F(PhoneFaults, BluetoothPhonesAreFoundOrTheArraysStay) {
    TextArray models, ids, addresses;
    LongArray states;
    forEveryFault({.prepare =
                       [&] {
                           bluetoothPhone();
                           models = ids = addresses = TextArray({u"kept"});
                           states = LongArray({-5});
                       },
                   .run = [&](covNo2& phone) { return phone.MediaSearchBT(models, addresses, ids, states); },
                   .done = 0,
                   .otherwise = {-1, -2}},
                  [&](Long result, Fault fault) {
                      const bool inMemory = fault == Fault::allocation;
                      const TextView whole[] = {u"Nokia 6300", u"00:1A:2B:3C:4D:5E", u"7"};
                      const TextArray* const arrays[] = {&models, &addresses, &ids};
                      for (std::size_t i = 0; i < std::size(whole); ++i) {
                          const Text& entry = arrays[i]->at(0);
                          EXPECT_TRUE(result == 0 ? entry == whole[i] ||
                                                        (inMemory && (entry.empty() || entry == u"kept"))
                                                  : entry == u"kept")
                              << toUtf8(entry);
                      }
                      if (result != 0 || !inMemory) {
                          EXPECT_EQ(result == 0 ? 8 : -5, states.at(0));
                      }
                  });
}

// A phone is paired and trusted when the result says so.
TEST_F(PhoneFaults, APhoneIsPairedAndTrustedOrTheResultSaysNo) {
    Text address = u"00:1A:2B:3C:4D:5E!";
    const Text passkey = u"1234";
    forEveryFault({.prepare = [&] { bluetoothPhone(); },
                   .run = [&](covNo2& phone) { return phone.ChangeDeviceTrustedState(address, 3, passkey); },
                   .done = 0,
                   .otherwise = {-1, -2},
                   .statusToo = true},
                  [&](Long result, Fault) {
                      TextArray models, ids, addresses;
                      LongArray states;
                      ASSERT_EQ(0, covNo2().MediaSearchBT(models, addresses, ids, states));
                      if (result == 0) {
                          EXPECT_EQ(8 | 1 | 2, states.at(0) | 1);
                      }
                  });
}

// Where a routine may not throw, there is always a place to keep what went wrong.
TEST(FirstOnAThread, AFailureNeedsNoMemory) {
    std::thread([] {
        FailureNumber failure = noFailure;
        FailureNumber pending = noFailure;
        const auto routine = [&]() noexcept {
            const RoutineLog log(u"Routine");
            failure = attempt([] { throw std::bad_alloc(); });
            pending = pendingFailure().number;
        };
        failAllocation(/*n=*/0, /*onwards=*/true, routine);
        EXPECT_EQ(outOfMemory, failure);
        EXPECT_EQ(outOfMemory, pending);
    }).join();
}

}  // namespace
}  // namespace ovno2
