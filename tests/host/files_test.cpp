// `ovphone files` on a phone with files of the test's own.
#include <chrono>
#include <map>

#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class OvphoneFiles : public Ovphone {
  protected:
    OvphoneFiles() {
        phones = folder.path() / "phones";
        write(phones / "n95" / "phone.json", identity);
        write(phones / "n95" / "files.json", R"({"format": 1, "nameLength": 30,
            "drives": {"C": {"label": "Phone memory"}, "E": {"label": "Memory card", "capacity": 100000}},
            "emptyFolders": ["C/Data/Empty"], "readOnly": ["C/Data/fixed.txt"],
            "times": {"C/Data/a.txt": "2008-07-19T16:04:11Z", "C/Data/fixed.txt": "2008-07-19T22:00:00Z"}})");
        write(disk("C/Data/a.txt"), "hello");
        write(disk("C/Data/fixed.txt"), std::string("\0\1\xFF\xFE\x80", 5));
        write(disk("C/Data/Images/Łódź 海.jpg"), std::string(3000, 'x'));
        write(disk("C/Data/Images/v1.2/صورة.png"), "png");
        fs::create_directories(disk("E"));
    }

    static void write(const fs::path& path, const std::string& bytes) {
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
    }
    fs::path disk(const std::string& path) const { return phones / "n95" / "files" / path; }
    fs::path pc(const std::string& path) const { return folder.path() / path; }

    // Every path below a folder, and how the files begin.
    using Tree = std::map<std::string, std::string>;
    static Tree tree(const fs::path& top) {
        Tree found;
        for (const auto& entry : fs::recursive_directory_iterator(top))
            found[fs::relative(entry.path(), top).string()] =
                entry.is_directory() ? "(folder)" : contentOf(entry.path()).substr(0, 40);
        return found;
    }
    // Sets a word of the records that a call hands out.
    static std::string poke(const char* call, const char* record, int word, const std::string& value) {
        return R"({"command": "poke", "call": ")" + std::string(call) + R"(", "record": ")" + record +
               R"(", "word": )" + std::to_string(word) + R"(, "value": )" + value + "}";
    }
    static std::string fault(const char* call, const char* status, const char* more = "") {
        return R"({"command": "fault", "call": ")" + std::string(call) + R"(", "status": ")" + status + "\"" +
               more + "}";
    }
    static std::string text(const std::string& name) { return R"({"text": ")" + name + "\"}"; }

    const std::string identity = R"({"format": 1, "serialNumber": "356", "typeName": "Nokia N95",
        "connections": [{"deviceNumber": 1, "medium": "usb", "deviceName": "Nokia N95"}]})";
};

TEST_F(OvphoneFiles, ListsDrivesFoldersAndFiles) {
    const std::string drive = R"({"path":"C:","name":"C:","kind":"drive","label":"Phone memory"})";
    EXPECT_THAT(items("files ls"), ElementsAre(drive, HasSubstr("Memory card")));
    EXPECT_EQ(run("files ls").output, run("files").output);
    EXPECT_THAT(
        items("files ls 'phone MEMORY/data'"),
        ElementsAre(HasSubstr(R"("path":"C:/Data/Empty")"), HasSubstr(R"("name":"Images","kind":"folder"})"),
                    R"({"path":"C:/Data/a.txt","name":"a.txt","kind":"file","size":5,)"
                    R"("changed":"2008-07-19T16:04:11Z"})",
                    HasSubstr(R"("readOnly":true})")));
    EXPECT_EQ(2u, items("files ls '*/d?ta/*.TXT'").size());
    EXPECT_EQ(7u, items("files ls -r C:/Data").size());
    EXPECT_THAT(run("files ls E:").errors, HasSubstr("The folder is empty."));
    EXPECT_THAT(run("files ls C:/Data").output, HasSubstr("\na.txt         5  2008-07-19 16:04:11\n"));
}

