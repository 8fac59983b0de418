#include <algorithm>
#include <fstream>
#include <set>

#include "contacts/contact_writing.h"
#include "contacts/contacts_test.h"
#include "contacts/write_session.h"
#include "contacts/writing_state.h"

namespace ovno2::Contacts {
namespace {

using ::testing::ElementsAre;

class ContactsWriteTest : public ContactsTest {
  protected:
    ContactsWriteTest() {
        table = tableOf({1, 2, 20, 21});
        image_ = folder.path() / "phone";
        std::filesystem::create_directories(image_);
    }

    void begin(Json contacts, Json shape = nullptr) {
        startOver();
        std::ofstream(image_ / "contacts.json") << Control::phoneBook(std::move(contacts));
        if (!shape.is_null()) simulator.shape(shape);
        simulator.run("addPhone", {{"phone", Control::plainPhone(serial)}, {"image", image_.string()}});
        phoneId.clear();
        simulator.journal(true);
    }
    Long write(const Text& elems, bool isnew = false, Long isrewrite = 0, Long callback = 0) {
        return WriteContact(model, phoneId, id, elems, table, isnew, isrewrite, callback);
    }
    Long commit() { return ContactsEndWriteSession(tempids, uids, /*writeit=*/true); }
    // The fields of the n-th contact as the phone keeps them: "2=Anna 4=Kurz", an address as "256=,a,b".
    std::string stored(std::size_t n = 0) const {
        std::ifstream file(image_ / "contacts.json");
        const Json book = Json::parse(file)["contacts"];
        if (n >= book.size()) return "(none)";
        std::string all;
        for (const Json& field : book[n]["fields"]) {
            if (!all.empty()) all += ' ';
            all += field["id"].dump() + "=";
            if (field.contains("text"))
                all += field["text"].is_null() ? "null" : field["text"].get<std::string>();
            if (field.contains("date")) all += field["date"].get<std::string>().substr(0, 10);
            if (field.contains("picture")) all += "picture";
            if (field.contains("address"))
                for (const Json& part : field["address"])
                    all += (part.is_null() ? "" : part.get<std::string>()) + ",";
        }
        return all;
    }
    // What becomes of one contact with these fields when the host writes these values.
    std::string afterWriting(Json fields, const Text& elems, Long isrewrite = 0, Json shape = nullptr) {
        begin({contactOf("01", std::move(fields))}, std::move(shape));
        id = u"01";
        EXPECT_EQ(0, write(elems, /*isnew=*/false, isrewrite));
        EXPECT_EQ(0, commit());
        letGo();
        EXPECT_EQ("", simulator.leaks());
        return stored();
    }
    std::string newContact(const Text& elems, Json shape = nullptr) {
        begin(Json::array(), std::move(shape));
        id.clear();
        EXPECT_EQ(0, write(elems));
        EXPECT_EQ(0, commit());
        return stored();
    }

