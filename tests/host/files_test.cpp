// `ovphone files` on a phone with files of the test's own.
#include <chrono>
#include <map>

#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

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
    static std::map<std::string, std::string> tree(const fs::path& top) {
        std::map<std::string, std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(top))
            found[fs::relative(entry.path(), top).string()] =
                entry.is_directory() ? "(folder)" : contentOf(entry.path()).substr(0, 40);
        return found;
    }
    // With commands for the simulator.
    Outcome runPlanned(const std::string& arguments, const std::string& plan) {
        write(pc("plan.json"), plan);
        return run(arguments, "OVNO2_SIMULATOR_PLAN='" + pc("plan.json").string() + "'");
    }

    const std::string identity = R"({"format": 1, "serialNumber": "356", "typeName": "Nokia N95",
        "connections": [{"deviceNumber": 1, "medium": "usb", "deviceName": "Nokia N95"}]})";
};

TEST_F(OvphoneFiles, ListsDrivesFoldersAndFiles) {
    const json drives = runJson("files ls");
    ASSERT_EQ(2u, drives.size());
    EXPECT_EQ(json::parse(R"({"path":"C:","name":"C:","kind":"drive","label":"Phone memory"})"), drives[0]);
    EXPECT_EQ(run("files ls").output, run("files").output);

    const json data = runJson("files ls 'phone MEMORY/data'");
    ASSERT_EQ(4u, data.size());
    EXPECT_EQ("C:/Data/Empty", data[0]["path"]);
    EXPECT_EQ(json::parse(R"({"path":"C:/Data/a.txt","name":"a.txt","kind":"file","size":5,
                              "changed":"2008-07-19T16:04:11Z"})"),
              data[2]);
    EXPECT_EQ(true, data[3]["readOnly"]);

    EXPECT_EQ(2u, runJson("files ls '*/d?ta/*.TXT'").size());
    EXPECT_EQ(7u, runJson("files ls -r C:/Data").size());
    EXPECT_THAT(run("files ls E:").errors, HasSubstr("The folder is empty."));
    EXPECT_THAT(run("files ls C:/Data").output, HasSubstr("\na.txt         5  2008-07-19 16:04:11\n"));
}

TEST_F(OvphoneFiles, DrawsTheTree) {
    const Outcome drawn = run("files tree C:/Data");
    EXPECT_EQ(0, drawn.status);
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
        drawn.output);
    const json whole = runJson("files tree");
    EXPECT_EQ("Nokia N95", whole["phone"]);
    EXPECT_EQ("صورة.png",
              whole["entries"][0]["entries"][0]["entries"][1]["entries"][0]["entries"][0]["name"]);
    EXPECT_EQ(json::array(), whole["entries"][1]["entries"]);
    EXPECT_EQ("C:/Data/a.txt", runJson("files tree E: 'C:/Data/*'")[3]["path"]);
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
    const auto results = [&](const std::string& arguments, int status) {
        const Outcome outcome = run(arguments + " --format json");
        EXPECT_EQ(status, outcome.status) << outcome.errors;
        std::vector<std::string> found;
        for (const json& result : json::parse(outcome.output))
            found.push_back(result["result"]);
        return found;
    };
    const std::string get = "files get C:/Data/a.txt C:/Data/fixed.txt here";
    EXPECT_THAT(results(get, 0), ElementsAre("copied", "copied"));
    const auto time = fs::last_write_time(pc("here/a.txt"));
    EXPECT_EQ(
        std::chrono::sys_days(std::chrono::July / 19 / 2008) + std::chrono::seconds(16 * 3600 + 4 * 60 + 11),
        std::chrono::file_clock::to_sys(time));
    EXPECT_THAT(results(get, 0), ElementsAre("equal", "equal"));
    write(pc("here/a.txt"), "HELLO");
    EXPECT_THAT(results(get, 1), ElementsAre("failed", "equal"));
    EXPECT_THAT(run(get).errors, HasSubstr("--force overwrites it"));
    EXPECT_EQ("HELLO", contentOf(pc("here/a.txt")));
    EXPECT_THAT(results(get + " -f", 0), ElementsAre("copied", "equal"));
    EXPECT_EQ("hello", contentOf(pc("here/a.txt")));

    write(pc("here/b.txt"), "new");
    const std::string put = "files put here/a.txt here/b.txt C:/Data";
    EXPECT_THAT(results(put, 0), ElementsAre("equal", "copied"));
    EXPECT_THAT(results(put, 0), ElementsAre("equal", "equal"));
    write(pc("here/b.txt"), "newer");
    EXPECT_THAT(results(put, 1), ElementsAre("equal", "failed"));
    EXPECT_THAT(results(put + " --force", 0), ElementsAre("equal", "copied"));
    EXPECT_EQ("newer", contentOf(disk("C/Data/b.txt")));
}