TEST_F(OvphoneFiles, DrawsTheTree) {
    EXPECT_EQ(
        "C:/Data\n"
        "├── Empty\n"
        "├── Images\n"
        "│   ├── v1.2\n"
        "│   │   └── صورة.png  3 bytes\n"
        "│   └── Łódź 海.jpg  2.9 KB\n"
        "├── a.txt  5 bytes\n"
        "└── fixed.txt  5 bytes\n"
        "\n3 folders, 4 files, 2.9 KB\n",
        run("files tree C:/Data").output);
    const std::string whole = json("files tree");
    EXPECT_THAT(whole, StartsWith("{\n  \"phone\": \"Nokia N95\",\n  \"entries\": [\n    {\n"));
    EXPECT_THAT(whole, HasSubstr("\n                      \"name\": \"صورة.png\",\n"));
    EXPECT_THAT(whole, EndsWith("\"label\": \"Memory card\",\n      \"entries\": []\n    }\n  ]\n}\n"));
    const std::string several = json("files tree E: 'C:/Data/*'");
    EXPECT_THAT(several, AllOf(StartsWith("[\n{\n  \"path\": \"E:\""), EndsWith("\n}\n]\n"),
                               HasSubstr("\n}\n,\n{\n  \"path\": \"C:/Data/a.txt\",\n")));
}

TEST_F(OvphoneFiles, AFolderGoesThereAndBack) {
    EXPECT_EQ(0, run("files get -r C:/Data here").status);
    EXPECT_EQ(tree(disk("C/Data")), tree(pc("here/Data")));
    const Outcome put = run("files put -r here/Data 'Memory card'");
    EXPECT_EQ(0, put.status) << put.errors;
    EXPECT_THAT(put.output, HasSubstr("4 files copied (2.9 KB"));
    EXPECT_EQ(tree(pc("here/Data")), tree(disk("E/Data")));
    EXPECT_EQ(0, run("files get -r E:/Data/* back").status);
    EXPECT_EQ(tree(pc("here/Data")), tree(pc("back")));

    EXPECT_EQ(0, run("files get -r / all").status);
    EXPECT_EQ(tree(disk("")), tree(pc("all")));
}

TEST_F(OvphoneFiles, WhatIsThereIsSkippedAndOnlyForceOverwrites) {
    write(pc("new.txt"), "new");
    const std::string get = "get C:/Data/a.txt C:/Data/fixed.txt here",
                      put = "put here/a.txt new.txt C:/Data";
    const fs::path here = pc("here/a.txt"), there = disk("C/Data/new.txt");
    struct {
        fs::path changed;  // before the command, to "other"
        std::string arguments;
        int status;
        const char* first;  // what becomes of the two files
        const char* second;
        std::string content = "other";
        bool isForgotten = false;  // what was sent
    } const steps[] = {
        {{}, get, 0, "copied", "copied"},
        {{}, get, 0, "equal", "equal"},
        {here, get, 1, "failed", "equal"},
        {{}, get + " -f", 0, "copied", "equal"},
        {{}, put, 0, "equal", "copied"},
        {{}, put, 0, "equal", "equal"},
        {pc("new.txt"), put, 1, "equal", "failed"},
        {{}, put + " --force", 0, "equal", "copied"},
        {pc("new.txt"), put, 0, "equal", "equal"},  // touched only
        {disk("C/Data/new.txt"), put, 0, "equal", "equal"},
        {pc("new.txt"), put, 1, "equal", "failed", "OTHER"},  // neither size nor time tells
        {pc("new.txt"), put, 1, "equal", "failed", "OTHER", /*isForgotten=*/true},
        {{}, put, 1, "equal", "failed", "", true},
    };
    for (const auto& step : steps) {
        if (step.isForgotten) fs::remove_all(pc("home/ovphone"));
        if (!step.changed.empty()) write(step.changed, step.content);
        if (step.content == "OTHER")
            fs::last_write_time(step.changed, fs::file_time_type::clock::now() - std::chrono::years(1));
        EXPECT_THAT(items("files " + step.arguments, step.status),
                    ElementsAre(HasSubstr(step.first), HasSubstr(step.second)));
    }
    EXPECT_EQ("hello", contentOf(here));
    EXPECT_EQ("other", contentOf(there));
    EXPECT_EQ(
        std::chrono::sys_days(std::chrono::July / 19 / 2008) + std::chrono::seconds(16 * 3600 + 4 * 60 + 11),
        std::chrono::file_clock::to_sys(fs::last_write_time(here)));
    write(here, "HELLO");
    EXPECT_THAT(run("files " + get).errors, HasSubstr("--force overwrites it"));
}

TEST_F(OvphoneFiles, ATimeThatNoFileCanHaveIsLeftOut) {
    for (const char* high : {"\"0x00000000\"", "\"0x0F000000\"", "\"0x7FFFFFFF\""}) {
        const std::string plan = poke("CONAFindNextFile", "file", 3, high);
        EXPECT_THAT(run("files ls C:/Data/a.txt --format json", plan).output,
                    AllOf(HasSubstr("a.txt"), Not(HasSubstr("changed"))));
        EXPECT_EQ(0, run("files get -f C:/Data/a.txt here/", plan).status);
        EXPECT_EQ("hello", contentOf(pc("here/a.txt")));
    }
}

