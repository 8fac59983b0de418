// Any bytes as a table of contacts: each contact that comes of it reads back as it was.
#include <cstdlib>

#include "base/utf8.h"
#include "host/contacts/csv_contacts.h"
#include "host/formats/csv.h"

using namespace ovno2;
using namespace ovno2::host;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    CsvContacts read = readCsvContacts(bytes, "f");
    // What had values in unknown columns only is nothing to write.
    std::erase_if(read.contacts, [](const ContactDraft& contact) {
        for (const std::vector<Text>& values : contact.values)
            if (!values.empty()) return false;
        return contact.uid.empty();
    });
    const CsvContacts again = readCsvContacts(writeCsvContacts(read.contacts), "f");
    if (!again.problems.empty() || again.contacts.size() != read.contacts.size()) std::abort();
    for (std::size_t i = 0; i < read.contacts.size(); ++i)
        if (again.contacts[i].values != read.contacts[i].values ||
            again.contacts[i].uid != read.contacts[i].uid)
            std::abort();
    return 0;
}
