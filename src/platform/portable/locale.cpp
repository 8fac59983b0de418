// The locale natively: the registry's values first; what it does not hold, the system's.
#include <mutex>

#include "platform/portable/machine.h"
#include "platform/portable/registry.h"
#include "platform/portable/system_locale.h"
#include "platform/portable/time_zone.h"

namespace ovno2::platform::portable {

namespace {

// The value under the user's International key that holds the item, and what a machine without the system's
// locale says; null where the registry has none.
struct ItemSource {
    const char16_t* registryName = nullptr;
    const char16_t* otherwise = u"";
};

ItemSource sourceOf(LocaleItem item) {
    switch (item) {
        case LocaleItem::shortDate:
            return {.registryName = u"sShortDate", .otherwise = u"yyyy-MM-dd"};
        case LocaleItem::dateSeparator:
            return {.registryName = u"sDate", .otherwise = u"-"};
        case LocaleItem::timeFormat:
            return {.registryName = u"sTimeFormat", .otherwise = u"HH:mm:ss"};
        case LocaleItem::timeSeparator:
            return {.registryName = u"sTime", .otherwise = u":"};
        case LocaleItem::morning:
            return {.registryName = u"s1159"};
        case LocaleItem::afternoon:
            return {.registryName = u"s2359"};
        default:
            return {};
    }
}

class PortableLocale : public Locale {
  public:
    explicit PortableLocale(Machine& machine) : machine_(machine) {}

    Text item(LocaleItem item) override {
        const ItemSource source = sourceOf(item);
        if (source.registryName) {
            Text text = registryText(source.registryName);
            if (!text.empty()) return text;
        }
        return machine_.answersFromSystem() ? systemLocaleItem(item) : Text(source.otherwise);
    }

    bool timeZone(TimeZoneInformation& zone) override {
        if (const std::optional<TimeZoneInformation> stated = registryTimeZone()) {
            zone = *stated;
            return true;
        }
        if (!machine_.answersFromSystem()) return false;
        zone = systemTimeZone();
        return true;
    }

  private:
    Text registryText(TextView name) {
        std::unique_ptr<RegistryKey> key;
        RegistryValue value;
        if (machine_.registry().open(currentUser, u"Control Panel\\International", /*view64=*/false, key) !=
                registryOk ||
            key->read(name, value) != registryOk)
            return {};
        return value.text.substr(0, value.text.find(u'\0'));
    }

    // Asked for with every date; read again only when the registry has changed.
    std::optional<TimeZoneInformation> registryTimeZone() {
        std::shared_ptr<const RegistryFile> file =
            static_cast<PortableRegistry&>(machine_.registry()).current();
        const std::lock_guard guard(mutex_);
        if (file != zoneFile_) {
            zone_ = timeZoneIn(*file);
            zoneFile_ = std::move(file);
        }
        return zone_;
    }

    Machine& machine_;
    std::mutex mutex_;  // guards what follows
    std::optional<TimeZoneInformation> zone_;
    std::shared_ptr<const RegistryFile> zoneFile_;  // that `zone_` was read from
};

}  // namespace

std::unique_ptr<Locale> makeLocale(Machine& machine) {
    return std::make_unique<PortableLocale>(machine);
}

}  // namespace ovno2::platform::portable
