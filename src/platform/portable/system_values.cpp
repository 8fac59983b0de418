#include "platform/portable/system_values.h"

#include "base/values.h"
#include "platform/portable/system_locale.h"
#include "platform/portable/time_zone.h"

namespace ovno2::platform::portable {

namespace {

constexpr TextView internationalKey = u"HKEY_CURRENT_USER\\Control Panel\\International";

RegistryValue textValue(Text text) {
    text.push_back(u'\0');
    return {.type = static_cast<Long>(RegistryType::text), .text = std::move(text), .bytes = {}, .number = 0};
}

RegistryValue numberValue(Long number) {
    return {.type = static_cast<Long>(RegistryType::number),
            .text = {},
            .bytes = {},
            .number = static_cast<std::uint32_t>(number)};
}

RegistryValue transitionValue(const SystemTime& rule) {
    return {.type = static_cast<Long>(RegistryType::binary),
            .text = {},
            .bytes = bytesOfTransition(rule),
            .number = 0};
}

std::optional<RegistryValue> internationalValue(TextView name) {
    static constexpr struct {
        TextView name;
        LocaleItem item;
    } values[] = {{u"sShortDate", LocaleItem::shortDate},   {u"sDate", LocaleItem::dateSeparator},
                  {u"sTimeFormat", LocaleItem::timeFormat}, {u"sTime", LocaleItem::timeSeparator},
                  {u"s1159", LocaleItem::morning},          {u"s2359", LocaleItem::afternoon}};
    for (const auto& value : values)
        if (equalsIgnoringCase(value.name, name)) return textValue(systemLocaleItem(value.item));
    return {};
}

std::optional<RegistryValue> timeZoneValue(TextView name) {
    const auto is = [&](TextView other) { return equalsIgnoringCase(name, other); };
    if (is(u"ActiveTimeBias")) return numberValue(systemActiveBias());
    const TimeZoneInformation zone = systemTimeZone();
    if (is(u"Bias")) return numberValue(zone.bias);
    if (is(u"StandardBias")) return numberValue(zone.standardBias);
    if (is(u"DaylightBias")) return numberValue(zone.daylightBias);
    if (is(u"StandardName")) return textValue(zone.standardName);
    if (is(u"DaylightName")) return textValue(zone.daylightName);
    if (is(u"StandardStart")) return transitionValue(zone.standardDate);
    if (is(u"DaylightStart")) return transitionValue(zone.daylightDate);
    return {};
}

}  // namespace

bool systemHasRegistryKey(TextView key) {
    return equalsIgnoringCase(key, internationalKey) || equalsIgnoringCase(key, timeZoneKey);
}

std::optional<RegistryValue> systemRegistryValue(TextView key, TextView name) {
    if (equalsIgnoringCase(key, internationalKey)) return internationalValue(name);
    if (equalsIgnoringCase(key, timeZoneKey)) return timeZoneValue(name);
    return {};
}

}  // namespace ovno2::platform::portable
