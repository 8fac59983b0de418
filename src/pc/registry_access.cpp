#include "pc/registry_access.h"

#include <cmath>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "pc/ansi.h"

namespace ovno2::Registry {

namespace {

using platform::RegistryKey;
using platform::RegistryType;
using platform::RegistryValue;

constexpr std::size_t profileBufferSize = 512;  // characters, the terminating NUL included

// Whether a reading with this result has found a key that still exists.
bool keyIsThere(Long result) {
    return result == platform::registryOk || result == platform::registryNotFound || result == unhandledType;
}

}  // namespace

Long RegQueryValueText(RegistryKey& key, TextView valueName, Text& text) {
    text.clear();
    RegistryValue value;
    if (const Long result = key.read(valueName, value)) return result;
    switch (static_cast<RegistryType>(value.type)) {
        case RegistryType::text:
        case RegistryType::expandableText:
        case RegistryType::textList:
            text = std::move(value.text);
            return platform::registryOk;
        case RegistryType::binary:
            text = fromAnsi(value.bytes);
            return platform::registryOk;
        case RegistryType::number:
            text = decimalText(static_cast<Long>(value.number));
            return platform::registryOk;
    }
    return unhandledType;
}

Long RegSetStringValue(RegistryKey& key, TextView valueName, TextView text, Long type) {
    if (text.empty()) return key.remove(valueName);
    RegistryValue value;
    value.type = type;
    value.text = text;
    return key.write(valueName, value);
}

Long RegSetLongValue(RegistryKey& key, TextView valueName, Long number, bool keepZero) {
    if (number == 0 && !keepZero) return key.remove(valueName);
    RegistryValue value;
    value.type = static_cast<Long>(RegistryType::number);
    value.number = static_cast<std::uint32_t>(number);
    Long result = key.write(valueName, value);
    if (result != platform::registryOk) {
        key.remove(valueName);
        result = key.write(valueName, value);
    }
    return result;
}

Text WatchedValue::text() noexcept {
    Text text;
    attempt([&] {
        const auto read = [&] {
            const Long result = RegQueryValueText(*key_, valueName_, text);
            if (text.ends_with(u'\0')) text.pop_back();
            return result;
        };
        if (key_ && keyIsThere(read())) return;
        key_.reset();
        const bool view64 = (flags_ & view64Bit) != 0;
        if (currentPlatform().registry().open(hive_, keyPath_, view64, key_) == platform::registryOk) read();
    });
    return text;
}

Text GetRegValue(Long hive, TextView keyPath, TextView valueName, Long flags) noexcept {
    return WatchedValue(hive, keyPath, valueName, flags).text();
}

bool SetRegValue(Long hive, Text& keyPath, TextView valueName, TextView value, Long type,
                 bool keepZero) noexcept {
    if (keyPath.starts_with(u'\\')) keyPath.erase(0, 1);
    return SetRegValue(hive, TextView(keyPath), valueName, value, type, keepZero);
}

bool SetRegValue(Long hive, TextView keyPath, TextView valueName, TextView value, Long type,
                 bool keepZero) noexcept {
    if (keyPath.starts_with(u'\\')) keyPath.remove_prefix(1);
    if (keyPath.empty()) return false;
    attempt([&] {
        std::unique_ptr<RegistryKey> key;
        if (currentPlatform().registry().create(hive, keyPath, key) != platform::registryOk) return;
        switch (static_cast<RegistryType>(type)) {
            case RegistryType::text:
            case RegistryType::expandableText:
            case RegistryType::textList:
                RegSetStringValue(*key, valueName, value, type);
                break;
            case RegistryType::number:
                RegSetLongValue(*key, valueName, roundHalfToEven(std::floor(numericValue(value))), keepZero);
                break;
            default:
                break;
        }
    });
    if (pendingFailure().number != noFailure)
        DebugLine(u"RegEdit error: ", hex{hive}, u": ", keyPath, u" ", valueName);
    return GetRegValue(hive, keyPath, valueName) == value;
}

Text GetIniValue(TextView section, TextView key, TextView path) noexcept {
    Text value;
    attempt(
        [&] { value = currentPlatform().registry().profileString(section, key, path, profileBufferSize); });
    return value;
}

}  // namespace ovno2::Registry
