#include "base/text_pairs.h"
#include "base/utf8.h"
#include "common/platform_test.h"

namespace ovno2::platform {
namespace {

constexpr TextView testKey = u"Software\\ovNo2 conformance";

class RegistrySeam : public PlatformTest {
  protected:
    RegistrySeam() { EXPECT_EQ(registryOk, registry().create(currentUser, testKey, key)); }
    ~RegistrySeam() override {
        for (const Text& name : written)
            key->remove(name);
    }

    Registry& registry() { return currentPlatform().registry(); }
    Long write(TextView name, const RegistryValue& value) {
        written.emplace_back(name);
        return key->write(name, value);
    }
    // What a fresh handle reads; type -1 when there is nothing.
    RegistryValue read(TextView name) {
        RegistryValue value;
        value.type = -1;
        std::unique_ptr<RegistryKey> opened;
        EXPECT_EQ(registryOk, registry().open(currentUser, testKey, /*view64=*/false, opened));
        if (opened) opened->read(name, value);
        return value;
    }

    std::unique_ptr<RegistryKey> key;
    std::vector<Text> written;
};

RegistryValue textValue(RegistryType type, Text text) {
    return {.type = static_cast<Long>(type), .text = std::move(text), .bytes = {}, .number = 0};
}

TEST_F(RegistrySeam, EveryKindOfValueComesBackAsItWasStoredUntilItIsReplacedOrRemoved) {
    const RegistryValue number = {.type = 4, .text = {}, .bytes = {}, .number = 0xFFFFFFC4};
    const std::pair<TextView, RegistryValue> values[] = {
        {u"text",
         textValue(RegistryType::text, Text(u"C:\\Telefon \"Zoë\"\\Łódź 電話 \xD83D\xDCF1") + u'\0')},
        {u"expandable", textValue(RegistryType::expandableText, Text(u"%TEMP%\\x\0", 9))},
        {u"list", textValue(RegistryType::textList, Text(u"one\0two\0\0", 9))},
        {u"lines", textValue(RegistryType::text, Text(u"a\r\nb\0", 5))},
        {u"number", number},
        {u"bytes", {.type = 3, .text = {}, .bytes = everyByte(), .number = 0}},
        {u"", textValue(RegistryType::text, Text(u"default\0", 8))},
        {u"a \"quoted\\name", textValue(RegistryType::text, Text(u"x\0", 2))}};
    for (const auto& [name, value] : values)
        EXPECT_EQ(0, write(name, value));
    for (const auto& [name, value] : values) {
        const RegistryValue found = read(upperCase(name));  // names match without regard to case
        EXPECT_EQ(value.type, found.type) << toUtf8(name);
        EXPECT_EQ(value.text, found.text) << toUtf8(name);
        EXPECT_EQ(value.bytes, found.bytes) << toUtf8(name);
        EXPECT_EQ(value.number, found.number) << toUtf8(name);
    }
    EXPECT_EQ(0, write(u"TEXT", number));
    EXPECT_EQ(4, read(u"text").type);
    EXPECT_EQ(0, key->remove(u"text"));
    EXPECT_EQ(-1, read(u"text").type);
    EXPECT_EQ(registryNotFound, key->remove(u"text"));
}

TEST_F(RegistrySeam, WhatIsMissingLeavesTheTargetAlone) {
    RegistryValue value;
    value.type = 42;
    EXPECT_EQ(registryNotFound, key->read(u"not there", value));
    EXPECT_EQ(42, value.type);
    std::unique_ptr<RegistryKey> opened;
    EXPECT_EQ(registryNotFound,
              registry().open(currentUser, Text(testKey) + u"\\not there", /*view64=*/false, opened));
    EXPECT_EQ(nullptr, opened);
    EXPECT_EQ(registryInvalidHandle, registry().open(17, testKey, /*view64=*/false, opened));
}

TEST_F(RegistrySeam, AKeyOpenedForReadingRefusesToWrite) {
    std::unique_ptr<RegistryKey> opened;
    ASSERT_EQ(0, registry().open(currentUser, testKey, /*view64=*/false, opened));
    EXPECT_EQ(registryAccessDenied, opened->write(u"v", textValue(RegistryType::text, u"a")));
    EXPECT_EQ(-1, read(u"v").type);
}

TEST_F(RegistrySeam, AProfileFileGivesTheFirstMatchTrimmedAndWithoutQuotes) {
    writeFile(
        "defaults.ini",
        "; phones\r\nType=outside\r\n[Nokia 6300]\r\nType =\tS40 \t\r\nquoted=\"  kept  \"\r\nsingle='x'\r\n"
        "half=\"x\r\n;Comment=no\r\nbare\r\nformula=a+b+c\r\numlaut=\xE4\xF6\r\nempty=\r\nType=second\r\n"
        "[other]\r\nType=S60\n[NOKIA 6300]\r\nlate=not seen\r\n[long]\r\nequal=a=b\r\nv=" +
            std::string(600, 'x') + "\r\nshort=" + std::string(511, 'y'));
    const auto value = [&](TextView section, TextView name, std::size_t capacity = 512) {
        return registry().profileString(section, name, pathOf("defaults.ini"), capacity);
    };
    for (const auto& [name, expected] :
         pairsOf(u"Type=S40|TYPE=S40|quoted=  kept  "
                 u"|single=x|half=\"x|formula=a+b+c|umlaut=äö|empty=|late=|none="))
        EXPECT_EQ(expected, value(u"nokia 6300", name)) << toUtf8(name);
    EXPECT_EQ(u"S60", value(u"other", u"Type"));
    EXPECT_EQ(u"", value(u"none", u"Type"));
    EXPECT_EQ(u"a=b", value(u"long", u"equal"));
    EXPECT_EQ(Text(511, u'x'), value(u"long", u"v"));
    EXPECT_EQ(Text(511, u'y'), value(u"long", u"short"));
    EXPECT_EQ(u"S4", value(u"Nokia 6300", u"Type", 3));
    EXPECT_EQ(u"", registry().profileString(u"a", u"b", pathOf("missing.ini"), 512));
}

}  // namespace
}  // namespace ovno2::platform
