#include "platform/portable/clock.h"

#include <thread>

#include "platform/portable/registry.h"
#include "platform/portable/time_zone.h"

namespace ovno2::platform::portable {

namespace {

using std::chrono::milliseconds;

constexpr std::uint64_t fileTimeUnitsASecond = 10'000'000;
constexpr std::int64_t unixEpochInFileTime = 11'644'473'600;  // seconds from 1601 to 1970

template <class Time>
SystemTime fieldsOf(Time moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(std::chrono::floor<milliseconds>(moment - day));
    const auto narrow = [](auto number) { return static_cast<std::uint16_t>(number); };
    return {.year = narrow(static_cast<int>(date.year())),
            .month = narrow(static_cast<unsigned>(date.month())),
            .dayOfWeek = narrow(std::chrono::weekday(day).c_encoding()),
            .day = narrow(static_cast<unsigned>(date.day())),
            .hour = narrow(time.hours().count()),
            .minute = narrow(time.minutes().count()),
            .second = narrow(time.seconds().count()),
            .millisecond = narrow(time.subseconds().count())};
}

}  // namespace

PortableClock::Moment PortableClock::now() const {
    {
        const std::lock_guard guard(mutex_);
        if (stoppedAt_) return *stoppedAt_;
    }
    const auto utc = std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
    const auto registry = static_cast<PortableRegistry&>(machine_.registry()).current();
    const std::optional<Long> bias = activeBiasIn(*registry);
    return Moment(utc.time_since_epoch()) - std::chrono::minutes(bias ? *bias : systemActiveBias());
}

SystemTime PortableClock::localTime() {
    return fieldsOf(now());
}

Single PortableClock::secondsSinceMidnight() {
    const Moment moment = now();
    const milliseconds time = moment - std::chrono::floor<std::chrono::days>(moment);
    return static_cast<Single>(static_cast<double>(time.count()) / 1000);
}

void PortableClock::sleep(std::uint32_t time) {
    {
        const std::lock_guard guard(mutex_);
        if (stoppedAt_) {
            sleeps_.push_back(time);
            *stoppedAt_ += milliseconds(time);
            return;
        }
    }
    std::this_thread::sleep_for(milliseconds(time));
}

bool PortableClock::fileTimeToSystemTime(std::uint64_t fileTime, SystemTime& time) {
    if (fileTime > static_cast<std::uint64_t>(INT64_MAX)) return false;
    const auto seconds = static_cast<std::int64_t>(fileTime / fileTimeUnitsASecond) - unixEpochInFileTime;
    const milliseconds fraction(fileTime % fileTimeUnitsASecond / (fileTimeUnitsASecond / 1000));
    time = fieldsOf(std::chrono::sys_time<milliseconds>(std::chrono::seconds(seconds) + fraction));
    return true;
}

void PortableClock::set(const SystemTime& local) {
    const std::chrono::local_days day(std::chrono::year(local.year) / local.month / local.day);
    const std::lock_guard guard(mutex_);
    stoppedAt_ = day + std::chrono::hours(local.hour) + std::chrono::minutes(local.minute) +
                 std::chrono::seconds(local.second) + milliseconds(local.millisecond);
    sleeps_.clear();
}

void PortableClock::advance(milliseconds time) {
    const std::lock_guard guard(mutex_);
    if (stoppedAt_) *stoppedAt_ += time;
}

void PortableClock::run() {
    const std::lock_guard guard(mutex_);
    stoppedAt_.reset();
    sleeps_.clear();
}

std::vector<std::uint32_t> PortableClock::sleeps() const {
    const std::lock_guard guard(mutex_);
    return sleeps_;
}

std::unique_ptr<Clock> makeClock(Machine& machine) {
    return std::make_unique<PortableClock>(machine);
}

}  // namespace ovno2::platform::portable
