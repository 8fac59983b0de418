#include "common/platform_test.h"

namespace ovno2::platform {
namespace {

class AutomationSeam : public PlatformTest {
  protected:
    AutomationSeam() : files(currentPlatform().automation().create(u"Scripting.FileSystemObject")) {}

    ObjectPointer objectOf(const Variant& value) {
        const ObjectPointer* object = std::get_if<ObjectPointer>(&value);
        return object ? *object : nullptr;
    }
    template <class Step>
    FailureNumber failureOf(Step&& step) {
        try {
            step();
        } catch (const RuntimeFailure& failure) {
            return failure.number();
        }
        return noFailure;
    }

    ObjectPointer files;
};

TEST_F(AutomationSeam, AnObjectOfAnUnknownNameCannotBeCreated) {
    EXPECT_FALSE(currentPlatform().automation().create(u"Ovno2.NoSuchObject"));
    EXPECT_FALSE(currentPlatform().automation().create(u""));
    EXPECT_TRUE(files);
}

TEST_F(AutomationSeam, TheParentFolderIsThePathWithoutItsLastPart) {
    const std::pair<TextView, TextView> cases[] = {
        {u"C:\\a\\b.txt", u"C:\\a"},
        {u"C:\\a\\b\\", u"C:\\a"},
        {u"C:\\a", u"C:\\"},
        {u"C:\\", u""},
        {u"a\\b", u"a"},
        {u"a", u""},
        {u"", u""},
    };
    for (const auto& [path, parent] : cases) {
        const Variant argument = Text(path);
        EXPECT_EQ(Variant(Text(parent)), files->call(u"GetParentFolderName", {&argument, 1}))
            << std::string(path.begin(), path.end());
    }
}

TEST_F(AutomationSeam, FilesAndFoldersAreToldApart) {
    writeFile("file.txt", "12345");
    const Variant file = pathOf("file.txt");
    const Variant folder = pathOf(".");
    const Variant missing = pathOf("missing");
    const auto ask = [&](TextView method, const Variant& path) { return files->call(method, {&path, 1}); };
    EXPECT_EQ(Variant(true), ask(u"fileexists", file));
    EXPECT_EQ(Variant(false), ask(u"FileExists", folder));
    EXPECT_EQ(Variant(false), ask(u"FileExists", missing));
    EXPECT_EQ(Variant(true), ask(u"FolderExists", folder));
    EXPECT_EQ(Variant(false), ask(u"FolderExists", file));
    const ObjectPointer found = objectOf(ask(u"GetFile", file));
    ASSERT_TRUE(found);
    EXPECT_EQ(Variant(Long{5}), found->get(u"Size"));
    EXPECT_EQ(fileNotFound, failureOf([&] { ask(u"GetFile", missing); }));
}

TEST_F(AutomationSeam, DrivesAreElementsWithALetter) {
    const ObjectPointer drives = objectOf(files->get(u"Drives"));
    ASSERT_TRUE(drives);
    const std::vector<Variant> elements = drives->elements();
    ASSERT_FALSE(elements.empty());
    for (const Variant& element : elements) {
        const Variant letter = objectOf(element)->get(u"DriveLetter");
        ASSERT_TRUE(std::holds_alternative<Text>(letter));
        EXPECT_NE(u"", currentPlatform().processes().deviceName(std::get<Text>(letter) + u":"));
    }
    EXPECT_EQ(memberNotSupported, failureOf([&] { files->elements(); }));
}

TEST_F(AutomationSeam, WhatAnObjectCannotDoIsARuntimeFailure) {
    EXPECT_EQ(memberNotSupported, failureOf([&] { files->call(u"NoSuchMember"); }));
    EXPECT_EQ(memberNotSupported, failureOf([&] { files->get(u"NoSuchMember"); }));
    EXPECT_EQ(memberNotSupported, failureOf([&] { files->put(u"NoSuchMember", Long{1}); }));
}

TEST_F(AutomationSeam, TheShellHandsOutFoldersThatExistOnly) {
    const ObjectPointer shell = currentPlatform().automation().create(u"Shell.Application");
    ASSERT_TRUE(shell);
    const Variant folder = pathOf("");
    const Variant missing = pathOf("missing");
    EXPECT_TRUE(objectOf(shell->call(u"NameSpace", {&folder, 1})));
    EXPECT_FALSE(objectOf(shell->call(u"NameSpace", {&missing, 1})));
}

}  // namespace
}  // namespace ovno2::platform
