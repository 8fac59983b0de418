#include "host/phones/phone_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/driver/result_messages.h"

namespace ovno2::host {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

const std::vector<ListedPhone> phones = {
    {u"Nokia N95", 8, u"356300010000017", u"USB01", u"Nokia N95", 63},
    {u"Nokia N95", 2, u"356300010000017", u"02:00", u"Anna's phone", 63},
    {u"Nokia 6230i", 1, u"356300020000025", u"COM3", u"Käthes Handy", 1},
    {u"Samsung SGH-D600", 2, u"356300030000032", u"", u"", 0},
    {u"Nokia N9", 2, u"1111", u"", u"", 0},
};

TEST(PhoneChoice, FindsAPhoneByAnyOfItsNamesOrAPart) {
    struct {
        const char16_t* wanted;
        std::size_t phone;
    } const cases[] = {
        {u"", 0},       {u"nokia n95", 0}, {u"ANNA'S PHONE", 1}, {u"356300020000025", 2}, {u"6230", 2},
        {u"käthes", 2}, {u"00003", 3},     {u"Nokia N9", 4},  // the whole name wins over the part of another
    };
    for (const auto& c : cases)
        EXPECT_EQ(&phones[c.phone], choosePhone(phones, c.wanted).phone) << c.phone;
}

TEST(PhoneChoice, SaysWhatToDoWhenNoPhoneIsMeant) {
    EXPECT_THAT(choosePhone({}, u"").message, HasSubstr("No phone is attached"));

    const PhoneChoice several = choosePhone(phones, u"nokia");
    EXPECT_EQ(nullptr, several.phone);
    EXPECT_THAT(several.message, HasSubstr("356300010000017"));
    EXPECT_THAT(several.message, HasSubstr("356300020000025"));
    EXPECT_THAT(several.message, Not(HasSubstr("Samsung")));

    EXPECT_THAT(choosePhone(phones, u"Nokia 6320i").message, HasSubstr("Did you mean \"Nokia 6230i\""));
    EXPECT_THAT(choosePhone(phones, u"N59").message, HasSubstr("\"Nokia N95\""));
    EXPECT_THAT(choosePhone(phones, u"toaster").message, HasSubstr("Samsung SGH-D600 (356300030000032)"));
}

TEST(PhoneChoice, RanksNamesByTheirEditDistance) {
    EXPECT_EQ(3u, editDistance(u"kitten", u"sitting"));
    EXPECT_EQ(4u, editDistance(u"", u"list"));
    EXPECT_EQ(0u, editDistance(u"Käthe", u"Käthe"));
    const std::vector<Text> names = {u"contacts", u"list", u"lists"};
    EXPECT_THAT(nearestNames(u"LSIT", names, 2), ElementsAre(u"list"));
    EXPECT_THAT(nearestNames(u"lits", names, 2), ElementsAre(u"lists", u"list"));
    EXPECT_THAT(nearestNames(u"xy", names, 2), ElementsAre());
}

TEST(ResultMessages, DependOnTheOperationOrOnTheStatus) {
    EXPECT_THAT(resultMessage(Operation::listPhones, -7), HasSubstr("--connectivity"));
    EXPECT_THAT(resultMessage(Operation::readContacts, -3, "Nokia E65"), HasSubstr("Nokia E65 refused"));
    EXPECT_THAT(resultMessage(Operation::readContacts, static_cast<Long>(0x80100014), "X"),
                HasSubstr("X is busy"));
    EXPECT_THAT(resultMessage(Operation::listPhones, static_cast<Long>(0x80100004)),
                HasSubstr("to the phone was"));
    EXPECT_THAT(resultMessage(Operation::listPhones, static_cast<Long>(0x8010ABCD)), HasSubstr("0x8010ABCD"));
    EXPECT_THAT(resultMessage(Operation::readContacts, -77), HasSubstr("-77"));
}

}  // namespace

}  // namespace ovno2::host
