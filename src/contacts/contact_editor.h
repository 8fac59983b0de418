// The items of one contact on their way to the phone: what it has already, paired with what the host gives.
//
// A value that is equal to the phone's leaves the phone's item as it is; one that differs replaces it; one
// that the phone has not is added. Items for which the host gives no row stay.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <set>

#include "contacts/contact_fields.h"
#include "content/data_items.h"
#include "content/library_pieces.h"

namespace ovno2::Contacts {

// What older phones and hosts do not keep apart.
struct FieldMerging {
    bool addresses = false;  // home and work addresses are general ones
    bool mails = false;      // 260 and 261 are 259
    bool pages = false;      // 273 and 274 are 272
};

class ContactEditor {
  public:
    static constexpr std::size_t groupCount = 4;

    // `version` is the content-access library's.
    ContactEditor(const FieldMerging& merging, Long version) : merging_(merging), version_(version) {}

    // Takes the items of a contact that was read. The formatted name and the birthday are given back at once:
    // they are written anew. Throws RuntimeFailure when not all of them can be had.
    void takeExisting(const library::ContactRecord& record);
    bool has(Long group) const { return !groups_[static_cast<std::size_t>(group) - 1].empty(); }
    // First name, what stands before it, and last name, for a question about the contact.
    Text name() const;

    // Places the values of a contact, one for each row of the table, divided by tabs. With `namesOnly` all
    // but first and last name count as empty. Throws RuntimeFailure when the library has no memory for one.
    void place(const Text& values, const FieldDefinitions& table, bool namesOnly);

    // The items to write, in the library's field ids.
    std::array<std::vector<Content::DataItem>, groupCount> merged() const;

  private:
    static constexpr std::size_t addressParts = 5;  // words 2 to 6 of the record
    using AddressTexts = std::array<std::optional<Text>, addressParts>;

    std::vector<Content::DataItem>& group(std::size_t number) { return groups_[number - 1]; }
    library::Word pairedId(library::Word id) const;
    std::optional<std::size_t> nextExisting(library::Word id, std::size_t group) const;
    Content::DataItem& pairWith(library::Word id, std::size_t group, std::size_t place);
    bool standsElsewhere(library::Word id, Long code, std::size_t group, const Text& value);
    void placeValue(library::Word id, Long code, Text value);
    void placeText(library::Word id, Long code, std::size_t group, const Text& value);
    void placeDate(std::size_t group, const Text& value);
    void placePicture(std::size_t group, const Text& path);
    void collect(library::Word id, std::size_t part, const Text& value);
    bool standsAsGeneral(std::size_t group, const AddressTexts& address);
    void placeAddress(library::Word id, const AddressTexts& address);
    void add(library::Word id, std::size_t group, library::Word value);
    Text encoded(library::Word id, std::size_t group, const Text& value) const;

    FieldMerging merging_;
    Long version_;
    Content::LibraryPieces pieces_;
    std::array<std::vector<Content::DataItem>, groupCount> groups_;
    std::array<std::size_t, groupCount> existing_{};        // how many of the leading items the phone had
    std::set<std::pair<std::size_t, std::size_t>> paired_;  // group and place of items that a row goes with
    std::map<library::Word, std::size_t> counted_;          // rows of an id so far
    std::vector<std::pair<library::Word, std::vector<AddressTexts>>> addresses_;  // by id
};

}  // namespace ovno2::Contacts
