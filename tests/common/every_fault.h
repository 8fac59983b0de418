// Fails everything that one operation of the public class stands on, one thing after the other: each call of
// the library with a status and without memory, each allocation of the module - once, and from then on - each
// function and each file of the library missing.
//
// An operation is a `Scenario` and a check of its outputs; tests/faults holds one for each. After every fault
// the result is a documented one, the outputs are as the check wants them, nothing of the library's stays
// behind, and the next operation finds everything in order.
#pragma once

#include <functional>
#include <set>

#include "base/utf8.h"
#include "common/allocation_faults.h"
#include "common/phone_test.h"
#include "driver/cov_no2.h"
#include "library/library_records.h"

namespace ovno2 {

struct Scenario {
    // Everything as before the operation: what the phone holds and what the host passes.
    std::function<void()> prepare;
    // The operation. Everything in here may fail, so what it needs stands ready.
    std::function<Long(covNo2&)> run;
    Long done = 0;             // the result when nothing fails
    std::set<Long> otherwise;  // the results that faults may have
    bool statusToo = false;    // a status of the library is one of them
    bool leavesOpen = false;   // with a fault a connection may outlive the library's session
};

enum class Fault : std::uint8_t { none, library, allocation };

// Looks whether the outputs are as they may be with that result. Without a fault they must be whole.
using Check = std::function<void(Long result, Fault fault)>;

// A fixture on phones that can sweep.
template <class PhoneFixture>
class EveryFault : public PhoneFixture {
  protected:
    EveryFault() {
        this->clock().set({.year = 2008, .month = 7, .day = 1, .hour = 12});
        this->processes().onStartCaptured = [](TextView) { return nullptr; };
    }

    // Puts the phones into an empty world.
    virtual void attachPhones() = 0;

    void forEveryFault(const Scenario& scenario, const Check& check) {
        startOver();
        const std::vector<std::string> made = runClean(scenario, check, {"no fault"});
        for (const bool onwards : {false, true}) {
            const char* const how = onwards ? " and from then on" : "";
            const auto sweepCalls = [&](const std::string& what, bool endsSessions, auto&& plan) {
                for (std::uint32_t n = 1;; ++n) {
                    startOver();
                    plan(n);
                    if (runBoth(scenario, check, {what + std::to_string(n) + how, endsSessions}) < n) return;
                }
            };
            sweepCalls("phone lost at call ", /*endsSessions=*/false, [&](std::uint32_t n) {
                this->simulator.fail("*", library::connectionLost, n, onwards);
            });
            sweepCalls("session gone at call ", /*endsSessions=*/true, [&](std::uint32_t n) {
                this->simulator.fail("*", library::deviceListStale, n, onwards);
            });
            sweepCalls("no memory in the library at call ", /*endsSessions=*/false,
                       [&](std::uint32_t n) { this->simulator.failAllocation("*", n, onwards); });
            bool met = true;
            for (long n = 0; met; ++n) {
                startOver();
                const Planned planned{"no memory for allocation " + std::to_string(n) + how};
                scenario.prepare();
                Long result = 0;
                met = failAllocation(n, onwards, [&] { result = runOnce(scenario); });
                judge(scenario, check, planned, result, Fault::allocation);
                runClean(scenario, check, planned);
            }
        }
        for (const std::string& name : std::set<std::string>(made.begin(), made.end())) {
            startOver();
            this->libraries().missingFunctions = {name};
            runBoth(scenario, check, {name + " missing", givesBack(name), givesBack(name)});
        }
        for (const char16_t* const file : {u"ConnAPI", u"DAAPI"}) {
            startOver();
            this->libraries().missingLibraries = {file};
            runBoth(scenario, check, {toUtf8(file) + " missing"});
        }
    }

  private:
    struct Planned {
        std::string what;
        bool endsSessions = false;    // what is open in a session ends with it
        bool keepsHandedOut = false;  // the module cannot give back
    };

    // A fresh thread and a fresh world.
    void startOver() {
        resetThreadState();
        usePlatform(this->machine);
        clearPendingFailure();  // there is a place to note failures in
        this->simulator.reset();
        this->simulator.journal(true);
        attachPhones();
    }

    // Runs with the fault, takes it back and runs without. The number of calls that could meet the fault.
    std::size_t runBoth(const Scenario& scenario, const Check& check, const Planned& planned) {
        scenario.prepare();
        const Long result = runOnce(scenario);
        const std::size_t made = this->calls().size();
        this->simulator.clearPlan();
        this->libraries().missingFunctions.clear();
        this->libraries().missingLibraries.clear();
        judge(scenario, check, planned, result, planned.keepsHandedOut ? Fault::none : Fault::library);
        runClean(scenario, check, planned);
        return made;
    }

    // The calls made.
    std::vector<std::string> runClean(const Scenario& scenario, const Check& check, const Planned& planned) {
        this->calls();
        scenario.prepare();
        const Long result = runOnce(scenario);
        SCOPED_TRACE("the clean run after");
        judge(scenario, check, planned, result, Fault::none);
        return this->calls();
    }

    static Long runOnce(const Scenario& scenario) {
        covNo2 phone;
        return scenario.run(phone);
    }

    void judge(const Scenario& scenario, const Check& check, const Planned& planned, Long result,
               Fault fault) {
        SCOPED_TRACE(planned.what);
        const bool isStatus = scenario.statusToo && static_cast<std::uint32_t>(result) >> 24 == 0x80;
        EXPECT_TRUE(result == scenario.done ||
                    (fault != Fault::none && (isStatus || scenario.otherwise.count(result) != 0)))
            << result;
        check(result, fault);
        if (!planned.keepsHandedOut) {
            EXPECT_EQ("", this->simulator.leaks());
            auto started = this->simulator.balance()["started"];
            started.erase("content");  // stays when no phone is found; the next operation starts it afresh
            EXPECT_TRUE(started.empty()) << started;
        }
        if (!planned.endsSessions && !scenario.leavesOpen) {
            EXPECT_EQ(0, this->simulator.balance()["closedInside"]);
        }
    }

    static bool givesBack(const std::string& name) {
        for (const char* const part : {"Free", "Close", "End", "Terminate", "Uninitialize"})
            if (name.find(part) != std::string::npos) return true;
        return false;
    }
};

}  // namespace ovno2