TEST_F(OvphoneFiles, NoNameLeadsOutOfTheTargetFolder) {
    for (const char* name : {"con.txt", "a:b", "tab\tbell\a", "dot.", "what?", "a\\b", "quote\""})
        write(disk(std::string("E/odd/") + name), name);
    const Outcome odd = run("files get -r E:/odd 'in here'");
    EXPECT_EQ(1, odd.status);
    EXPECT_EQ((Tree{{"odd", "(folder)"},
                    {"odd/_con.txt", "con.txt"},
                    {"odd/a_b", "a:b"},
                    {"odd/tab_bell_", "tab\tbell\a"},
                    {"odd/dot_", "dot."},
                    {"odd/what_", "what?"}}),
              tree(pc("in here")));
    EXPECT_THAT(odd.errors, AllOf(HasSubstr("no path can name it"), HasSubstr("tab bell␇ is stored as"),
                                  Not(HasSubstr("\a"))));
    for (const char* name : {R"(..\\..\\evil)", "../../evil", "/evil", "..", "x/../../evil"})
        expectOutcome({"files get -r C:/Data deep/er", 1, "cannot be copied",
                       poke("CONAFindNextFile", "file", 0, text(name))});
    for (const auto& [path, content] : tree(folder.path()))
        EXPECT_THAT(path, AllOf(Not(HasSubstr("evil")), Not(HasSubstr(".ovphone"))));

    // A link in the target folder leads out of it as well.
    fs::create_directories(pc("outside"));
    fs::create_directories(pc("linked/Data"));
    fs::create_directory_symlink(pc("outside"), pc("linked/Data/Images"));
    EXPECT_EQ(1, run("files get -r C:/Data linked").status);
    EXPECT_TRUE(fs::is_empty(pc("outside")));
    EXPECT_EQ("hello", contentOf(pc("linked/Data/a.txt")));
}

TEST_F(OvphoneFiles, ChangesThePhonesFiles) {
    const Case cases[] = {
        {"mkdir C:/Data/New.folder", 0, ""},
        {"mkdir C:/Data/New.folder", 1, "C:/Data/New.folder is there already."},
        {"mkdir C:/x/y", 1, "-p makes it, too"},
        {"mkdir -p C:/x/y.z/w C:/Data", 0, ""},
        {"mkdir X", 1, "on a drive"},
        {"mv C:/x/y.z Y", 0, ""},
        {"mv C:/Data/a.txt c:/data/A2.txt", 0, ""},
        {"mv C:/Data/A2.txt fixed.txt", 1, "C:/Data/fixed.txt is there already"},
        {"mv C:/Data/A2.txt E:/A2.txt", 1, "renames within a folder only"},
        {"mv C:/Data/A2.txt 'what?'", 1, "Nokia N95 did not rename C:/Data/A2.txt."},
        {"mv C: D:", 1, "C: is a drive"},
        {"rmdir C:/Data", 1, "C:/Data is not empty"},
        {"rmdir C:/Data/A2.txt", 1, "is a file"},
        {"rmdir C:/Data/New.folder C:/x/Y/w", 0, ""},
        {"rm C:/x", 1, "C:/x is a folder; -r deletes it"},
        {"rm -r C:/x 'C:/Data/A*'", 0, ""},
        {"rm C:/Data/fixed.txt", 1, "is read-only"},
        {"rm -r C:", 1, "C: is a drive"},
        {"rm C:/Data/fixd.txt", 1, "Did you mean \"fixed.txt\"?"},
        {"rm 'C:/*.doc'", 1, "there is nothing of that name"},
        {"rm -r C:/Data", 1, "C:/Data is not empty and stays"},
    };
    for (const Case& c : cases)
        expectOutcome({"files " + c.arguments, c.status, c.message});
    EXPECT_EQ((Tree{{"C", "(folder)"},
                    {"C/Data", "(folder)"},
                    {"C/Data/fixed.txt", std::string("\0\1\xFF\xFE\x80", 5)},
                    {"E", "(folder)"}}),
              tree(disk("")));
}

