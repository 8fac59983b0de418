// Where a contact's fields go: the host's field-definition table, the values of one contact, and the rules
// that place a value in a row.
//
// Keeps no state of its own. `Contacts::GetContacts` calls in here for every data item of every contact.
#pragma once

#include <array>
#include <vector>

#include "base/host_array.h"
#include "contacts/adr_item.h"
#include "content/data_items.h"

namespace ovno2::Contacts {

// The host field codes of the table's rows, read once. Row r of the table owns value r of a contact.
class FieldDefinitions {
  public:
    // The code of a row is the number in column 4; a table without that column has the code 0 in every row.
    explicit FieldDefinitions(const TextTable& table);

    std::size_t rows() const { return codes_.size(); }
    Long code(std::size_t row) const { return codes_[row]; }
    // The first row with that code, -1 when there is none.
    Long firstRow(Long code) const;
    bool has(Long code) const { return firstRow(code) >= 0; }

  private:
    static constexpr Long indexedCodes = 128;  // all codes the module knows lie below

    std::vector<Long> codes_;
    std::array<Long, indexedCodes> firstRows_;
};

// The values of the contact being read, kept apart until the contact is done.
//
// They stand for the text in which the host gets them, the values joined by tabs. A text without a tab says
// nothing about values, so that with fewer than two rows each data item starts from empty values.
class ContactValues {
  public:
    explicit ContactValues(std::size_t rows) : values_(rows) {}

    void beginContact() { started_ = false; }
    void beginItem();
    bool hasValues() const { return started_; }
    std::vector<Text>& values() { return values_; }
    Text& itemValue() { return itemValue_; }  // of the data item under way; keeps its room
    Text joined() const;

  private:
    std::vector<Text> values_;
    Text itemValue_;
    bool started_ = false;
};

// Places `value` in the first row with `code`, or with `code2` when there is no such row or it is filled (0 =
// no second code), and says in which row; 0 when none matched. Tabs in `value` become "\t", blanks around it
// go. What happens to a value whose row is filled is the host's choice (GetAllFields_).
Long SetField(std::vector<Text>& values, const FieldDefinitions& table, Long code, Long code2, Text& value);

// Takes one data item over into `record` and its values. `nameFallback`: values for code 2 may go to the
// code-3 row. `pictureFolder` and `uid` name a picture's file; see contact_picture.h for what stands in when
// they are empty.
void SaveContactInfo(AdrItem& record, ContactValues& values, const Content::DataItem& item,
                     const FieldDefinitions& table, bool nameFallback, const Text& pictureFolder,
                     const Text& uid);

// The text at `pointer` as a contact's value: some phones write "=40" for "@".
void readPhoneText(Address pointer, Text& text);

// Word of an address record with which its street begins; the rest follows.
inline constexpr std::size_t firstAddressWord = 2;
// The leading words of the address record at `address`, the size included, `most` of them at most. Throws
// RuntimeFailure 5 when it cannot be read.
std::vector<library::Word> copyAddressWords(Address address, std::size_t most);
// The text of one of its words as a contact's value.
void readAddressPart(Address pointer, Text& text);

// Takes the brackets off a formatted name that stands in for the last name; one that only repeats the first
// name goes.
void cleanUpName(ContactValues& values, const FieldDefinitions& table);

}  // namespace ovno2::Contacts
