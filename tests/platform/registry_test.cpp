#include <vector>

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

TEST_F(RegistrySeam, EveryKindOfValueComesBackAsItWasStored) {
    const Text list(u"one\0two\0\0", 9);
    const Text odd = u"C:\\Telefon \"Zoë\"\\Łódź 電話 \xD83D\xDCF1";
    EXPECT_EQ(0, write(u"text", textValue(RegistryType::text, odd + u'\0')));
    EXPECT_EQ(0, write(u"expandable", textValue(RegistryType::expandableText, Text(u"%TEMP%\\x\0", 9))));
    EXPECT_EQ(0, write(u"list", textValue(RegistryType::textList, list)));
    EXPECT_EQ(0, write(u"lines", textValue(RegistryType::text, Text(u"a\r\nb\0", 5))));
    EXPECT_EQ(0, write(u"number", {.type = 4, .text = {}, .bytes = {}, .number = 0xFFFFFFC4}));
    std::string bytes;
    for (int i = 0; i < 300; ++i)
        bytes.push_back(static_cast<char>(i));
    EXPECT_EQ(0, write(u"bytes", {.type = 3, .text = {}, .bytes = bytes, .number = 0}));
    EXPECT_EQ(0, write(u"", textValue(RegistryType::text, Text(u"default\0", 8))));
    EXPECT_EQ(0, write(u"a \"quoted\\name", textValue(RegistryType::text, Text(u"x\0", 2))));

    EXPECT_EQ(odd + u'\0', read(u"TEXT").text) << "names match without regard to case";
    EXPECT_EQ(2, read(u"expandable").type);
    EXPECT_EQ(Text(u"%TEMP%\\x\0", 9), read(u"expandable").text);
    EXPECT_EQ(7, read(u"list").type);
    EXPECT_EQ(list, read(u"list").text);
    EXPECT_EQ(Text(u"a\r\nb\0", 5), read(u"lines").text);
    EXPECT_EQ(4, read(u"number").type);
    EXPECT_EQ(0xFFFFFFC4u, read(u"number").number);
    EXPECT_EQ(3, read(u"bytes").type);
    EXPECT_EQ(bytes, read(u"bytes").bytes);
    EXPECT_EQ(Text(u"default\0", 8), read(u"").text);
    EXPECT_EQ(Text(u"x\0", 2), read(u"a \"quoted\\name").text);
}

TEST_F(RegistrySeam, ValuesAreReplacedAndRemoved) {
    EXPECT_EQ(0, write(u"v", textValue(RegistryType::text, Text(u"a\0", 2))));
    EXPECT_EQ(0, write(u"V", {.type = 4, .text = {}, .bytes = {}, .number = 5}));
    EXPECT_EQ(4, read(u"v").type);
    EXPECT_EQ(0, key->remove(u"v"));
    EXPECT_EQ(-1, read(u"v").type);
    EXPECT_EQ(registryNotFound, key->remove(u"v"));
}

TEST_F(RegistrySeam, WhatIsMissingLeavesTheTargetAlone) {
    RegistryValue value;
    value.type = 42;
    EXPECT_EQ(registryNotFound, key->read(u"not there", value));
    EXPECT_EQ(42, value.type);
    std::unique_ptr<RegistryKey> opened;
    EXPECT_EQ(registryNotFound, registry().open(currentUser, u"Software\\ovNo2 conformance\\not there",
                                                /*view64=*/false, opened));
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
    std::string file =
        "; phones\r\n"
        "Type=outside\r\n"
        "[Nokia 6300]\r\n"
        "Type = S40 \r\n"
        "quoted=\"  kept  \"\r\n"
        "single='x'\r\n"
        "half=\"x\r\n"
        ";Comment=no\r\n"
        "bare\r\n"
        "formula=a=b=c\r\n"
        "umlaut=\xE4\xF6\r\n"
        "empty=\r\n"
        "Type=second\r\n"
        "[other]\r\n"
        "Type=S60\n"
        "[NOKIA 6300]\r\n"
        "late=not seen\r\n"
        "[long]\r\n"
        "v=";
    file.append(600, 'x').append("\r\nshort=").append(511, 'y');
    writeFile("defaults.ini", file);
    const auto value = [&](TextView section, TextView name, std::size_t capacity = 512) {
        return registry().profileString(section, name, pathOf("defaults.ini"), capacity);
    };
    struct Row {
        TextView section, name, expected;
    };
    const Row rows[] = {
        {u"Nokia 6300", u"Type", u"S40"},      {u"nokia 6300", u"TYPE", u"S40"},
        {u"other", u"Type", u"S60"},           {u"Nokia 6300", u"quoted", u"  kept  "},
        {u"Nokia 6300", u"single", u"x"},      {u"Nokia 6300", u"half", u"\"x"},
        {u"Nokia 6300", u"formula", u"a=b=c"}, {u"Nokia 6300", u"umlaut", u"äö"},
        {u"Nokia 6300", u"empty", u""},        {u"Nokia 6300", u"late", u""},
        {u"Nokia 6300", u"none", u""},         {u"none", u"Type", u""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Text(row.expected), value(row.section, row.name))
            << toUtf8(row.section) << "/" << toUtf8(row.name);
    EXPECT_EQ(Text(511, u'x'), value(u"long", u"v"));
    EXPECT_EQ(Text(511, u'y'), value(u"long", u"short"));
    EXPECT_EQ(u"S4", value(u"Nokia 6300", u"Type", 3));
    EXPECT_EQ(u"", registry().profileString(u"a", u"b", pathOf("missing.ini"), 512));
}

}  // namespace
}  // namespace ovno2::platform
