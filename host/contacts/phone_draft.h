// A phone's contact as a draft, and a draft in the form in which the driver writes it.
#pragma once

#include <filesystem>
#include <map>

#include "host/contacts/contact_draft.h"
#include "host/contacts/picture_folder.h"
#include "host/driver/driver.h"

namespace ovno2::host {

// With the pictures that the folder has of it; the uid is the phone's own.
ContactDraft draftOf(const Contact& contact, const PictureFolder& pictures);

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
    // `folder` is where a picture lies while the driver reads it.
    explicit DraftWriter(const std::string& folder);
    ~DraftWriter();
    DraftWriter(const DraftWriter&) = delete;
    DraftWriter& operator=(const DraftWriter&) = delete;

    // Each of these throws PictureNotWritten.
    WrittenContact added(const ContactDraft& contact);
    WrittenContact changed(const ContactDraft& before, const ContactDraft& after);
    // Empties the rows that lose a value, to be written before the change itself: the phone's fields stand in
    // an order of their own, and a value that is gone could not be told from its neighbour.
    WrittenContact emptied(const ContactDraft& before, const ContactDraft& after);
    // Whether a change needs that.
    static bool losesValues(const ContactDraft& before, const ContactDraft& after);

  private:
    using Rows = std::vector<std::pair<Long, Text>>;  // code and value

    WrittenContact finished(const Rows& rows);
    Text pathOfPicture(const ContactDraft& contact);

    std::filesystem::path picture_;
    std::map<std::vector<Long>, TextTable> tables_;  // by their codes
};

}  // namespace ovno2::host
