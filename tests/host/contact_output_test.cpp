#include "host/contacts/contact_output.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <set>

#include "host/contacts/field_table.h"

namespace ovno2::host {

namespace {

// A contact with values by field code, as the module hands it over.
Contact contactOf(std::initializer_list<std::pair<Long, const char16_t*>> values) {
    std::vector<Text> entries(fieldRows().size());
    entries.insert(entries.begin(), u"");  // the table's heading
    for (const auto& [code, value] : values)
        entries[rowOf(code) + 1] = value;
    return {u"12 (SB)", join(entries, u'\t'), u"0A0B"};
}

std::string asJson(std::span<const Contact> contacts, bool pictures) {
    std::string text;
    writeContactsAsJson(contacts, pictures, [&](std::string_view piece) { text += piece; });
    return text;
}

TEST(FieldTable, GivesEveryCodeARowOfItsOwn) {
    // All codes that a value of a phone can have: of fields, of address parts, and of what has no field.
    const std::set<Long> codes = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 15, 16,
                                  17, 18, 19, 20, 21, 22, 23, 24, 25, 27, 28, 29, 30, 35, 43,
                                  44, 45, 46, 47, 48, 49, 50, 51, 60, 61, 67, 70, 80};
    const TextTable table = fieldDefinitions();
    ASSERT_EQ(fieldRows().size() + 1, table.rows());
    EXPECT_EQ(0, numericLong(table.at(0, 4)));
    std::set<Long> found;
    std::set<std::string_view> keys;
    std::set<Text> labels;
    for (std::size_t i = 0; i < fieldRows().size(); ++i) {
        const FieldRow& row = fieldRows()[i];
        found.insert(row.code);
        EXPECT_TRUE(keys.insert(row.key).second) << row.key;
        EXPECT_TRUE(labels.insert(row.label).second) << row.key;
        EXPECT_EQ(row.label, table.at(i + 1, 0));
        EXPECT_EQ(row.code, numericLong(table.at(i + 1, 4)));
    }
    EXPECT_EQ(codes, found);
    EXPECT_EQ(codes.size(), fieldRows().size());
}

TEST(ContactsAsJson, NamesTheValuesInTheTablesOrderAndLeavesOutEmptyOnes) {
    const Contact contacts[] = {contactOf({{15, u"line\nhas\\ttab \"quoted\" \\\\"},
                                           {1, u"Anna"},
                                           {18, u"Familie; VIP ;"},
                                           {70, u"\\na;b\\n\\nc\\d"},
                                           {80, u"\\tmp\\0A0B.jpg"}}),
                                contactOf({{70, u"\\n"}})};
    const std::string rest = R"json("location":"12 (SB)","uid":"0A0B"})json";
    const std::string anna =
        R"({"firstName":"Anna","categories":["Familie","VIP"],"note":"line\nhas\ttab \"quoted\" \\\\",)"
        R"("other":["a;b","c\\d"],)";
    const std::string end = rest + ",\n{" + rest + "\n]\n";
    EXPECT_EQ("[\n" + anna + R"("picture":"/tmp/0A0B.jpg",)" + end, asJson(contacts, /*pictures=*/true));
    EXPECT_EQ("[\n" + anna + end, asJson(contacts, /*pictures=*/false));
    EXPECT_EQ("[]\n", asJson({}, true));
}

// Every character at every place beside ordinary ones, which are copied several at a time.
TEST(ContactsAsJson, StaysValidWhateverThePhoneHolds) {
    const char16_t* const specials[] = {u"\x01",   u"\x1F",   u"\"",        u"\\",     u"\x7F",
                                        u"\x80",   u"\x7FF",  u"\x800",     u"\u2028", u"\xFFFF",
                                        u"\xD800", u"\xDC00", u"\U0001F600"};
    const Text longUid(300, u'0');  // more than one piece of output
    std::vector<Contact> contacts;
    for (const TextView special : specials)
        for (std::size_t before = 0; before < 18; ++before)
            contacts.push_back({Text(before, u'a').append(special).append(17 - before, u'z'), u"", longUid});
    contacts.push_back({u"", u"heading\tonly\tfew\t", u"02"});
    const std::string text = asJson(contacts, true);
    rapidjson::Document parsed;
    ASSERT_FALSE(parsed.Parse<rapidjson::kParseValidateEncodingFlag>(text.c_str()).HasParseError());
    for (rapidjson::SizeType i = 0; i + 1 < contacts.size(); ++i)
        EXPECT_EQ(toUtf8(contacts[i].location), parsed[i]["location"].GetString()) << i;
    EXPECT_TRUE(text.ends_with(
        "\n{\"firstName\":\"only\",\"lastName\":\"few\",\"location\":\"\",\"uid\":\"02\"}\n]\n"));
}

TEST(ContactsAsTable, ShowsANameAndTheFieldsThatAnyContactHas) {
    const Contact contacts[] = {
        contactOf({{1, u"Anna"}, {2, u"Müller"}, {3, u"Müller, Anna"}, {23, u"0171"}}),
        contactOf({{3, u"#1 Formal"}, {18, u"a;b"}}),
        contactOf({{16, u"Firma"}, {15, u"two\nlines"}}),
        contactOf({{2, u"Last"}}),
    };
    EXPECT_EQ(
        "Name         Mobile  Company  Categories  Formal name   Note\n"
        "Anna Müller  0171                         Müller, Anna\n"
        "#1 Formal                     a; b\n"
        "Firma                Firma                              two lines\n"
        "Last\n",
        contactsAsTable(contacts, false).render(0));
}

}  // namespace

}  // namespace ovno2::host
