#include <algorithm>
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

// A phone book of which one contact is changed, one is new and one goes, in one session.
class ContactWriteFaults : public ContactFaults {
  protected:
    std::string book() const {
        std::ifstream file(image() / "contacts.json");
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void putBack() {
        std::ofstream(image() / "picture") << "bytes";
        std::ofstream(image() / "contacts.json") << before;
    }
    void attachPhones() override {
        putBack();
        ContactFaults::attachPhones();
    }
    const std::string before = book();
};

TEST_F(ContactWriteFaults, ASessionChangesAllOfThePhoneBookOrNothing) {
    const TextTable table = tableOf({1, 2, 20, 80, 6, 17});
    std::string after;
    Text model, phoneId, changed, added;
    Text values[2];
    TextArray tempids, uids;
    bool allWritten = false;
    forEveryFault({.prepare =
                       [&] {
                           putBack();
                           model = u"Nokia N95";
                           phoneId.clear();
                           changed = u"01";
                           added.clear();
                           values[0] = u"Anna with another first name\tKurz\t+49\t\tStreet 2\t1975-04-12";
                           values[1] = u"Dora with a long first name\tNew\t+41 and more";
                           tempids.clear();
                           uids.clear();
                       },
                   .run =
                       [&](covNo2& phone) {
                           const Long results[] = {
                               phone.WriteAddressBookItem(model, phoneId, changed, values[0], table),
                               phone.WriteAddressBookItem(model, phoneId, added, values[1], table),
                               phone.DeleteAddressBookItem(model, phoneId, u"02")};
                           allWritten = std::ranges::all_of(results, [](Long result) { return result == 0; });
                           // As a host does: what could not be written is not committed.
                           const Long ended = phone.EndWriteSession(1, tempids, uids, allWritten);
                           for (const Long result : results)
                               if (result != 0) return result;
                           return ended;
                       },
                   .done = 0,
                   .otherwise = {-1, -2, -3, -4, -5},
                   .statusToo = true,
                   .leavesOpen = true},
                  [&](Long result, Fault fault) {
                      const std::string found = book();
                      if (fault == Fault::none && after.empty()) after = found;
                      EXPECT_NE(before, after);
                      const bool untouched = found == before;
                      // A contact that cannot be read back is written as a new one; the old one stays whole.
                      using Json = simulator::Control::Json;
                      const Json old = Json::parse(before)["contacts"][0];
                      Json kept = Json::parse(found)["contacts"][0];
                      kept.erase("position");
                      const bool asNew = fault != Fault::none && kept == old;
                      EXPECT_TRUE(untouched || found == after || asNew) << found;
                      if (fault == Fault::none) {
                          EXPECT_EQ(result == 0, found == after);
                      }
                      if (!allWritten) {
                          EXPECT_TRUE(untouched);
                      }
                  });
}

}  // namespace
}  // namespace ovno2
