// A phone with two drives whose file system is a folder of the test's own.
#pragma once

#include <gmock/gmock.h>

#include "common/phone_test.h"
#include "devices/session.h"
#include "phonefs/file_operations.h"
#include "phonefs/nokia_files.h"

namespace ovno2 {

class PhoneFilesTest : public PhoneTest {
  protected:
    PhoneFilesTest() {
        writeContent(image() / "phone.json",
                     R"({"format": 1, "serialNumber": "356", "typeName": "Nokia N95",
                  "connections": [{"deviceNumber": 1, "medium": "usb", "deviceName": "Nokia N95"}]})");
        writeContent(image() / "files.json",
                     R"({"format": 1,
                  "drives": {"C": {"label": "Phone memory"}, "E": {"label": "Memory card", "capacity": 10000}},
                  "readOnly": ["C/Data/locked.txt"],
                  "attributes": {"C/Data/Images": "0x2000"},
                  "times": {"C/Data/a.txt": "2008-07-19T16:04:11Z", "C/Data/locked.txt": "2008-07-19T22:00:00Z"}})");
        std::filesystem::create_directories(folder.path() / "pc");
        fillDisk();
        attachPhone();
    }
    ~PhoneFilesTest() override {
        NokiaFiles::CloseFS();
        Session::DMApiTerminate();
    }

    void fillDisk() const {
        writeContent(disk("C/Data/a.txt"), "hello");
        writeContent(disk("C/Data/locked.txt"), "x");
        writeContent(disk("C/Data/Images/p.jpg"), "jpeg");
        std::filesystem::create_directories(disk("E/empty"));
    }
    void attachPhone() const { EXPECT_THAT(simulator.load(folder.path() / "phones"), ::testing::IsEmpty()); }

    std::filesystem::path image() const { return folder.path() / "phones" / "n95"; }
    std::filesystem::path disk(const std::string& path) const { return image() / "files" / path; }
    std::filesystem::path pc(const std::string& name) const { return folder.path() / "pc" / name; }
    Text pcText(const std::string& name) const { return pc(name).u16string(); }

    Long open() {
        Text model = u"Nokia N95";
        return NokiaFiles::OpenFS(model, {});
    }
    Long list(HostArray<DirItem>& items, const Text& path) {
        Text model = u"Nokia N95";
        return NokiaFiles::GetDirContents(model, items, path);
    }
};

}  // namespace ovno2
