#include "host/phones/phone_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/driver/result_messages.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
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
        {u"nokia n95", 0}, {u"ANNA'S PHONE", 1}, {u"356300020000025", 2}, {u"6230", 2},
        {u"käthes", 2},    {u"00003", 3},        {u"Nokia N9", 4},  // the whole name wins over the part of
                                                                    // another
    };
    for (const auto& c : cases)
        EXPECT_EQ(&phones[c.phone], choosePhone(phones, Text(c.wanted), Purpose::change).phone) << c.phone;
}

TEST(PhoneChoice, SaysWhatToDoWhenNoPhoneIsMeant) {
    const PhoneChoice several = choosePhone(phones, u"nokia", Purpose::read);
    EXPECT_EQ(nullptr, several.phone);
    EXPECT_THAT(several.message,
                AllOf(HasSubstr("356300010000017"), HasSubstr("356300020000025"), Not(HasSubstr("Samsung"))));
    EXPECT_THAT(choosePhone(phones, u"N59", Purpose::read).message,
                HasSubstr("Did you mean \"Nokia N9\" or \"Nokia N95\"?"));
    EXPECT_THAT(choosePhone(phones, u"toaster", Purpose::read).message,
                HasSubstr("Samsung SGH-D600 (356300030000032)"));

    // Without a name the first is read, and it is said which that is; nothing is changed on a guess.
    const PhoneChoice first = choosePhone(phones, {}, Purpose::read);
    EXPECT_EQ(&phones[0], first.phone);
    EXPECT_THAT(first.message, HasSubstr("the first of 4 phones"));
    EXPECT_EQ(nullptr, choosePhone(phones, {}, Purpose::change).phone);
    EXPECT_EQ(nullptr, choosePhone(phones, u"", Purpose::read).phone);
    const std::span attachedTwice = std::span(phones).first(2);
    EXPECT_EQ(&phones[0], choosePhone(attachedTwice, {}, Purpose::change).phone);
    EXPECT_EQ("", choosePhone(attachedTwice, {}, Purpose::read).message);

    EXPECT_EQ(3u, editDistance(u"kitten", u"sitting"));
    EXPECT_EQ(4u, editDistance(u"", u"list"));
    const std::vector<Text> names = {u"contacts", u"list", u"lists"};
    EXPECT_THAT(nearestNames(u"LSIT", names, 2), ElementsAre(u"list"));
    EXPECT_THAT(nearestNames(u"lits", names, 2), ElementsAre(u"lists", u"list"));
    EXPECT_THAT(nearestNames(u"xy", names, 2), ElementsAre());
}

TEST(ResultMessages, DependOnTheOperationOrOnTheStatus) {
    struct {
        Operation operation;
        std::uint32_t result;
        const char* message;
    } const cases[] = {
        {Operation::readContacts, 0x80100014, "X is busy"},
        {Operation::readContacts, static_cast<std::uint32_t>(-3), "X refused"},
        {Operation::listPhones, 0x8010ABCD, "0x8010ABCD"},
        {Operation::readContacts, static_cast<std::uint32_t>(-77), "-77"},
    };
    for (const auto& [operation, result, message] : cases)
        EXPECT_THAT(resultMessage(operation, static_cast<Long>(result), "X"), HasSubstr(message));
    EXPECT_THAT(resultMessage(Operation::listPhones, static_cast<Long>(0x80100004)),
                HasSubstr("to the phone was"));
}

}  // namespace

}  // namespace ovno2::host