TEST_F(OvphoneFiles, ATimeThatNoFileCanHaveIsLeftOut) {
    for (const char* high : {"0x00000000", "0x0F000000", "0x7FFFFFFF"}) {
        const std::string plan =
            R"({"command": "poke", "call": "CONAFindNextFile", "record": "file", "word": 3,
                                     "value": ")" +
            std::string(high) + R"("})";
        const Outcome listed = runPlanned("files ls C:/Data/a.txt --format json", plan);
        EXPECT_FALSE(json::parse(listed.output)[0].contains("changed")) << listed.output;
        EXPECT_EQ(0, runPlanned("files get -f C:/Data/a.txt here", plan).status);
        EXPECT_EQ("hello", contentOf(pc("here/a.txt")));
    }
}

TEST_F(OvphoneFiles, NoNameLeadsOutOfTheTargetFolder) {
    for (const char* name : {"con.txt", "a:b", "tab\tbell\a", "dot.", "what?", "a\\b", "quote\""})
        write(disk(std::string("E/odd/") + name), name);
    const Outcome odd = run("files get -r E:/odd 'in here'");
    EXPECT_EQ(1, odd.status);
    EXPECT_EQ((std::map<std::string, std::string>{{"odd", "(folder)"},
                                                  {"odd/_con.txt", "con.txt"},
                                                  {"odd/a_b", "a:b"},
                                                  {"odd/tab_bell_", "tab\tbell\a"},
                                                  {"odd/dot_", "dot."},
                                                  {"odd/what_", "what?"}}),
              tree(pc("in here")));
    EXPECT_THAT(odd.errors, HasSubstr("no path can name it"));
    EXPECT_THAT(odd.errors, AllOf(HasSubstr("tab bell␇ is stored as"), Not(HasSubstr("\a"))));

    for (const char* name : {R"(..\\..\\evil)", "../../evil", "/evil", "..", "x/../../evil"}) {
        const Outcome outcome =
            runPlanned("files get -r C:/Data deep/er",
                       R"({"command": "poke", "call": "CONAFindNextFile", "record": "file",
                "word": 0, "value": {"text": ")" +
                           std::string(name) + R"("}})");
        EXPECT_EQ(1, outcome.status) << name;
        EXPECT_THAT(outcome.errors, HasSubstr("cannot be copied"));
    }
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

TEST_F(OvphoneFiles, AFolderThatCannotBeListedIsLeftOut) {
    struct {
        const char* name;
        const char* message;
    } const cases[] = {{"..", "no path can name the folder"},
                       {"C:", "did not list C:/Data/C:; it is left out"}};
    for (const auto& c : cases) {
        const Outcome outcome = runPlanned(
            "files get -f -r C:/Data here",
            R"({"command": "poke", "call": "CONAFindNextFolder", "nth": 4, "record": "folder", "word": 0,
                "value": {"text": ")" +
                std::string(c.name) + R"("}})");
        EXPECT_EQ(1, outcome.status);
        EXPECT_THAT(outcome.errors, HasSubstr(c.message));
        EXPECT_EQ("hello", contentOf(pc("here/Data/a.txt")));
    }
    EXPECT_EQ(
        1, runPlanned("files tree", R"({"command": "fault", "call": "CONAFindBegin", "status": "0x80100001",
                                              "nth": 5})")
               .status);
}

