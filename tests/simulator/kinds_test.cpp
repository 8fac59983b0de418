// Calendar, messages and notes: what is read and written as records, what stands in their files.
#include "simulator/library.h"

namespace simulator_tests {
namespace {

struct Kind {
    const char* file;
    const char* list;
    Word target;
    Word recordBytes;
    Json sizes;         // of the phone's records
    const char* items;  // as the simulator itself writes them
};

const char* const entries = R"([
    {"uid": "01", "type": "meeting", "start": "2008-07-05T08:00:00+60+60", "end": "2008-07-05T09:30:00+60+60",
     "alarm": "2008-07-05T07:45:00+60+60", "repeat": {"every": "week", "interval": 2, "days": ["MO", "TH"]},
     "until": "2008-12-31", "summary": "Größe 😀\nzwei", "location": "海边", "description": ""},
    {"uid": "02", "folderId": 2, "type": "birthday", "start": "1980-02-29", "end": "1980-03-01",
     "repeat": {"every": "year", "interval": 0}, "summary": null, "birthYear": 1901,
     "fields": [{"id": 774, "number": 1}, {"id": 768, "text": "again"}]},
    {"uid": "03", "folderId": 3, "position": 7, "type": 9, "start": "2007-01-01T23:59:59-300+0", "repeat": 4026531841,
     "fields": [{"id": 769, "group": 2, "reserved": 5, "text": "x"}]},
    {"uid": "04", "type": "to-do", "alarmState": 3, "summary": "s", "priority": 0, "status": 65535}])";
const char* const messages = R"([
    {"uid": "01", "folderId": 2, "date": "2009-03-29T00:59:59+60+0", "addresses": ["+49 171 3920001", null,
     {"info": 5, "text": "a|b\tc"}], "text": "Grüße 😀|\tEnde\n"},
    {"uid": "02", "date": "2009-10-25", "info": 13841, "text": ""},
    {"uid": "03", "date": "0000-00-00", "bytes": "00FF41"},
    {"uid": "04", "date": "2009-10-25", "info": 3, "bytes": ""},
    {"uid": "05", "date": "2009-10-25", "info": 1, "bytes": "3DD8"},
    {"uid": "06", "date": "2009-10-25", "info": 1, "bytes": "410042"}])";
const char* const notes =
    R"([{"uid": "01", "text": "Milch\r\n牛奶"}, {"uid": "02", "text": ""}, {"uid": "03", "text": null}])";

const Kind kinds[] = {
    {"calendar", "entries", signature::targetCalendar, 112, {{"dataItem", 20}}, entries},
    {"calendar", "entries", signature::targetCalendar, 112, {{"dataItem", 16}, {"date", 28}}, R"([
        {"uid": "01", "type": "call", "start": "2008-01-05T09:00:00",
         "exceptions": ["2008-01-12T09:00:00", "2008-01-19T09:00:00+60+0"], "summary": "Lunch"}])"},
    {"calendar", "entries", signature::targetCalendar, 104, {{"calendar", 104}}, entries},
    {"messages", "messages", signature::targetMessages, 44, Json::object(), messages},
    {"otherMessages", "messages", signature::targetOtherMessages, 44, Json::object(), messages},
    {"notes", "notes", signature::targetNotes, 8, Json::object(), notes},
};

class Kinds : public World {
  protected:
    void serve(const Kind& kind) {
        Json phone = control.plainPhone(annasSerial);
        phone["recordSizes"] = kind.sizes;
        folder.write("one/phone.json", phone.dump());
        folder.write(
            std::string("one/") + kind.file + ".json",
            std::string(R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": [
            {"id": 2, "name": "A", "path": "\\A"}, {"id": 3, "name": "B", "path": "\\B"}]}, ")") +
                kind.list + "\": " + kind.items + "}");
        control.reset();
        ASSERT_THAT(control.load(folder.path), IsEmpty());
    }
    Json stored(const Kind& kind) {
        return Json::parse(fileContent(folder.path / "one" / (std::string(kind.file) + ".json")));
    }

    TemporaryFolder folder;
};

