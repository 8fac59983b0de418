// The parts of `ovphone files` that decide by themselves: names, paths and the progress line.
#include <gtest/gtest.h>

#include "base/utf8.h"
#include "host/files/download.h"
#include "host/files/local_name.h"
#include "host/files/phone_path.h"
#include "host/files/transfer_progress.h"
#include "host/output/command_output.h"

namespace ovno2::host {

namespace {

TEST(LocalName, IsSafeOnEverySystem) {
    struct {
        Text phone, local;
    } const cases[] = {
        {u"Łódź 海 😀.jpg", u"Łódź 海 😀.jpg"},
        {u".hidden", u".hidden"},
        {u"", u"_"},
        {u".", u"_"},
        {u"..", u"__"},
        {u"../../evil", u".._.._evil"},
        {u"a\\b:c*d?e\"f<g>h|i", u"a_b_c_d_e_f_g_h_i"},
        {u"tab\tdel\x7F\x85", u"tab_del__"},
        {u"dot.", u"dot_"},
        {u"blank ", u"blank_"},
        {u"Aux", u"_Aux"},
        {u"com1.txt", u"_com1.txt"},
        {u"com0", u"com0"},
        {u"console", u"console"},
        {Text(u"lone ") + char16_t(0xD800), u"lone _"},
        {Text(300, u'x') + u".jpg", Text(236, u'x') + u".jpg"},
        {Text(200, u'ä'), Text(120, u'ä')},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.local, localName(c.phone)) << toUtf8(c.phone);
}

TEST(LocalName, IsGivenOnceInAFolder) {
    LocalNames names;
    for (const TextView name : {u"a.txt", u"A (2).TXT", u"b"})
        EXPECT_EQ(name, names.give(name));
    EXPECT_EQ(u"A (3).TXT", names.give(u"A.TXT"));
    EXPECT_EQ(u"b (2)", names.give(u"b"));
    EXPECT_EQ(u"a (4).txt", names.give(u"a.txt"));
}

TEST(FetchingObstacle, KeepsNamesAwayThatTheDriverWouldMisread) {
    for (const TextView name : {u"", u".", u"..", u"a/b", u"a\\b", u"quote\""})
        EXPECT_NE(nullptr, fetchingObstacle(name, /*onWindows=*/false)) << toUtf8(name);
    for (const TextView name : {u"a:b", u"con", u"dot.", u"a\tb"}) {
        EXPECT_EQ(nullptr, fetchingObstacle(name, /*onWindows=*/false)) << toUtf8(name);
        EXPECT_NE(nullptr, fetchingObstacle(name, /*onWindows=*/true)) << toUtf8(name);
    }
    EXPECT_EQ(nullptr, fetchingObstacle(u"what?", /*onWindows=*/true));
}

TEST(PhonePath, IsTakenApartHoweverItIsTyped) {
    using Parts = std::vector<Text>;
    struct {
        const char* typed;
        Parts parts;
    } const cases[] = {
        {"", {}},
        {"/", {}},
        {"\\\\", {}},
        {"E:", {u"E:"}},
        {"/E://Images/", {u"E:", u"Images"}},
        {"root/E:\\Images", {u"E:", u"Images"}},
        {"Memory card/root", {u"Memory card", u"root"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.parts, partsOfPhonePath(c.typed)) << c.typed;
    for (const char* wrong : {"..", "E:/..", "E:/./x", "E:Images", "E:/a:b"})
        EXPECT_THROW(partsOfPhonePath(wrong), CommandFailure) << wrong;
}

TEST(PhonePath, WildcardsStandForCharactersInAnyCase) {
    struct {
        TextView pattern, name;
        bool matches;
    } const cases[] = {
        {u"*", u"", true},           {u"*.jpg", u"Beach.JPG", true},  {u"*.jpg", u"jpg", false},
        {u"b?ach*", u"BÄACH", true}, {u"str*d*", u"Strand 01", true}, {u"a*a*a", u"aa", false},
        {u"??", u"ab", true},        {u"??", u"abc", false},          {u"", u"a", false},
        {u"ä*", u"Ä1", true},        {u"*a*b*", u"xxaxxbxx", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.matches, matchesWildcard(c.pattern, c.name))
            << toUtf8(c.pattern) << " " << toUtf8(c.name);
}

TEST(TransferLine, TellsHowFarHowFastAndHowLong) {
    EXPECT_EQ("[##########          ] 50 % of 4.0 MB, 1.0 MB/s, 0:02 left: beach.jpg",
              transferLine({2 << 20, 4 << 20, 2.0, u"beach.jpg"}, 100));
    EXPECT_EQ("[                    ] 0 % of 9.5 MB, a file of 4.8 MB since 1:05: a",
              transferLine({0, 10000000, 70, u"a", 5000000, 65}, 100));
    EXPECT_EQ("[                    ] 0 % of 999 bytes: a", transferLine({0, 999, 0, u"a"}, 100));
    EXPECT_EQ("[####################] 10…", transferLine({7, 7, 1.0, u"a"}, 26));
    EXPECT_EQ("1.0 MB", sizeText(1024000));
    EXPECT_EQ("1.0 KB", sizeText(1000));
    EXPECT_EQ("1 byte", sizeText(1));
}

}  // namespace

}  // namespace ovno2::host
