#include "host/contacts/contact_output.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

#include "host/contacts/field_table.h"
#include "support/values.h"

namespace ovno2::host {

namespace {

// A contact with values by field code, as the module hands it over.
Contact contactOf(std::initializer_list<std::pair<Long, const char16_t*>> values,
                  const char16_t* uid = u"0A0B") {
    std::vector<Text> entries(fieldRows().size());
    entries.insert(entries.begin(), u"");  // the table's heading
    for (const auto& [code, value] : values)
        entries[rowOf(code) + 1] = value;
    return {u"12 (SB)", join(entries, u'\t'), uid};
}

// ' stands for ", and ` for \".
std::string withQuotes(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == '\'' ? "\"" : c == '`' ? "\\\"" : std::string(1, c);
    return result;
}

TEST(FieldTable, GivesEveryCodeARowOfItsOwn) {
    // All codes that a value of a phone can have: of fields, of address parts, and of what has no field.
    const std::set<Long> codes = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 15, 16,
                                  17, 18, 19, 20, 21, 22, 23, 24, 25, 27, 28, 29, 30, 35, 43,
                                  44, 45, 46, 47, 48, 49, 50, 51, 60, 61, 67, 70, 80};
    std::set<Long> found;
    std::set<std::string> keys;
    std::set<Text> labels;
    for (const FieldRow& row : fieldRows()) {
        EXPECT_TRUE(found.insert(row.code).second) << row.code;
        EXPECT_TRUE(keys.insert(row.key).second) << row.key;
        EXPECT_TRUE(labels.insert(row.label).second) << row.key;
    }
    EXPECT_EQ(codes, found);

    const TextTable table = fieldDefinitions();
    ASSERT_EQ(fieldRows().size() + 1, table.rows());
    EXPECT_EQ(0, numericLong(table.at(0, 4)));
    for (std::size_t row = 1; row < table.rows(); ++row) {
        EXPECT_EQ(fieldRows()[row - 1].label, table.at(row, 0));
        EXPECT_EQ(fieldRows()[row - 1].code, numericLong(table.at(row, 4)));
    }
}

TEST(FieldTable, SplitsCollectedValuesAndDropsEmptyOnes) {
    EXPECT_EQ((std::vector<Text>{u"Familie", u"VIP"}), splitCollected(code::categories, u"Familie; VIP;"));
    EXPECT_EQ((std::vector<Text>{u"a;b", u"c\\d"}), splitCollected(code::other, u"\\na;b\\n\\nc\\d"));
    EXPECT_TRUE(splitCollected(code::other, u"").empty());
}

std::string contactsAsJson(std::span<const Contact> contacts, bool pictures) {
    std::string text;
    writeContactsAsJson(contacts, pictures, [&](std::string_view piece) { text += piece; });
    return text;
}

TEST(ContactsAsJson, NamesTheValuesInTheTablesOrderAndLeavesOutEmptyOnes) {
    const Contact contacts[] = {contactOf({{15, u"line\nhas\\ttab \"quoted\""},
                                           {1, u"Anna"},
                                           {18, u"Familie;VIP"},
                                           {70, u"\\n"},
                                           {80, u"\\tmp\\0A0B.jpg"}}),
                                contactOf({}, u"01")};
    const std::string expected =
        "[\n"
        "{'firstName':'Anna','categories':['Familie','VIP'],'note':'line\\nhas\\ttab `quoted`',"
        "'picture':'/tmp/0A0B.jpg','location':'12 (SB)','uid':'0A0B'},\n"
        "{'location':'12 (SB)','uid':'01'}\n"
        "]\n";
    EXPECT_EQ(withQuotes(expected), contactsAsJson(contacts, /*pictures=*/true));
    EXPECT_EQ(std::string::npos, contactsAsJson(contacts, /*pictures=*/false).find("picture"));
    EXPECT_EQ("[]\n", contactsAsJson({}, true));
}

TEST(ContactsAsJson, StaysValidWhateverThePhoneHolds) {
    const Contact contacts[] = {contactOf({{1, u"a\xD800z"}, {2, u"\xDC00"}, {4, u"\x01\x7F\u2028"}}),
                                {u"", u"\tonly\tfew", u"02"}};
    const nlohmann::json parsed = nlohmann::json::parse(contactsAsJson(contacts, true));
    EXPECT_EQ("a\uFFFDz", parsed[0]["firstName"]);
    EXPECT_EQ("\uFFFD", parsed[0]["lastName"]);
    EXPECT_EQ("\x01\x7F\u2028", parsed[0]["nickname"]);
    EXPECT_EQ("few", parsed[1]["lastName"]);
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
