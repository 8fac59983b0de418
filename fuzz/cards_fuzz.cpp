// Any bytes as a file of address cards: each contact that comes of them reads back as it was from a card in
// every version.
#include <cstdlib>

#include "base/utf8.h"
#include "host/contacts/field_table.h"
#include "host/contacts/vcard_reader.h"
#include "host/contacts/vcard_writer.h"

using namespace ovno2;
using namespace ovno2::host;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    for (const ContactDraft& contact : readCards(bytes, "f", size % 2 == 0 ? "" : "ISO-8859-2").contacts) {
        for (const CardVersion version : {CardVersion::v21, CardVersion::v30, CardVersion::v40}) {
            const CardFile again = readCards(writeCard(contact, version), "f");
            if (again.contacts.size() != 1 || !again.problems.empty()) std::abort();
            const ContactDraft& same = again.contacts.front();
            if (same.values != contact.values || same.uid != contact.uid || !same.unplaced.empty() ||
                same.pictures.size() != contact.pictures.size())
                std::abort();
            for (std::size_t i = 0; i < same.pictures.size(); ++i)
                if (same.pictures[i].bytes != contact.pictures[i].bytes) std::abort();
        }
    }
    return 0;
}