TEST_F(OvphoneFiles, AFaultIsExplainedAndLeavesNoHalfFile) {
    write(pc("large.bin"), std::string(200000, 'x'));
    write(pc("a name that is too long for the phone.txt"), "x");
    write(pc("fixed.txt"), "changed");
    const std::string drop = R"({"command": "drop", "bytes": 1000})", all = "get -f -r C:/Data here",
                      odd = R"({"command": "poke", "call": "CONAFindNextFolder", "nth": 4, "record": "folder",
                               "word": 0, "value": )";
    const Case cases[] = {
        {"put large.bin E:", 1, "Its memory may be full"},
        {"put 'a name that is too long for the phone.txt' C:", 1, "the name too long"},
        {"put -f fixed.txt C:/Data", 1, "C:/Data/fixed.txt is read-only"},
        {"put large.bin C:/Data", 1, "The connection to Nokia N95 was lost", drop},
        {all, 1, "The connection to Nokia N95 was lost", drop},
        {all, 1, "did not hand out C:/Data/", fault("CONAReadFile", "0x80100001")},
        {all, 1, "did not hand out", poke("CONAReadFile", "data", 0, "\"unmapped\"")},
        {"get -r C:/Data odd", 1, "no path can name the folder", odd + text("..") + "}"},
        {"get -r C:/Data odd", 1, "did not list C:/Data/C:; what is in it is missing",
         odd + text("C:") + "}"},
        {"tree", 1, "what is in it is missing", fault("CONAFindBegin", "0x80100001", R"(, "nth": 5)")},
        {"ls", 1, "did not open its files", fault("CONAOpenFS", "0x80100014", R"(, "onwards": true)")},
        {"ls -r C:", 1, "C: only in part: after 1 of its files and folders it gave up",
         fault("CONAFindNextFile", "0x80200006", R"(, "nth": 2)")},
        {"get C:/Data/a.txt there/", 1, "arrived with 2 bytes instead of 5 bytes",
         poke("CONAReadFile", "file", 4, "2")},
    };
    run("files ls");  // makes the image's empty folders
    const Tree before = tree(disk(""));
    for (const Case& c : cases) {
        expectOutcome({"files " + c.arguments, c.status, c.message, c.plan});
        EXPECT_EQ(before, tree(disk(""))) << c.arguments;
    }
    for (const auto& [path, content] : tree(folder.path()))
        EXPECT_THAT(path, AllOf(Not(HasSubstr(".incoming")), Not(HasSubstr(".ovphone"))));
    EXPECT_TRUE(fs::is_empty(pc("there")));
    EXPECT_EQ("hello", contentOf(pc("odd/Data/a.txt")));
    EXPECT_EQ(0, run("files get -r C:/Data here").status) << "what was cut off goes on";
    EXPECT_EQ(tree(disk("C/Data")), tree(pc("here/Data")));
}

TEST_F(OvphoneFiles, TwoThatCopyIntoOneFolderDoNotMixTheirFiles) {
    for (int i = 0; i < 30; ++i)
        for (const char* drive : {"C", "E"})
            write(disk(drive + std::string("/Many/") + std::to_string(i)), drive + std::string(20000, 'x'));
    const auto get = [&](const std::string& more) { return "'" OVPHONE "' files get -r " + more; };
    runLine("sh -c \"" + get("C:/Many two & ") + get("C:/Many two & ") + get("E:/Many two -f & ") + "wait\"");
    for (const auto& [path, content] : tree(pc("two")))
        EXPECT_TRUE(path == "Many" || content.size() == 40) << path;
    EXPECT_EQ(31u, tree(pc("two")).size());
    runLine("sh -c \"" + get("C:/Many same & ") + get("C:/Many same >out2 2>&1 & ") + "wait\"");
    EXPECT_EQ(tree(disk("C/Many")), tree(pc("same/Many")));
}

TEST_F(OvphoneFiles, OneNameThatFailsDoesNotKeepTheOthers) {
    write(pc("b.txt"), "b");
    const Case cases[] = {
        {"get C:/none 'C:/Data/*' here/", 1, "there is no \"none\""},
        {"put none b.txt C:/Data", 1, "no file or folder \"none\""},
        {"ls C:/none C:/Data/b.txt", 1, "there is no \"none\""},
        {"rm C:/Data C:/none C:/Data/fixed.txt C:/Data/b.txt", 1, "C:/Data is a folder"},
    };
    for (const Case& c : cases)
        expectOutcome({"files " + c.arguments, c.status, c.message});
    EXPECT_EQ("hello", contentOf(pc("here/a.txt")));
    EXPECT_THAT(run("files get C:/none C:/Data/a.txt new/").output, HasSubstr("1 file copied"));
    EXPECT_FALSE(fs::exists(disk("C/Data/b.txt")));
    const std::string gone = R"({"command": "drop", "bytes": 3003})";
    EXPECT_THAT(run("files get -r C:/Data cut", gone).output, HasSubstr("2 of 4 files copied"));
    EXPECT_EQ(4u, items("files get -r -f C:/Data cut", 0).size());
}

