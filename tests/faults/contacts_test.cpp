#include <fstream>

#include "common/every_fault.h"
#include "common/failing_allocator.h"
#include "common/field_table.h"

namespace ovno2 {
namespace {

class ContactFaults : public EveryFault<PhoneTest> {
  protected:
    ContactFaults() {
        using Control = simulator::Control;
        const Control::Json picture = {{"format", "JPEG"}, {"file", "picture"}};
        const Control::Json book = {
            {{"uid", "01"},
             {"fields",
              {{{"id", 2}, {"text", "Anna with a long first name"}},
               {{"id", 10}, {"picture", picture}},
               {{"id", 256}, {"address", {"", "Street", "10115", "Berlin", "Land"}}}}}},
            {{"uid", "02"}, {"fields", {{{"id", 2}, {"text", "Bob"}}, {{"id", 32}, {"text", "+49"}}}}}};
        std::filesystem::create_directories(image());
        std::ofstream(image() / "picture") << "bytes";
        std::ofstream(image() / "contacts.json") << Control::phoneBook(book);
    }
    std::filesystem::path image() const { return folder.path() / "phone"; }
    void attachPhones() override {
        simulator.run("addPhone", {{"phone", simulator::Control::plainPhone("356300010000017")},
                                   {"image", image().string()}});
    }
    std::filesystem::path pictures() const { return folder.path() / "pics"; }
};

// Each contact that arrived is whole but for a value that was skipped, and the result counts them.
TEST_F(ContactFaults, AReadKeepsWhatArrivedAndCountsIt) {
    const TextTable table = tableOf({1, 2, 3, 20, 80, 49});
    const Text pictureFolder = replaceAll(pictures().u16string(), u"/", u"\\") + u"\\";
    const std::vector<Text> whole = {u"Anna with a long first name\t\t\t\t" + pictureFolder + u"01.jpg\tLand",
                                     u"Bob\t\t\t+49\t\t"};
    Text model, phoneId, phoneBook;
    TextArray groups;
    HostArray<AdrItem> items;
    // Memory that is short costs single values; a picture whose identifier is missing is named by its place.
    const auto isWhole = [&](const Text& value, Fault fault) {
        if (value == whole[0] || value == whole[1]) return true;
        if (fault != Fault::allocation) return false;
        const std::vector<Text> parts = split(value, u'\t');
        const std::vector<Text> first = split(whole[0], u'\t'), second = split(whole[1], u'\t');
        for (std::size_t i = 0; i < parts.size(); ++i)
            if (!parts[i].empty() && (i >= first.size() || parts[i] != first[i]) && parts[i] != second[i] &&
                parts[i] != pictureFolder + u"1.jpg")
                return false;
        return true;
    };
    forEveryFault({.prepare =
                       [&] {
                           model = u"Nokia N95";
                           items.clear();
                           std::filesystem::remove_all(pictures());
                       },
                   .run =
                       [&](covNo2& phone) {
                           return phone.NokiaGetAddressBookItems(model, phoneId, phoneBook, items, table,
                                                                 groups, pictureFolder);
                       },
                   .done = 2,
                   .otherwise = {1, 0, -1, -2, -3, -4, -5},
                   .statusToo = true},
                  [&](Long result, Fault fault) {
                      EXPECT_EQ(std::max(result, 0), items.hasElements() ? items.upperBound() : 0);
                      std::vector<Text> values;
                      for (Long i = 1; i <= items.upperBound(); ++i) {
                          values.push_back(items.at(i).FieldValues);
                          EXPECT_TRUE(isWhole(values.back(), fault)) << toUtf8(values.back());
                      }
                      EXPECT_TRUE(fault != Fault::none || values == whole);
                      if (std::filesystem::exists(pictures()))
                          for (const auto& file : std::filesystem::directory_iterator(pictures())) {
                              std::ifstream picture(file.path(), std::ios::binary);
                              EXPECT_EQ("bytes", std::string(std::istreambuf_iterator<char>(picture), {}));
                          }
                  });
}

}  // namespace
}  // namespace ovno2
