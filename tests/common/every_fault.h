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
        const std::vector<std::string> made = runClean(scenario, check, "before all faults");
        for (const bool onwards : {false, true}) {
            const char* const how = onwards ? " and from then on" : "";
            const auto sweepCalls = [&](const std::string& what, auto&& plan) {
                bool met = true;
                for (std::uint32_t n = 1; met; ++n) {
                    startOver();
                    plan(n);
                    const std::string fault = what + std::to_string(n) + how;
                    met = runFaulted(scenario, check, fault) >= n;
                    runClean(scenario, check, "after " + fault);
                }
            };
            // The phone is out of reach; the session is gone for good.
            for (const library::Status status : {library::connectionLost, library::deviceListStale})
                sweepCalls("status " + std::to_string(status) + " at call ",
                           [&](std::uint32_t n) { this->simulator.fail("*", status, n, onwards); });
            sweepCalls("no memory in the library at call ",
                       [&](std::uint32_t n) { this->simulator.failAllocation("*", n, onwards); });
            bool met = true;
            for (long n = 0; met; ++n) {
                startOver();
                const std::string fault = "no memory for allocation " + std::to_string(n) + how;
                scenario.prepare();
                Long result = 0;
                met = failAllocation(n, onwards, [&] { result = runOnce(scenario); });
                judge(scenario, check, result, Fault::allocation, fault);
                runClean(scenario, check, "after " + fault);
            }
        }
        for (const std::string& name : std::set<std::string>(made.begin(), made.end())) {
            startOver();
            this->libraries().missingFunctions = {name};
            runFaulted(scenario, check, name + " missing", givesBack(name));
            this->libraries().missingFunctions.clear();
            runClean(scenario, check, "after " + name + " was missing", givesBack(name));
        }
        for (const char16_t* const file : {u"ConnAPI", u"DAAPI"}) {
            startOver();
            this->libraries().missingLibraries = {file};
            runFaulted(scenario, check, toUtf8(file) + " missing");
            this->libraries().missingLibraries.clear();
            runClean(scenario, check, "after " + toUtf8(file) + " was missing");
        }
    }

  private:
    // A fresh thread and a fresh world.
    void startOver() {
        resetThreadState();
        usePlatform(this->machine);
        clearPendingFailure();  // there is a place to note failures in
        this->simulator.reset();
        this->simulator.journal(true);
        attachPhones();
    }

    static Long runOnce(const Scenario& scenario) {
        covNo2 phone;
        return scenario.run(phone);
    }

    // Runs under the fault that is planned and takes it back. The number of calls made.
    std::size_t runFaulted(const Scenario& scenario, const Check& check, const std::string& fault,
                           bool nothingComesBack = false) {
        scenario.prepare();
        const Long result = runOnce(scenario);
        const std::size_t made = this->calls().size();
        judge(scenario, check, result, Fault::library, fault, nothingComesBack);
        return made;
    }

    void judge(const Scenario& scenario, const Check& check, Long result, Fault fault,
               const std::string& what, bool nothingComesBack = false) {
        SCOPED_TRACE(what);
        this->simulator.clearPlan();
        const bool isStatus = scenario.statusToo && static_cast<std::uint32_t>(result) >> 24 == 0x80;
        EXPECT_TRUE(result == scenario.done || scenario.otherwise.count(result) != 0 || isStatus) << result;
        check(result, fault);
        EXPECT_TRUE(nothingComesBack || this->simulator.leaks().empty()) << this->simulator.leaks();
    }

    std::vector<std::string> runClean(const Scenario& scenario, const Check& check, const std::string& when,
                                      bool nothingComesBack = false) {
        SCOPED_TRACE(when);
        this->calls();
        scenario.prepare();
        EXPECT_EQ(scenario.done, runOnce(scenario));
        check(scenario.done, Fault::none);
        EXPECT_TRUE(nothingComesBack || this->simulator.leaks().empty()) << this->simulator.leaks();
        return this->calls();
    }

    static bool givesBack(const std::string& name) {
        return name.find("Free") != std::string::npos || name.find("Close") != std::string::npos ||
               name.find("End") != std::string::npos || name.find("Terminate") != std::string::npos ||
               name.find("Uninitialize") != std::string::npos;
    }
};

}  // namespace ovno2