    std::filesystem::path image_;
    Text id;
    TextArray tempids, uids;
};

Json text(int id, const char* value) {
    return {{"id", id}, {"text", value}};
}

TEST_F(ContactsWriteTest, ASessionCommitsAllAtOnceAndNamesTheNewOnes) {
    begin({contactOf("01", {text(2, "Anna")}), contactOf("02", {text(2, "Bob")}),
           contactOf("03", {text(2, "Cleo")})});
    id.clear();
    EXPECT_EQ(0, write(u"Dora\tNew"));
    const Text first = id;
    id.clear();
    EXPECT_EQ(0, write(u"Emil"));
    EXPECT_NE(first, id);
    TextArray all;
    GetAllUids(all);
    EXPECT_THAT(all.elements(), ElementsAre(u"1;01", u"2;02", u"3;03"));
    EXPECT_EQ(0, DeleteContact(model, phoneId, u"02"));
    EXPECT_EQ(-1, DeleteContact(model, phoneId, u"0F"));
    EXPECT_EQ(-1, DeleteContact(model, phoneId, u""));
    id = u"03";
    EXPECT_EQ(0, write(u"Cleo\tChanged"));
    EXPECT_EQ("2=Anna", stored(0));
    EXPECT_EQ("2=Bob", stored(1));
    EXPECT_EQ(0, commit());
    EXPECT_EQ("2=Cleo 4=Changed", stored(1));
    EXPECT_EQ("2=Dora 4=New", stored(2));
    EXPECT_EQ("2=Emil", stored(3));
    ASSERT_EQ(1, tempids.upperBound());
    EXPECT_EQ(first, tempids.at(0));
    EXPECT_NE(u"", uids.at(1));
    GetAllUids(all);
    EXPECT_FALSE(all.hasElements());
    // Without a commit nothing is changed.
    id = u"01";
    EXPECT_EQ(0, write(u"Nobody"));
    EXPECT_EQ(0, ContactsEndWriteSession(tempids, uids, /*writeit=*/false));
    EXPECT_EQ("2=Anna", stored(0));
    letGo();
    EXPECT_EQ("", simulator.leaks());
}

// What the phone has and the host's row for it.
TEST_F(ContactsWriteTest, WhatIsEqualStaysWhatDiffersIsReplacedWhatIsNewIsAdded) {
    struct Case {
        std::vector<Long> codes;
        Json fields;
        Text elems;
        std::string stored;
    };
    const Case cases[] = {
        {{1, 2, 20},
         {text(2, "Anna"), text(32, "1"), text(512, "kept")},
         u"Anna\tKurz\t2",
         "2=Anna 4=Kurz 32=2 512=kept"},
        {{1, 3}, {text(1, "Formal"), text(2, "Anna")}, u"Anna\tNew, formal", "2=Anna 1=New, formal"},
        {{1, 2}, {text(2, "Anna")}, u" Anna \t", "2=Anna"},
        {{1, 2}, {text(2, "Anna"), text(4, "Kurz")}, u"Anna", "2=Anna 4="},
        {{1, 2}, {text(2, "Anna")}, u"a\\tb\tc;d", "2=a\tb 4=c,d"},
        {{1, 16}, {text(2, "Anna"), text(7, "Works;")}, u"Anna\tWorks", "2=Anna 7=Works;"},
        {{1, 18},
         {text(2, "Anna"), text(520, "Old"), text(520, "Same"), text(520, "More")},
         u"Anna\tNew;Same",
         "2=Anna 520=New 520=Same 520=More"},
        {{1, 50, 51, 8, 11},
         {text(2, "A"), text(259, "a@x"), text(259, "b@x")},
         u"A\ta@x\tb@x",
         "2=A 259=a@x 259=b@x"},
        {{1, 17}, {text(2, "A"), {{"id", 9}, {"date", "1975-04-12"}}}, u"A\t", "2=A"},
        {{1, 999, 70}, {text(2, "A")}, u"B\tno field\tnone", "2=B"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(toUtf8(one.elems));
        table = tableOf(one.codes);
        EXPECT_EQ(one.stored, afterWriting(one.fields, one.elems));
    }
    // Nothing of an item that stays is given back or made anew.
    table = tableOf({1, 2});
    begin({contactOf("01", {text(2, "Anna"), text(4, "Kurz")})});
    id = u"01";
    EXPECT_EQ(0, write(u"Anna\tKurz"));
    const std::vector<std::string> made = calls();
    EXPECT_EQ(1, std::ranges::count(made, "CONAFreeString"));  // the serial number's
    table = tableOf({1, 2, 20});
    EXPECT_EQ("2=Anna 4=Kurz 32=", afterWriting({text(2, "Anna"), text(4, "Kurz"), text(32, "1")},
                                                u"Anna\tKurz\t1", /*isrewrite=*/1));
}

TEST_F(ContactsWriteTest, AddressesAreGatheredByTheHostsCodes) {
    const Json general = {{"id", 256},
                          {"address", {"po", "Street 1", "10115", "Town", "State", "Land", "x"}}};
    const Json home = {{"id", 257}, {"address", {nullptr, "Home", nullptr, nullptr, nullptr, nullptr}}};
    table = tableOf({1, 6, 8, 9, 11});  // work and home
    EXPECT_EQ("2=A 258=,Work,,City, 257=,House,,Village,", newContact(u"A\tWork\tCity\tHouse\tVillage"));
    table = tableOf({1, 6, 8});  // not kept apart: both are general ones
    EXPECT_EQ("2=A 256=,Work,,City,", newContact(u"A\tWork\tCity"));
    EXPECT_EQ("2=A 256=,New,", afterWriting({text(2, "A"), home}, u"A\tNew\t"));
    table = tableOf({1, 45, 46, 47, 49, 48, 8, 11});
    EXPECT_EQ("2=A 256=po,Street 1,10115,Town,State,Land,x,",
              afterWriting({text(2, "A"), general}, u"A\tStreet 1\t10115\tTown\tState\tLand"));
    EXPECT_EQ("2=A 256=,Street 2,10115,Town,State,Land,",
              afterWriting({text(2, "A"), general}, u"A\tStreet 2\t10115\tTown\tState\tLand"));
    // A second general address was read into the rows of the work address, and stays what it is.
    const Json second = {{"id", 256}, {"address", {"box", "Way", nullptr, "City"}}};
    table = tableOf({1, 6, 8, 45, 47, 11});
    EXPECT_EQ("2=A 256=po,Street 1,10115,Town,State,Land,x, 256=box,Way,,City,",
              afterWriting({text(2, "A"), general, second}, u"A\tWay\tCity\tStreet 1\tTown\t"));
}

TEST_F(ContactsWriteTest, OldLibrariesGetBlanksAndNoLastGroup) {
    const Json old = {{"contentAccess", 32}};
    table = tableOf({1, 2, 16, 20, 60, 15, 8, 11});
    const Text elems = u"A\tShort\tWorks for long\t1\tfour\tnote";
    EXPECT_EQ("2=A 4=Short 7=Works for long 32=1 272=four 512=note", newContact(elems));
    EXPECT_EQ("2=A   4=Short 7=Works for long   32=1 272=four   512=note  ",
              newContact(elems, {{"contentAccess", 35}}));
    EXPECT_EQ("2=A   4=Short 7=Works for long   32=1 272=four  ", newContact(elems, old));
    table = tableOf({1, 51, 8, 11});
    EXPECT_EQ("2=A 261=a@x", newContact(u"A\ta@x"));
    EXPECT_EQ("2=A   259=a@x", newContact(u"A\ta@x", old));
}

TEST_F(ContactsWriteTest, APictureIsReplacedOnlyWhenItsBytesDiffer) {
    const std::filesystem::path path = folder.path() / "new.jpg";
    const Text shown = replaceAll(path.u16string(), u"/", u"\\");
    std::ofstream(image_ / "old.jpg") << "old";
    const Json picture = {{"id", 10}, {"picture", {{"format", "JPEG"}, {"file", "old.jpg"}}}};
    table = tableOf({1, 80});
    const auto bytesAfter = [&](const Text& value) {
        std::ofstream(image_ / "old.jpg") << "old";
        const std::string fields = afterWriting({text(2, "A"), picture}, u"A\t" + value);
        std::ifstream file(image_ / "contacts.json");
        const Json book = Json::parse(file);
        for (const Json& field : book["contacts"][0]["fields"])
            if (field.contains("picture")) {
                std::ifstream bytes(image_ / field["picture"]["file"].get<std::string>());
                return std::string(std::istreambuf_iterator<char>(bytes), {});
            }
        return fields;
    };
    std::ofstream(path) << "new";
    EXPECT_EQ("new", bytesAfter(shown));
    std::ofstream(path) << "old";
    EXPECT_EQ("old", bytesAfter(shown));
    EXPECT_EQ("old", bytesAfter(shown + u".none"));
    EXPECT_EQ("2=A", bytesAfter(u""));
    std::ofstream(path) << "new";
    EXPECT_EQ("2=A 10=picture", newContact(u"A\t" + shown));
}

TEST_F(ContactsWriteTest, ASessionThatCannotBeginIsTriedTwice) {
    struct Case {
        const char* call;
        Long result;
        int times;
    };
    for (const Case& one : {Case{"CABeginOperation", -4, 2}, Case{"CAGetIDList", -5, 2},
                            Case{"DAOpenCA", -3, 4}, Case{"CAAPI_Initialize", -1, 1}}) {
        SCOPED_TRACE(one.call);
        begin({contactOf("01", {text(2, "Anna")})});
        simulator.fail(one.call, library::deviceBusy, 1, /*onwards=*/true);
        id = u"01";
        EXPECT_EQ(one.result, write(u"Bob"));
        int times = 0;
        for (const std::string& call : calls())
            if (call == one.call) ++times;
        EXPECT_EQ(one.times, times);
        simulator.clearPlan();
        EXPECT_EQ(0, write(u"Bob"));
        EXPECT_EQ(0, commit());
        EXPECT_EQ("2=Bob", stored());
    }
}

// The phone keeps what it had; the session stays open until its connection is closed.
TEST_F(ContactsWriteTest, AFailedCommitChangesNothing) {
    begin({contactOf("01", {text(2, "Anna")})});
    id = u"01";
    EXPECT_EQ(0, write(u"Bob"));
    simulator.fail("CACommitOperations", library::deviceBusy);
    EXPECT_EQ(static_cast<Long>(library::deviceBusy), commit());
    EXPECT_TRUE(isWriting());
    EXPECT_EQ("2=Anna", stored());
    CloseContactsConnection();
    EXPECT_FALSE(isWriting());
    EXPECT_EQ(0, write(u"Bob"));
    EXPECT_EQ(0, commit());
    EXPECT_EQ("2=Bob", stored());
    startOver();  // the library's session ended under the open connection
}

// The fields of each contact in some order of their own; what a picture's file is called does not count.
std::vector<std::multiset<std::string>> fieldsIn(const std::filesystem::path& file) {
    std::ifstream stream(file);
    const Json book = Json::parse(stream);
    std::vector<std::multiset<std::string>> contacts;
    for (const Json& contact : book["contacts"]) {
        auto& fields = contacts.emplace_back();
        for (Json field : contact["fields"]) {
            if (field.contains("picture")) field["picture"] = field["picture"]["format"];
            fields.insert(field.dump());
        }
    }
    return contacts;
}

TEST_F(ContactsWriteTest, APhoneBookWrittenAsItWasReadStaysAsItWas) {
    const std::filesystem::path phones = folder.path() / "phones";
    std::filesystem::create_directories(phones);
    std::filesystem::copy(BUNDLED_PHONES "/demo", phones / "demo", std::filesystem::copy_options::recursive);
    const std::filesystem::path book = phones / "demo" / "contacts.json";
    const auto before = fieldsIn(book);
    EXPECT_THAT(simulator.load(phones), ElementsAre());
    table = tableOf({1,  2,  3,  4,  5,  16, 19, 17, 20, 30, 21, 22, 24, 25, 23, 35, 28, 29, 27, 50, 51,
                     60, 61, 15, 67, 18, 6,  7,  8,  12, 13, 9,  10, 11, 43, 44, 45, 46, 47, 48, 49, 80});
    pictureFolder = replaceAll((folder.path() / "pictures").u16string(), u"/", u"\\") + u"\\";
    ASSERT_EQ(static_cast<Long>(before.size()), read());
    for (Long i = 1; i <= items.upperBound(); ++i) {
        id = items.at(i).Uid;
        EXPECT_EQ(0, write(items.at(i).FieldValues));
    }
    EXPECT_EQ(0, commit());
    const auto after = fieldsIn(book);
    ASSERT_EQ(before.size(), after.size());
    std::vector<std::string> differ;
    for (std::size_t i = 0; i < before.size(); ++i)
        std::ranges::set_symmetric_difference(before[i], after[i], std::back_inserter(differ));
    // What the host cannot tell apart: a category with a ";" from two, a name in brackets from a formatted
    // one.
    EXPECT_THAT(differ, ElementsAre(R"({"id":520,"text":"Chor"})", R"({"id":520,"text":"Chor; Tenor"})",
                                    R"({"id":520,"text":"Tenor"})", R"({"id":4,"text":"Notfall"})",
                                    R"({"id":4,"text":"[Notfall]"})"));
}

// The host's function: what it is asked, and what it answers.
std::vector<Long> asked;
std::string askedAbout;
Long hostAnswer = 0;

#ifdef _WIN32
Long __stdcall hear(Long request, Long number, Long style, Long text) {
#else
Long hear(Long request, Long number, Long style, Long text) {
#endif
    asked = {request, number, style};
    askedAbout = static_cast<const char*>(library::pointerTo(static_cast<Address>(text)));
    return hostAnswer;
}

TEST_F(ContactsWriteTest, TheHostIsAskedWhereAnOldLibraryWouldLoseNotes) {
#ifdef _WIN32
    const Long callback = reinterpret_cast<Long>(&hear);
#else
    const Long callback =
        static_cast<platform::portable::PortableWindows&>(machine.windows()).registerProcedure(hear);
#endif
    struct Case {
        Long answer;
        Long result;
        const char* stored;
    };
    for (const Case& one : {Case{6, 0, "2=B   4=Kurz"}, Case{7, 0, "2=Anna 4=Kurz 512=note"},
                            Case{2, -9, "2=Anna 4=Kurz 512=note"}}) {
        hostAnswer = one.answer;
        begin({contactOf("01", {text(2, "Anna"), text(4, "Kurz"), text(512, "note")})},
              {{"contentAccess", 32}});
        table = tableOf({1});
        id = u"01";
        EXPECT_EQ(one.result, write(u"B", /*isnew=*/false, /*isrewrite=*/0, callback));
        EXPECT_THAT(asked, ElementsAre(4, 805, 51));
        EXPECT_EQ("Anna Kurz", askedAbout);
        EXPECT_EQ(0, commit());
        EXPECT_EQ(one.stored, stored());
    }
}

}  // namespace
}  // namespace ovno2::Contacts