// A record of any kind, and what becomes of it.
struct AnyRecord {
    explicit AnyRecord(Word bytes) { std::memcpy(words.data(), &bytes, sizeof bytes); }
    Status read(const ContentSession& session, ItemIdRecord id) {
        return DAAPI(CAReadItem)(session.operation, &id, 0, 1, words.data());
    }
    Status write(const ContentSession& session, ItemIdRecord& id) {
        return DAAPI(CAWriteItem)(session.operation, &id, 0, 1, words.data());
    }
    Status free(const ContentSession& session) {
        return DAAPI(CAFreeItemData)(session.connection, 1, words.data());
    }
    std::array<Word, 28> words{};
};

TEST_F(Kinds, WhatIsReadAndWrittenAsANewItemIsTheSameInTheFile) {
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(std::string(kind.file) + kind.sizes.dump());
        const Json items = Json::parse(kind.items);
        serve(kind);
        {
            const ContentSession session(u"356300010000017", kind.target);
            ASSERT_EQ(session.status, statusOk);
            ItemIdRecord id{sizeof id, 1, 0, 0, 0, 0};
            AnyRecord wrong(kind.recordBytes + 4);
            EXPECT_EQ(wrong.read(session, id), 0x80108006);
            std::map<char, std::pair<AnyRecord, ItemIdRecord>> read;  // by uid
            for (const Word folderId : {1, 2, 3}) {
                for (const ItemIdRecord& listed : session.ids(folderId)) {
                    AnyRecord record(kind.recordBytes);
                    ASSERT_EQ(record.read(session, listed), statusOk);
                    read.emplace(*at(listed.uid), std::pair(record, listed));
                }
            }
            ASSERT_EQ(read.size(), items.size());
            Word lastTemporary = 0;
            for (auto& [uid, item] : read) {
                item.second.uidLength = item.second.uid = item.second.position = 0;
                EXPECT_EQ(item.first.write(session, item.second), statusOk);
                EXPECT_GT(item.second.position, lastTemporary);
                lastTemporary = item.second.position;
                AnyRecord queued(kind.recordBytes);
                EXPECT_EQ(queued.read(session, item.second), statusOk) << "by its temporary id";
                EXPECT_EQ(queued.free(session), statusOk);
                EXPECT_EQ(item.first.free(session), statusOk);
            }
            ASSERT_EQ(session.commit(), statusOk);
        }
        control.reset();
        ASSERT_THAT(control.load(folder.path), IsEmpty());
        const Json all = stored(kind)[kind.list];
        ASSERT_EQ(all.size(), 2 * items.size());
        for (std::size_t i = 0; i < items.size(); ++i) {
            for (Json item : {all[i], all[items.size() + i]}) {
                Json expected = items[i];
                expected["uid"] = item["uid"];
                if (!item.contains("position")) expected.erase("position");
                EXPECT_EQ(item, expected);
            }
        }
    }
}

