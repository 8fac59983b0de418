// A phone's contact as a draft, and a draft in the form in which the driver writes it.
#pragma once

#include <filesystem>
#include <map>
#include <span>

#include "host/contacts/contact_draft.h"
#include "host/contacts/picture_folder.h"
#include "host/driver/driver.h"

namespace ovno2::host {

// With the pictures that the folder has of it; the uid is the phone's own.
ContactDraft draftOf(const Contact& contact, const PictureFolder& pictures);
// With the pictures that these files hold.
ContactDraft draftOf(const Contact& contact, std::span<const std::filesystem::path> pictures);

// A picture could not be written to a file for the driver; `why` is for people, UTF-8.
struct PictureNotWritten {
    std::string why;
};

// What the driver is given for one contact; `fields` lives as long as the writer.
struct WrittenContact {
    const TextTable& fields;
    Text values;
};

// Of a contact that the phone has, only rows whose values change are given, since the phone keeps what has no
// row as it is, and a few that the driver wants in any case.
class DraftWriter {
  public:
    // `folder` is where a picture lies while the driver reads it. Old software knows one kind of address.
    DraftWriter(const std::string& folder, bool isOldSoftware);
    ~DraftWriter();
    DraftWriter(const DraftWriter&) = delete;
    DraftWriter& operator=(const DraftWriter&) = delete;

    // Each of these throws PictureNotWritten.
    WrittenContact added(const ContactDraft& contact);
    // `gathers`: values of rows that share the phone's fields (mobile, mobile 2) all go into the first of
    // these. A phone may hold a value in a field that the other row does not reach.
    WrittenContact changed(const ContactDraft& before, const ContactDraft& after, bool gathers = false);

  private:
    using Rows = std::vector<std::pair<Long, Text>>;  // code and value

    WrittenContact finished(const Rows& rows);
    Text pathOfPicture(const ContactDraft& contact);

    void addAddresses(Rows& rows, const ContactDraft& before, const ContactDraft& after) const;

    std::filesystem::path picture_;
    bool isOldSoftware_;
    std::map<std::vector<Long>, TextTable> tables_;  // by their codes
};

}  // namespace ovno2::host