TEST_F(OvphoneFiles, ChangesThePhonesFiles) {
    struct {
        const char* arguments;
        int status;
        const char* message;
    } const cases[] = {
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
    for (const auto& c : cases) {
        const Outcome outcome = run(std::string("files ") + c.arguments);
        EXPECT_EQ(c.status, outcome.status) << c.arguments;
        EXPECT_THAT(outcome.errors, *c.message ? ::testing::Matcher<std::string>(HasSubstr(c.message))
                                               : ::testing::Matcher<std::string>(IsEmpty()))
            << c.arguments;
        EXPECT_THAT(outcome.output, IsEmpty());
    }
    EXPECT_EQ((std::map<std::string, std::string>{{"C", "(folder)"},
                                                  {"C/Data", "(folder)"},
                                                  {"C/Data/fixed.txt", std::string("\0\1\xFF\xFE\x80", 5)},
                                                  {"E", "(folder)"}}),
              tree(disk("")));
}

TEST_F(OvphoneFiles, AFaultIsExplainedAndLeavesNoHalfFile) {
    write(pc("large.bin"), std::string(200000, 'x'));
    write(pc("a name that is too long for the phone.txt"), "x");
    write(pc("fixed.txt"), "changed");
    struct {
        const char* arguments;
        const char* plan;
        const char* message;
    } const cases[] = {
        {"put large.bin E:", "[]", "Its memory may be full"},
        {"put 'a name that is too long for the phone.txt' C:", "[]", "the name too long"},
        {"put -f fixed.txt C:/Data", "[]", "C:/Data/fixed.txt is read-only"},
        {"put large.bin C:/Data", R"({"command": "drop", "bytes": 1000})",
         "The connection to Nokia N95 was lost"},
        {"get -r C:/Data here", R"({"command": "drop", "bytes": 1000})",
         "The connection to Nokia N95 was lost"},
        {"get -r C:/Data here", R"({"command": "fault", "call": "CONAReadFile", "status": "0x80100001"})",
         "did not hand out C:/Data/"},
        {"ls", R"({"command": "fault", "call": "CONAOpenFS", "status": "0x80100014", "onwards": true})",
         "did not open its files"},
        {"ls -r C:", R"({"command": "fault", "call": "CONAFindNextFile", "nth": 2, "status": "0x80200006"})",
         "did not list C:"},
        {"get -r C:/Data here",
         R"({"command": "poke", "call": "CONAReadFile", "record": "data", "word": 0, "value": "unmapped"})",
         "did not hand out"},
        {"get C:/Data/a.txt there",
         R"({"command": "poke", "call": "CONAReadFile", "record": "file", "word": 4, "value": 2})",
         "arrived with 2 bytes instead of 5 bytes"},
    };
    run("files ls");  // makes the image's empty folders
    const auto before = tree(disk(""));
    for (const auto& c : cases) {
        const Outcome outcome = runPlanned(std::string("files ") + c.arguments, c.plan);
        EXPECT_EQ(1, outcome.status) << c.arguments;
        EXPECT_THAT(outcome.errors, HasSubstr(c.message)) << c.arguments;
        EXPECT_EQ(before, tree(disk(""))) << c.arguments;
    }
    for (const auto& [path, content] : tree(folder.path()))
        EXPECT_THAT(path, AllOf(Not(HasSubstr(".incoming")), Not(HasSubstr(".ovphone"))));
    EXPECT_TRUE(fs::is_empty(pc("there")));
    EXPECT_EQ(0, run("files get -r C:/Data here").status) << "what was cut off goes on";
    EXPECT_EQ(tree(disk("C/Data")), tree(pc("here/Data")));
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
    struct {
        const char* arguments;
        int status;
        const char* message;
    } const cases[] = {
        {"files ls C:/Data/../x", 2, "without \"..\""},
        {"files get C:Data", 2, "as in \"C:/Data\""},
        {"files get", 2, "required"},
        {"files put a.txt", 2, "required"},
        {"files mv C:/Data a b", 2, "b"},
        {"files copy", 2, "copy"},
        {"files get C:/Data", 1, "C:/Data is a folder; -r gets it"},
        {"files get C:/Data/a.txt/b", 1, "C:/Data/a.txt is a file"},
        {"files get C:/Dota here", 1, "Did you mean \"Data\"?"},
        {"files put nothing C:", 1, "There is no file or folder \"nothing\""},
        {"files put output C:/Data/a.txt", 1, "is a file; name the folder"},
        {"files put output /", 1, "Files go to a drive"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = run(c.arguments);
        EXPECT_EQ(c.status, outcome.status) << c.arguments;
        EXPECT_THAT(outcome.errors, HasSubstr(c.message)) << c.arguments;
    }
    write(phones / "twin" / "phone.json",
          R"({"format": 1, "serialNumber": "357", "typeName": "Nokia N95",
              "connections": [{"deviceNumber": 2, "medium": "usb", "deviceName": "Nokia N95"}]})");
    EXPECT_EQ(0, run("files ls --phone 356").status);
    const Outcome twin = run("files ls --phone 357");
    EXPECT_EQ(1, twin.status);
    EXPECT_THAT(twin.errors, HasSubstr("Detach the one with the serial number 356"));
}

}  // namespace

}  // namespace ovno2::host
