// Files of contacts: address cards (host/contacts/vcard_reader.h) and tables (csv_contacts.h).
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/contacts/contact_draft.h"
#include "host/contacts/vcard_writer.h"

namespace ovno2::host {

// What the line says about a file.
struct ContactFileOptions {
    std::string file;  // "-" = standard input or output
    std::string as;    // "vcf" or "csv"; empty = as the file's name ends, else by what it holds
    CardVersion version = CardVersion::v30;
    bool force = false;  // over a file that is there
};

struct ContactFile {
    std::vector<ContactDraft> contacts;
    std::vector<std::string> problems;  // what could not be read, for people; UTF-8
};

// Throws CommandFailure for a file that cannot be read.
ContactFile readContactFile(const ContactFileOptions& wanted);

// Writes it whole or not at all, for the user alone. Throws CommandFailure.
void writeContactFile(std::span<const ContactDraft> contacts, const ContactFileOptions& wanted);

// Whether the file that is written will hold pictures.
bool takesPictures(const ContactFileOptions& wanted);

// What a contact of a phone is called in files: other phones use the same uids for other people.
Text exportedUid(TextView serial, TextView uid);

}  // namespace ovno2::host
