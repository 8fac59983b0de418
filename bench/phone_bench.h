// A phone with contacts, and a host's table, for benchmarks.
#pragma once

#include "bench_machine.h"
#include "contacts/contacts.h"
#include "devices/session.h"
#include "library/library.h"
#include "library/library_memory.h"
#include "platform/portable/libraries.h"
#include "simulator/control/control.h"

namespace ovno2 {

inline constexpr std::uint32_t fieldsPerContact = 20;

// The rows of a host's table: the codes of the fields that people fill in, and `more` rows of the host's own.
inline TextTable fieldTable(std::size_t more = 20) {
    constexpr Long columns = 6;
    std::vector<Long> codes = {1,  2,  3,  4,  5,  16, 17, 19, 20, 21, 22, 24, 25, 23, 35, 28, 29, 50,
                               51, 60, 61, 15, 67, 18, 6,  7,  8,  12, 13, 9,  10, 11, 43, 44, 80, 70};
    for (std::size_t i = 0; i < more; ++i)
        codes.push_back(static_cast<Long>(1000 + i));
    std::vector<Text> cells;
    for (const Long code : codes)
        for (Long column = 0; column < columns; ++column)
            cells.push_back(column == 4 ? decimalText(code) : u"label");
    return TextTable(std::move(cells), codes.size(), columns);
}

// A machine of its own with one phone in it.
class PhoneBench : public BenchMachine {
  public:
    explicit PhoneBench(std::uint32_t contacts = 1) : table(fieldTable()) {
        static_cast<platform::portable::PortableLibraries&>(machine.libraries())
            .searchOnlyIn(OVNO2_SIMULATOR_FOLDER);
        simulator.reset();
        simulator.addPhone(simulator::Control::plainPhone("1"));
        simulator.fillContacts("1", contacts, fieldsPerContact);
    }
    ~PhoneBench() { Session::DMApiTerminate(); }

    Long read(HostArray<AdrItem>& items) {
        Text model = u"Nokia N95";
        Text phoneId;
        return Contacts::NokiaGetAddressBookItems(model, phoneId, items, table, {}, nullptr);
    }

    simulator::Control simulator;
    const TextTable table;
};

}  // namespace ovno2
