#include "contacts/contact_fields.h"

#include "contacts/contacts_test.h"

namespace ovno2::Contacts {
namespace {

using ::testing::ElementsAre;

class SetFieldTest : public ContactsTest {};

TEST_F(SetFieldTest, PlacesAValueByTheFirstCodeThenByTheSecond) {
    struct Case {
        const char* rule;
        std::vector<Long> codes;
        std::vector<Text> values;
        Long code, code2;
        TextView value;
        Long result;
        std::vector<Text> after;
        std::vector<Text> afterKeepingAll;
    };
    const Case cases[] = {
        {"the first of two rows",
         {1, 5, 5},
         {u"", u"", u""},
         5,
         0,
         u"v",
         1,
         {u"", u"v", u""},
         {u"", u"v", u""}},
        {"no row", {1, 5}, {u"", u""}, 6, 0, u"v", 0, {u"", u""}, {u"", u""}},
        {"only the second code's row", {1, 5}, {u"", u""}, 6, 5, u"v", 1, {u"", u"v"}, {u"", u"v"}},
        {"a filled row sends it on",
         {1, 5, 6},
         {u"", u"a", u""},
         5,
         6,
         u"v",
         2,
         {u"", u"a", u"v"},
         {u"", u"a", u"v"}},
        {"both filled", {1, 5, 6}, {u"", u"a", u"b"}, 5, 6, u"v", 2, {u"", u"a", u"b"}, {u"", u"a", u"b;v"}},
        {"filled, and no row for the second", {1, 5}, {u"", u"a"}, 5, 6, u"v", 1, {u"", u"a"}, {u"", u"a"}},
        {"filled, and no second", {1, 5}, {u"", u"a"}, 5, 0, u"v", 1, {u"", u"a"}, {u"", u"a;v"}},
        {"a name is replaced", {4, 1}, {u"", u"a"}, 1, 0, u"v", 1, {u"", u"v"}, {u"", u"a;v"}},
        {"a last name repeats the formatted one",
         {4, 2},
         {u"", u"[Bob B]"},
         2,
         0,
         u"Bob",
         1,
         {u"", u"Bob"},
         {u"", u"[Bob B]"}},
        {"everything else", {4, 70}, {u"", u"a"}, 70, 5, u"v", 1, {u"", u"v"}, {u"", u"a\\nv"}},
        {"categories", {4, 18}, {u"", u"a"}, 18, 4, u"v", 1, {u"", u"a;v"}, {u"", u"a;v"}},
        {"a match in row 0", {5, 4}, {u"", u""}, 5, 0, u"v", 0, {u"v", u""}, {u"v", u""}},
        {"tabs and blanks", {1, 5}, {u"", u""}, 5, 0, u"  a\tb ", 1, {u"", u"a\\tb"}, {u"", u"a\\tb"}},
        {"a host's own code", {1, 4711}, {u"", u""}, 4711, 0, u"v", 1, {u"", u"v"}, {u"", u"v"}},
    };
    for (const Case& one : cases) {
        for (const bool keepAll : {false, true}) {
            settings().getAllFields = keepAll ? 1 : 0;
            std::vector<Text> rows = one.values;
            Text value(one.value);
            EXPECT_EQ(one.result,
                      SetField(rows, FieldDefinitions(tableOf(one.codes)), one.code, one.code2, value))
                << one.rule;
            EXPECT_EQ(keepAll ? one.afterKeepingAll : one.after, rows) << one.rule << keepAll;
        }
    }
}

TEST(FieldDefinitionsTest, ReadTheHostsColumnFourWhateverItsBounds) {
    for (const Long firstColumn : {-1, 0, 1, 4}) {
        const FieldDefinitions table(tableOf({70, 5, 5, -2}, firstColumn));
        EXPECT_EQ(4u, table.rows());
        EXPECT_EQ(1, table.firstRow(5)) << firstColumn;
        EXPECT_EQ(3, table.firstRow(-2));
        EXPECT_EQ(-1, table.firstRow(6));
    }
    EXPECT_EQ(-1, FieldDefinitions(tableOf({5}, 5)).firstRow(5));
    EXPECT_EQ(0u, FieldDefinitions(TextTable()).rows());
}

class ContactFields : public ContactsTest {};

TEST_F(ContactFields, FindTheirRowsByTheHostsCodes) {
    EXPECT_EQ(u"Anna|Kern|Anna Kern|Ltd|+49 1|+49 2|", valuesOf({{{"id", 2}, {"text", "Anna"}},
                                                                 {{"id", 4}, {"text", "Kern"}},
                                                                 {{"id", 1}, {"text", "Anna Kern"}},
                                                                 {{"id", 5}, {"text", "Ltd"}},
                                                                 {{"id", 33}, {"text", "+49 2"}},
                                                                 {{"id", 32}, {"text", "+49 1"}},
                                                                 {{"id", 35}, {"text", "dropped"}},
                                                                 {{"id", 300}, {"text", "unknown"}}}));
    getAllFields = 1;
    EXPECT_EQ(u"||||+49 1;+49 3||7\\nunknown", valuesOf({{{"id", 32}, {"text", "+49 1"}},
                                                         {{"id", 300}, {"text", "unknown"}},
                                                         {{"id", 516}, {"number", 7}},
                                                         {{"id", 35}, {"text", "+49 3"}}}));
}

TEST_F(ContactFields, TurnTheirValuesIntoText) {
    setRegistryText(platform::currentUser, u"Control Panel\\International", u"sShortDate", u"dd.MM.yyyy");
    table = tableOf({4, 16, 17, 50, 18, 60});
    EXPECT_EQ(u"|note; ;|12.04.1975|a@b.de|x;y|", valuesOf({{{"id", 7}, {"text", "note; ;;"}},
                                                            {{"id", 9}, {"date", "1975-04-12T10:30:00"}},
                                                            {{"id", 259}, {"text", "a=40b.de"}},
                                                            {{"id", 520}, {"text", "x"}},
                                                            {{"id", 520}, {"text", " y "}}}));
    EXPECT_EQ(u"|||||", valuesOf({{{"id", 7}, {"text", nullptr}}, {{"id", 521}, {"text", "unknown"}}}));
}

TEST_F(ContactFields, NameTheContactsPlaceInItsOwnWords) {
    addPhone(
        {contactOf("01", {{{"id", 2}, {"text", "A"}}}), contactOf("02", {{{"id", 514}, {"text", "SIM"}}})});
    EXPECT_EQ(2, read());
    EXPECT_EQ(u"1 (SB)", items.at(1).Location);
    EXPECT_EQ(u"SIM (SB)", items.at(2).Location);
    EXPECT_EQ(u"02", items.at(2).Uid);
    EXPECT_EQ(items.at(1).FieldValues, items.at(1).FieldValuesAsRead);
}

// The formatted name (id 1), first and last name of one contact, with tables that lack one or the other.
TEST_F(ContactFields, MakeTheBestOfTheNamesThatAreThere) {
    const Json formatted = {{"id", 1}, {"text", "Anna Kern"}};
    const Json first = {{"id", 2}, {"text", "Anna"}};
    const Json last = {{"id", 4}, {"text", "Kern"}};
    const Json formattedAsFirst = {{"id", 1}, {"text", "Anna"}};
    struct Case {
        std::vector<Long> codes;
        Json fields;
        TextView values;
    };
    const Case cases[] = {
        {{4, 1, 3}, {last}, u"||Kern"},                     // no row for the last name
        {{4, 1, 2}, {formatted}, u"||Anna Kern"},           // none for the formatted name
        {{4, 1, 2}, {formattedAsFirst, first}, u"|Anna|"},  // it says no more than the first name
        {{4, 1, 2}, {formatted, last}, u"||Kern"},
        {{3, 2}, {formatted}, u"Anna Kern|Anna Kern"},  // a match in row 0 counts as none
    };
    for (const Case& one : cases) {
        table = tableOf(one.codes);
        EXPECT_EQ(one.values, valuesOf(one.fields));
    }
}

TEST_F(ContactFields, SpreadAddressesOverTheirRows) {
    const auto address = [](int id) {
        return Json{{"id", id}, {"address", {"box", "Street\r", "10115", "Berlin", "Land", "=40home", "x"}}};
    };
    struct Case {
        std::vector<Long> codes;
        Long platform;
        int id;
        TextView values;
    };
    const std::vector<Long> general = {4, 45, 46, 47, 49, 48}, business = {4, 6, 7, 8, 13, 12},
                            home = {4, 9, 10, 11, 44, 43};
    const Case cases[] = {
        {general, 62, 256, u"|Street|10115|Berlin|Land|@home"},
        {business, 62, 256, u"|Street|10115|Berlin|Land|@home"},
        {business, 0, 258, u"|Street|10115|Berlin|Land|@home"},
        {home, 0, 257, u"|Street|10115|Berlin|Land|@home"},
        {general, 1, 256, u"||10115|Berlin|Land|@home"},
        {{4, 45, 9}, 59, 256, u"||Street"},
        {{4, 45, 8, 11}, 0, 256, u"|Street|Berlin|"},
        {{4, 45, 6, 9}, 0, 256, u"||Street|"},
    };
    for (const Case& one : cases) {
        table = tableOf(one.codes);
        platformType = one.platform;
        EXPECT_EQ(one.values, valuesOf({address(one.id)})) << one.id << " on " << one.platform;
    }
}

TEST_F(ContactFields, OfOldLibrariesHaveShortIdsAndRecords) {
    simulator.shape({{"deviceManagement", 29}, {"dataItem", 16}});
    table = tableOf({4, 23, 45, 47, 60});
    stateOf<Devices::State>().platformType = eNokiaPhoneS60;
    addContact({{{"id", 38}, {"text", "mobile"}},
                {{"id", 69}, {"text", "web"}},
                {{"id", 65}, {"address", {"", "", "", "Berlin"}}}});
    EXPECT_EQ(1, read());
    EXPECT_EQ(u"|mobile||Berlin|web", values());
    simulator.shape({{"deviceManagement", nullptr}, {"dataItem", nullptr}});
}

// Without a second row the values hold no tab, and every field starts anew.
TEST_F(ContactFields, FitTablesOfAnySize) {
    const Json fields = {{{"id", 2}, {"text", "Anna"}}, {{"id", 5}, {"text", "Ltd"}}};
    table = tableOf({1});
    EXPECT_EQ(u"", valuesOf(fields));
    table = tableOf({5});
    EXPECT_EQ(u"Ltd", valuesOf(fields));
    table = TextTable();
    EXPECT_EQ(u"", valuesOf(fields));
    table = tableOf({1, 5});
    EXPECT_EQ(u"Anna|Ltd", valuesOf(fields));
    EXPECT_EQ(u"", valuesOf(Json::array()));  // nothing was said about the values
}

}  // namespace
}  // namespace ovno2::Contacts
