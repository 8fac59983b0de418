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
        TextView rows;  // with "|" between them
        Long code, code2;
        TextView value;
        Long result;
        TextView after, afterKeepingAll;
    };
    const Case cases[] = {
        {"the first of two rows", {1, 5, 5}, u"||", 5, 0, u"v", 1, u"|v|", u"|v|"},
        {"no row", {1, 5}, u"|", 6, 0, u"v", 0, u"|", u"|"},
        {"only the second code's row", {1, 5}, u"|", 6, 5, u"v", 1, u"|v", u"|v"},
        {"a filled row sends it on", {1, 5, 6}, u"|a|", 5, 6, u"v", 2, u"|a|v", u"|a|v"},
        {"both filled", {1, 5, 6}, u"|a|b", 5, 6, u"v", 2, u"|a|b", u"|a|b;v"},
        {"filled, and no row for the second", {1, 5}, u"|a", 5, 6, u"v", 1, u"|a", u"|a"},
        {"filled, and no second", {1, 5}, u"|a", 5, 0, u"v", 1, u"|a", u"|a;v"},
        {"a name is replaced", {4, 1}, u"|a", 1, 0, u"v", 1, u"|v", u"|a;v"},
        {"repeats the formatted name", {4, 2}, u"|[Bob B]", 2, 0, u"Bob", 1, u"|Bob", u"|[Bob B]"},
        {"everything else", {4, 70}, u"|a", 70, 5, u"v", 1, u"|v", u"|a\\nv"},
        {"categories", {4, 18}, u"|a", 18, 4, u"v", 1, u"|a;v", u"|a;v"},
        {"a match in row 0", {5, 4}, u"|", 5, 0, u"v", 0, u"v|", u"v|"},
        {"tabs and blanks", {1, 5}, u"|", 5, 0, u"  a\tb ", 1, u"|a\\tb", u"|a\\tb"},
        {"a host's own code", {1, 4711}, u"|", 4711, 0, u"v", 1, u"|v", u"|v"},
    };
    for (const Case& one : cases) {
        const FieldDefinitions definitions(tableOf(one.codes));
        for (const bool keepAll : {false, true}) {
            settings().getAllFields = keepAll ? 1 : 0;
            std::vector<Text> rows = split(one.rows, u'|');
            Text value(one.value);
            EXPECT_EQ(one.result, SetField(rows, definitions, one.code, one.code2, value)) << one.rule;
            EXPECT_EQ(keepAll ? one.afterKeepingAll : one.after, join(rows, u'|')) << one.rule << keepAll;
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

class ContactFields : public ContactsTest {
  protected:
    static Json text(int id, const char* value) { return {{"id", id}, {"text", value}}; }
};

TEST_F(ContactFields, FindTheirRowsByTheHostsCodes) {
    EXPECT_EQ(u"Anna|Kern|Anna Kern|Ltd|+49 1|+49 2|",
              valuesOf({text(2, "Anna"), text(4, "Kern"), text(1, "Anna Kern"), text(5, "Ltd"),
                        text(33, "+49 2"), text(32, "+49 1"), text(35, "dropped"), text(300, "unknown")}));
    getAllFields = 1;
    EXPECT_EQ(
        u"||||+49 1;+49 3||7\\nunknown",
        valuesOf({text(32, "+49 1"), text(300, "unknown"), {{"id", 516}, {"number", 7}}, text(35, "+49 3")}));
}

TEST_F(ContactFields, TurnTheirValuesIntoText) {
    setRegistryText(platform::currentUser, u"Control Panel\\International", u"sShortDate", u"dd.MM.yyyy");
    table = tableOf({4, 16, 17, 50, 18, 60});
    EXPECT_EQ(u"|note; ;|12.04.1975|a@b.de|x;y|", valuesOf({text(7, "note; ;;"),
                                                            {{"id", 9}, {"date", "1975-04-12T10:30:00"}},
                                                            text(259, "a=40b.de"),
                                                            text(520, "x"),
                                                            text(520, " y ")}));
    EXPECT_EQ(u"|||||", valuesOf({{{"id", 7}, {"text", nullptr}}, text(521, "unknown")}));
}

TEST_F(ContactFields, NameTheContactsPlaceInItsOwnWords) {
    addPhone({contactOf("01", {text(2, "A")}), contactOf("02", {text(514, "SIM")})});
    EXPECT_EQ(2, read());
    EXPECT_EQ(u"1 (SB)", items.at(1).Location);
    EXPECT_EQ(u"SIM (SB)", items.at(2).Location);
    EXPECT_EQ(u"02", items.at(2).Uid);
    EXPECT_EQ(items.at(1).FieldValues, items.at(1).FieldValuesAsRead);
}

// The formatted name (id 1), first and last name of one contact, with tables that lack one or the other.
TEST_F(ContactFields, MakeTheBestOfTheNamesThatAreThere) {
    const Json formatted = text(1, "Anna Kern");
    const Json first = text(2, "Anna");
    const Json last = text(4, "Kern");
    const Json formattedAsFirst = text(1, "Anna");
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
    const std::vector<Long> general = {4, 45, 46, 47, 49, 48}, work = {4, 6, 7, 8, 13, 12},
                            home = {4, 9, 10, 11, 44, 43};
    const Case cases[] = {
        {general, 62, 256, u"|Street|10115|Berlin|Land|@home"},
        {work, 62, 256, u"|Street|10115|Berlin|Land|@home"},
        {work, 0, 258, u"|Street|10115|Berlin|Land|@home"},
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
    table = tableOf({4, 23, 45, 47, 8, 60});
    stateOf<Devices::State>().platformType = eNokiaPhoneS60;
    addContact({text(38, "mobile"),
                text(69, "web"),
                {{"id", 65}, {"address", {"", "", "", "Berlin"}}},
                {{"id", 67}, {"address", {"", "", "", "Bonn"}}}});
    EXPECT_EQ(1, read());
    EXPECT_EQ(u"|mobile||Berlin|Bonn|web", values());
    simulator.shape({{"deviceManagement", nullptr}, {"dataItem", nullptr}});
}

// Without a second row the values hold no tab, and every field starts anew.
TEST_F(ContactFields, FitTablesOfAnySize) {
    const Json fields = {text(2, "Anna"), text(5, "Ltd")};
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
