#include "host/contacts/contact_output.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <rapidjson/document.h>
#include <regex>
#include <set>

#include "host/contacts/contact_search.h"
#include "host/contacts/contact_values.h"
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

std::string asJson(std::span<const Contact> contacts, bool notes = false) {
    std::string text;
    writeContactsAsJson(contacts, notes, [&](std::string_view piece) { text += piece; });
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

// The page on contacts and the table say the same.
TEST(FieldTable, IsTheOneThatThePageShows) {
    std::ifstream page(CONTACTS_PAGE);
    std::vector<std::string> shown, known;
    const std::regex line(R"(\| (\d+ \| `\w+` \| [^|]+) \|.*)");
    std::smatch parts;
    for (std::string text; std::getline(page, text);)
        if (std::regex_match(text, parts, line)) shown.push_back(parts[1]);
    for (const FieldRow& row : fieldRows())
        known.push_back(std::to_string(row.code) + " | `" + std::string(row.key) + "` | " +
                        toUtf8(row.label));
    std::ranges::sort(shown);
    std::ranges::sort(known);
    EXPECT_EQ(known, shown);
}

TEST(ContactsAsJson, NamesTheValuesInTheTablesOrderAndLeavesOutWhatIsAbsent) {
    Contact first = contactOf({{15, u"a;b\nhas\\ttab \"quoted\" \\\\"},
                               {1, u"Anna"},
                               {23, u"0171;0172"},
                               {16, u"Sand; Kies;Beton;\nBau"},
                               {18, u"Familie; VIP ;"},
                               {70, u"\\na;b\\n\\nc\\d"},
                               {80, u"\\tmp\\0A0B.jpg"}});
    first.pictures = {u"/tmp/0A0B.jpg"};
    const Contact contacts[] = {first, {u"", u"", u"0C"}};
    const std::string anna =
        R"({"firstName":"Anna","mobile":["0171","0172"],"company":["Sand; Kies","Beton;\nBau"],)"
        R"("categories":["Familie","VIP"],"note":"a;b\nhas\ttab \"quoted\" \\\\","other":["a;b","c\\d"],)"
        R"json("picture":["/tmp/0A0B.jpg"],"location":"12 (SB)","uid":"0A0B")json";
    const std::string end = "},\n{\"uid\":\"0C\"}\n]\n";
    EXPECT_EQ("[\n" + anna + end, asJson(contacts));
    const std::string notes = asJson(contacts, /*notes=*/true);
    EXPECT_NE(std::string::npos, notes.find(R"("notes":[{"fields":["mobile"],"lost":"whether for home)"));
    EXPECT_EQ("[]\n", asJson({}));
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
    const std::string text = asJson(contacts);
    rapidjson::Document parsed;
    ASSERT_FALSE(parsed.Parse<rapidjson::kParseValidateEncodingFlag>(text.c_str()).HasParseError());
    for (rapidjson::SizeType i = 0; i + 1 < contacts.size(); ++i)
        EXPECT_EQ(toUtf8(contacts[i].location), parsed[i]["location"].GetString()) << i;
    EXPECT_TRUE(text.ends_with("\n{\"firstName\":\"only\",\"lastName\":\"few\",\"uid\":\"02\"}\n]\n"));
}

std::vector<Contact> people() {
    return {
        contactOf({{1, u"Zoë"}, {2, u"Müller"}, {3, u"Müller, Zoë"}, {23, u"+49 171 3920001"}}),
        contactOf({{23, u"0172"}}),
        contactOf({{3, u"#1 Formal"}, {18, u"a;b"}, {23, u"0173"}}),
        contactOf({{16, u"Firma"}, {15, u"two\nlines"}}),
        contactOf({{1, u"älter"}}),
    };
}

TEST(ContactsForPeople, AreSortedByNameAndShowWhatMostHave) {
    std::vector<Contact> contacts = people();
    sortByName(contacts);
    EXPECT_EQ(
        "Name        Mobile           Company  Categories  Formal name  Note\n"
        "#1 Formal   0173                      a; b\n"
        "älter\n"
        "Firma                        Firma                             two lines\n"
        "Zoë Müller  +49 171 3920001                       Müller, Zoë\n"
        "            0172\n",
        contactsAsTable(contacts).render(0));
    EXPECT_EQ("Firma\n  Company        Firma\n  Note           two\n                 lines\n",
              asCard(contacts[2], 80, /*verbose=*/false));
    const Contact wordy = contactOf({{2, u"A"}, {15, Text(50, u'x').append(u" ").append(50, u'y').c_str()}});
    EXPECT_THAT(asCard(wordy, 60, false), ::testing::HasSubstr("x\n                 yyy"));
}

TEST(ContactsForPeople, AreFoundByNameOrByAnythingTheyHold) {
    const auto namesOf = [](const std::vector<Contact>& found) {
        std::string names;
        for (const Contact& contact : found)
            names += titleOf(contact) + "|";
        return names;
    };
    const std::vector<Contact> contacts = people();
    struct {
        const char16_t* wanted;
        const char *named, *holding;
    } const cases[] = {
        {u"ZOE MULLER", "Zoë Müller|", "Zoë Müller|"},
        {u"AL", "#1 Formal|älter|", "#1 Formal|älter|"},
        {u"0171 392", "", "Zoë Müller|"},
        {u"172", "", "0172|"},
        {u"nobody", "", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.holding, namesOf(contactsHolding(contacts, c.wanted)));
        EXPECT_EQ(c.named, namesOf(contactsNamed(contacts, c.wanted)));
    }
}

}  // namespace

}  // namespace ovno2::host
