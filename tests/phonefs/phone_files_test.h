// A phone with two drives whose file system is a folder of the test's own.
#pragma once

#include <fstream>
#include <gmock/gmock.h>
#include <iterator>

#include "common/phone_test.h"
#include "devices/session.h"
#include "phonefs/file_operations.h"
#include "phonefs/nokia_files.h"

namespace ovno2 {

class PhoneFilesTest : public PhoneTest {
  protected:
    PhoneFilesTest() {
        write(image() / "phone.json",
              R"({"format": 1, "serialNumber": "356", "typeName": "Nokia N95",
                  "connections": [{"deviceNumber": 1, "medium": "usb", "deviceName": "Nokia N95"}]})");
        write(image() / "files.json",
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
        write(disk("C/Data/a.txt"), "hello");
        write(disk("C/Data/locked.txt"), "x");
        write(disk("C/Data/Images/p.jpg"), "jpeg");
        std::filesystem::create_directories(disk("E/empty"));
    }
    void attachPhone() const { EXPECT_THAT(simulator.load(folder.path() / "phones"), ::testing::IsEmpty()); }

    std::filesystem::path image() const { return folder.path() / "phones" / "n95"; }
    std::filesystem::path disk(const std::string& path) const { return image() / "files" / path; }
    std::filesystem::path pc(const std::string& name) const { return folder.path() / "pc" / name; }
    Text pcText(const std::string& name) const { return pc(name).u16string(); }

    static void write(const std::filesystem::path& path, const std::string& bytes) {
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
    }
    static std::string contentOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

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
