#include "base/text_pairs.h"
#include "base/utf8.h"
#include "common/platform_test.h"
#include "core/attempt.h"

namespace ovno2::platform {
namespace {

class AutomationSeam : public PlatformTest {
  protected:
    static ObjectPointer create(TextView name) { return currentPlatform().automation().create(name); }
    static ObjectPointer objectOf(const Variant& value) {
        const ObjectPointer* object = std::get_if<ObjectPointer>(&value);
        return object ? *object : nullptr;
    }
    Variant ask(TextView method, const Variant& argument) { return files->call(method, {&argument, 1}); }

    ObjectPointer files = create(u"Scripting.FileSystemObject");
};

TEST_F(AutomationSeam, ObjectsAndMembersThatAreNotThereAreRefused) {
    ASSERT_TRUE(files);
    EXPECT_FALSE(create(u"Ovno2.NoSuchObject"));
    EXPECT_FALSE(create(u""));
    EXPECT_EQ(memberNotSupported, attempt([&] { files->call(u"NoSuchMember"); }));
    EXPECT_EQ(memberNotSupported, attempt([&] { files->get(u"NoSuchMember"); }));
    EXPECT_EQ(memberNotSupported, attempt([&] { files->put(u"NoSuchMember", Long{1}); }));
    EXPECT_EQ(memberNotSupported, attempt([&] { files->elements(); }));
}

TEST_F(AutomationSeam, TheParentFolderIsThePathWithoutItsLastPart) {
    for (const auto& [path, parent] :
         pairsOf(u"C:\\a\\b.txt=C:\\a|C:\\a\\b\\=C:\\a|C:\\a=C:\\|C:\\=|a\\b=a|a=|="))
        EXPECT_EQ(Variant(parent), ask(u"GetParentFolderName", path)) << toUtf8(path);
}

TEST_F(AutomationSeam, FilesAndFoldersAreToldApart) {
    writeFile("file.txt", "12345");
    const Variant file = pathOf("file.txt"), folder = pathOf("."), missing = pathOf("missing");
    EXPECT_EQ(Variant(true), ask(u"fileexists", file));
    EXPECT_EQ(Variant(false), ask(u"FileExists", folder));
    EXPECT_EQ(Variant(false), ask(u"FileExists", missing));
    EXPECT_EQ(Variant(true), ask(u"FolderExists", folder));
    EXPECT_EQ(Variant(false), ask(u"FolderExists", file));
    const ObjectPointer found = objectOf(ask(u"GetFile", file));
    ASSERT_TRUE(found);
    EXPECT_EQ(Variant(Long{5}), found->get(u"Size"));
    EXPECT_EQ(fileNotFound, attempt([&] { ask(u"GetFile", missing); }));
    // The shell hands out folders that exist only.
    const ObjectPointer shell = create(u"Shell.Application");
    ASSERT_TRUE(shell);
    EXPECT_TRUE(objectOf(shell->call(u"NameSpace", {&folder, 1})));
    EXPECT_FALSE(objectOf(shell->call(u"NameSpace", {&missing, 1})));
}

TEST_F(AutomationSeam, DrivesAreElementsWithALetter) {
    const std::vector<Variant> elements = objectOf(files->get(u"Drives"))->elements();
    ASSERT_FALSE(elements.empty());
    for (const Variant& element : elements) {
        const Text letter = std::get<Text>(objectOf(element)->get(u"DriveLetter"));
        EXPECT_NE(u"", currentPlatform().processes().deviceName(letter + u":"));
    }
}

}  // namespace
}  // namespace ovno2::platform