TEST_F(Kinds, ACalendarIsMadeRenamedAndDeletedWithItsEntriesOnceItIsCommitted) {
    serve(kinds[0]);
    const ContentSession session(u"356300010000017", signature::targetCalendar);
    FolderInfoRecord made{32, 0, 0, 0, 0, 0, 0, 0}, a{32, 2, 0, 0, 0, 0, 0, 0}, b{48, 3, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(DAAPI(CACreateFolder)(session.operation, &made, u"Work\\Home"), 0x8010800B);
    EXPECT_EQ(DAAPI(CACreateFolder)(session.operation, &made, u"Work  A"), statusOk);
    EXPECT_EQ(DAAPI(CARenameFolder)(session.operation, &a, u"Familie"), statusOk);
    EXPECT_EQ(DAAPI(CADeleteFolder)(session.operation, &b), statusOk);
    EXPECT_EQ(stored(kinds[0])["folder"]["subfolders"][0]["name"], "A") << "nothing before the commit";
    ASSERT_EQ(session.commit(), statusOk);
    EXPECT_EQ(stored(kinds[0])["folder"]["subfolders"], Json::parse(R"([
        {"id": 2, "name": "Familie", "path": "\\Familie", "subfolders": []},
        {"id": 4, "name": "Work  A", "path": "\\Work  A", "subfolders": []}])"));
    EXPECT_THAT(stored(kinds[0])["entries"], SizeIs(3));

    // An entry moves by being deleted and written anew.
    ItemIdRecord id = session.ids(2)[0];
    AnyRecord entry(112);
    ASSERT_EQ(entry.read(session, id), statusOk);
    ASSERT_EQ(DAAPI(CADeleteItem)(session.operation, &id, 0), statusOk);
    ItemIdRecord moved{sizeof moved, 4, 0, 0, 0, 0};
    ASSERT_EQ(entry.write(session, moved), statusOk);
    EXPECT_EQ(entry.free(session), statusOk);
    ASSERT_EQ(session.commit(), statusOk);
    EXPECT_THAT(session.ids(2), IsEmpty());
    EXPECT_THAT(session.ids(4), SizeIs(1));
}

TEST_F(Kinds, WildRecordsComeBackAndGoAndABadOneIsRefused) {
    struct Wild {
        std::size_t kind;
        const char* poke;  // record, index, word, value
        std::size_t word;  // of the record that is read
        bool leadsToNothing;
    };
    const Wild wild[] = {
        {0, R"({"record": "entry", "word": 26, "value": 60000})", 26, false},
        {0, R"({"record": "entry", "word": 2, "value": 0})", 2, false},
        {0, R"({"record": "item", "index": 1, "word": 4, "value": "unmapped"})", 0, false},
        {1, R"({"record": "exception", "index": 1, "word": 1, "value": "0xFFFFFFFF"})", 0, false},
        {3, R"({"record": "message", "word": 2, "value": "0xFFFFFFFF"})", 2, false},
        {3, R"({"record": "address", "word": 2, "value": "unterminated"})", 0, false},
        {3, R"({"record": "message", "word": 5, "value": 0})", 5, false},
        {5, R"({"record": "note", "word": 1, "value": "unmapped"})", 1, true},
    };
    for (const Wild& one : wild) {
        SCOPED_TRACE(one.poke);
        const Kind& kind = kinds[one.kind];
        serve(kind);
        Json poke = Json::parse(one.poke);
        poke["call"] = "CAReadItem";
        poke["uid"] = "01";
        const ContentSession session(u"356300010000017", kind.target);
        const bool inRoot = !session.ids(1).empty() && *at(session.ids(1)[0].uid) == 1;
        const ItemIdRecord id = session.ids(inRoot ? 1 : 2)[0];
        AnyRecord healthy(kind.recordBytes), record(kind.recordBytes);
        ASSERT_EQ(healthy.read(session, id), statusOk);
        control.run("poke", poke);
        ASSERT_EQ(record.read(session, id), statusOk);
        EXPECT_TRUE(one.word == 0 || record.words[one.word] != healthy.words[one.word]);
        ItemIdRecord created{sizeof created, 1, 0, 0, 0, 0};
        const bool harmless = one.word == 2 && one.kind == 0;
        EXPECT_EQ(record.write(session, created) == statusOk, harmless);
        EXPECT_EQ(record.free(session) == statusOk, !one.leadsToNothing);
        EXPECT_EQ(healthy.free(session), statusOk);
        Json left = control.balance();
        EXPECT_TRUE(left["handedOut"].empty()) << left;
        control.run("clearPlan");
        control.run("vanish", {{"serial", annasSerial}, {"content", kind.file}, {"uid", "01"}});
        EXPECT_EQ(healthy.read(session, id), 0x80108007);
        control.reset();
    }
}

}  // namespace
}  // namespace simulator_tests