TEST_F(OvphoneFiles, CopiesGetTheirNamesAsCpGivesThem) {
    write(pc("b.txt"), "b");
    fs::create_directories(pc("dir"));
    const Case cases[] = {
        {"get C:/Data/a.txt new.txt", 0, ""},
        {"get C:/Data/a.txt dir", 0, ""},
        {"get C:/Data/a.txt none/new.txt", 1, "there is no folder"},
        {"get 'C:/Data/a*' pattern", 0, ""},
        {"put b.txt C:/Data/c.txt", 0, ""},
        {"put b.txt C:/Data/c.txt", 0, ""},
        {"put new.txt C:/Data/c.txt", 1, "differs"},
        {"put b.txt C:/Data/d/", 1, "there is no \"d\""},
        {"put b.txt new.txt C:/Data/d", 1, "there is no \"d\""},
        {"put -n -f new.txt C:/Data/c.txt", 0, ""},
        {"rm -r -n C:/Data", 1, "read-only"},
    };
    for (const Case& c : cases)
        expectOutcome({"files " + c.arguments, c.status, c.message});
    for (const char* copy : {"new.txt", "dir/a.txt", "pattern/a.txt"})
        EXPECT_EQ("hello", contentOf(pc(copy))) << copy;
    EXPECT_EQ("b", contentOf(disk("C/Data/c.txt")));
    EXPECT_EQ("hellob", run("files cat C:/Data/a.txt C:/Data/c.txt").output);
    EXPECT_EQ("hello", run("files get C:/Data/a.txt -").output);
    EXPECT_EQ("", run("files get -q C:/Data/fixed.txt dir").output);
    EXPECT_THAT(run("files get -v C:/Data/a.txt dir").output, StartsWith("already there: C:/Data/a.txt"));
}

TEST_F(OvphoneFiles, ATextIsNotSentWhenCharactersWouldBeLost) {
    write(pc("western.txt"), std::string("\xFF\xFE\xE4\0b\0", 6));
    write(pc("greek.txt"), std::string("\xFF\xFE\xB1\x03", 4));
    const Outcome outcome = run("files put western.txt greek.txt C:");
    EXPECT_EQ(1, outcome.status);
    EXPECT_THAT(outcome.errors,
                AllOf(HasSubstr("western.txt went to the phone as text"), HasSubstr("would be lost")));
    EXPECT_EQ(
        "\xE4"
        "b",
        contentOf(disk("C/western.txt")));
    EXPECT_FALSE(fs::exists(disk("C/greek.txt")));
    EXPECT_EQ(0, run("files put western.txt C:").status);
}

TEST_F(OvphoneFiles, ALineThatCannotBeMeantIsWrongUsage) {
    write(phones / "twin" / "phone.json",
          R"({"format": 1, "serialNumber": "357", "typeName": "Nokia N95",
              "connections": [{"deviceNumber": 2, "medium": "usb", "deviceName": "Nokia N95"}]})");
    const Case cases[] = {
        {"ls C:/Data/../x", 2, "without \"..\""},
        {"get C:Data", 2, "as in \"C:/Data\""},
        {"get", 2, "required"},
        {"put a.txt", 2, "required"},
        {"mv C:/Data a b", 2, "b"},
        {"copy", 2, "copy"},
        {"get C:/Data", 1, "C:/Data is a folder; -r gets it"},
        {"get C:/Data/a.txt/b", 1, "C:/Data/a.txt is a file"},
        {"get C:/Dota here", 1, "Did you mean \"Data\"?"},
        {"put --phone 356 nothing C:", 1, "There is no file or folder \"nothing\""},
        {"put --phone 356 output errors C:/Data/a.txt", 1, "is a file; name the folder"},
        {"put --phone 356 output /", 1, "Files go to a drive"},
        {"ls --phone 356", 0, ""},
        {"ls", 0, "This is Nokia N95 (356), the first of 2 phones; --phone chooses another."},
        {"rm C:/Data/a.txt", 1, "say with --phone which one to change"},
        {"ls --phone ''", 1, "an empty name means no phone"},
        {"ls --phone 357", 1, "Detach the one with the serial number 356"},
    };
    for (const Case& c : cases)
        expectOutcome({"files " + c.arguments, c.status, c.message});
}

}  // namespace

}  // namespace ovno2::host
