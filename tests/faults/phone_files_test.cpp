#include "phonefs/phone_files_test.h"

#include "common/every_fault.h"

namespace ovno2 {
namespace {

using Tree =
    std::map<std::string, std::string>;  // what a folder holds: folders end with "/", files have bytes

Tree treeOf(const std::filesystem::path& root) {
    Tree tree;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string name = entry.path().lexically_relative(root).generic_string();
        if (entry.is_directory()) {
            tree[name + "/"];
        } else {
            std::ifstream file(entry.path(), std::ios::binary);
            tree[name] = {std::istreambuf_iterator<char>(file), {}};
        }
    }
    return tree;
}

// Touches only what differs: a sweep does this a thousand times.
void restore(const std::filesystem::path& root, const Tree& wanted) {
    const Tree found = treeOf(root);
    for (auto entry = found.rbegin(); entry != found.rend(); ++entry)
        if (wanted.count(entry->first) == 0) std::filesystem::remove(root / entry->first);
    for (const auto& [name, bytes] : wanted) {
        if (name.ends_with('/')) {
            std::filesystem::create_directories(root / name);
        } else if (const auto entry = found.find(name); entry == found.end() || entry->second != bytes) {
            std::ofstream(root / name, std::ios::binary) << bytes;
        }
    }
}

class PhoneFileFaults : public EveryFault<PhoneFilesTest> {
  protected:
    PhoneFileFaults() {
        writeContent(pc("put.txt"), "of the PC");
        writeContent(pc("a.txt"), "older");
        before = trees();
    }
    void attachPhones() override { attachPhone(); }

    std::pair<Tree, Tree> trees() const { return {treeOf(disk("")), treeOf(pc(""))}; }

    void prepareFiles() {
        restore(disk(""), before.first);
        restore(pc(""), before.second);
        model = u"Nokia N95";
        there = u"root/E:/empty";
    }

    // An operation that changes files has changed what it wants to, or nothing, as its result says.
    void expectAllOrNothing(const std::function<Long(covNo2&)>& run, Long done,
                            const std::set<Long>& otherwise, bool statusToo = false,
                            bool mayNotBeWritten = false) {
        std::pair<Tree, Tree> after;
        forEveryFault({.prepare = [&] { prepareFiles(); },
                       .run = run,
                       .done = done,
                       .otherwise = otherwise,
                       .statusToo = statusToo},
                      [&](Long result, Fault fault) {
                          const std::pair<Tree, Tree> found = trees();
                          if (after.first.empty()) after = found;
                          EXPECT_NE(before, after);
                          const bool untouched = mayNotBeWritten && fault != Fault::none && found == before;
                          EXPECT_TRUE(untouched || found == (result == done ? after : before))
                              << ::testing::PrintToString(found);
                      });
    }

    // Deleting, creating and renaming folders need a session that a listing has opened.
    std::function<Long(covNo2&)> inSession(std::function<Long(covNo2&)> change) {
        return [this, change = std::move(change)](covNo2& phone) {
            phone.GetDirContents(model, items, emptyFolder);
            return change(phone);
        };
    }

    std::pair<Tree, Tree> before;
    HostArray<DirItem> items;
    Text model, file = u"C:/Data/a.txt", newFile = u"new name.txt", data = u"C:/Data",
                images = u"C:/Data/Images", newFolder = u"new folder", emptyFolder = u"E:/empty",
                created = u"E:/a new folder", there, put = pcText("put.txt"), here = pcText("");
};

TEST_F(PhoneFileFaults, AListHoldsWholeEntries) {
    const Text special = u"Memory card/none/\\..";
    forEveryFault({.prepare =
                       [&] {
                           prepareFiles();
                           items.clear();
                       },
                   .run = [&](covNo2& phone) { return phone.GetDirContents(model, items, data); },
                   .done = 0,
                   .otherwise = {-1}},
                  [&](Long result, Fault fault) {
                      std::vector<Text> names;
                      for (const DirItem& item : items.elements())
                          names.push_back(item.DisplayName);
                      const std::vector<Text> whole = {u"[Images]", u"a.txt", u"locked.txt"};
                      if (result == 0 && fault != Fault::allocation) {
                          EXPECT_EQ(whole, names);
                      }
                      for (const Text& shown : names)
                          EXPECT_TRUE(shown.empty() || std::count(whole.begin(), whole.end(), shown) == 1);
                      EXPECT_EQ(before, trees());
                  });
}

// The user is told when it cannot be written; the result is about the phone.
TEST_F(PhoneFileFaults, AFileIsFetchedWholeOrTheOldOneStays) {
    expectAllOrNothing([&](covNo2& phone) { return phone.GetFile(file, here); }, 0, {-1, -2},
                       /*statusToo=*/false, /*mayNotBeWritten=*/true);
}

TEST_F(PhoneFileFaults, AFileIsPutThereWholeOrTheOldOneStays) {
    expectAllOrNothing([&](covNo2& phone) { return phone.PutFile(put, there); }, 0, {-1, -2, -3});
}

TEST_F(PhoneFileFaults, AFileIsRenamedOrNot) {
    expectAllOrNothing([&](covNo2& phone) { return phone.RenameFile(file, newFile); }, 0, {-1, -2});
}

TEST_F(PhoneFileFaults, AFileIsDeletedOrNot) {
    expectAllOrNothing(inSession([&](covNo2& phone) { return phone.DeleteFile(file); }), 1, {-1, -2});
}

TEST_F(PhoneFileFaults, AFolderIsRenamedOrNot) {
    expectAllOrNothing(inSession([&](covNo2& phone) { return phone.RenameFolder(images, newFolder); }), 0,
                       {-1, -2}, /*statusToo=*/true);
}

TEST_F(PhoneFileFaults, AFolderIsCreatedOrNot) {
    expectAllOrNothing(inSession([&](covNo2& phone) { return phone.CreateFolder(created); }), 0, {-1, -2});
}

TEST_F(PhoneFileFaults, AFolderIsDeletedOrNot) {
    expectAllOrNothing(inSession([&](covNo2& phone) { return phone.DeleteFolder(emptyFolder); }), 1,
                       {-1, -2});
}

}  // namespace
}  // namespace ovno2
