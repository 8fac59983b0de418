#include "simulator/commands/synthetic.h"

#include "simulator/base/text.h"

namespace ovno2::simulator {
namespace {

struct Sample {
    std::uint16_t id;
    const char* text;  // a number is put behind it
};

constexpr Sample samples[] = {{2, "Maximilian "},
                              {4, "Mustermann "},
                              {1, "Mustermann, M. "},
                              {11, "Max "},
                              {5, "Dr. "},
                              {7, "Example AG "},
                              {8, "Engineer "},
                              {9, ""},
                              {32, "+49 30 900"},
                              {33, "+49 171 55"},
                              {34, "+49 89 123"},
                              {64, "+49 30 888"},
                              {65, "+49 172 77"},
                              {80, "+49 30 777"},
                              {259, "max@example"},
                              {272, "example.org/"},
                              {512, "Met in Berlin "},
                              {514, "Berlin "},
                              {520, "Friends"},
                              {35, "+49 40 200"}};

constexpr std::uint16_t birthday = 9;

std::string uidOf(std::size_t number) {
    std::string uid;
    for (int shift = 24; shift >= 0; shift -= 8)
        uid += static_cast<char>(number >> shift & 0xFF);
    return uid;
}

}  // namespace

std::shared_ptr<ContactStore> syntheticContacts(std::size_t count, std::size_t fields) {
    auto store = std::make_shared<ContactStore>();
    store->root = {1, u"Contacts", u"predefContacts", {}};
    store->contacts.reserve(count);
    store->byUid.reserve(count);
    std::vector<Contact::Field> unsorted;
    for (std::size_t i = 1; i <= count; ++i) {
        auto contact = std::make_shared<Contact>();
        unsorted.clear();
        contact->uid = uidOf(i);
        contact->position = static_cast<Word>(i);
        contact->folderId = store->root.id;
        for (std::size_t f = 0; f < fields; ++f) {
            const Sample& sample = samples[f % std::size(samples)];
            Contact::Field field;
            field.id = sample.id;
            field.pair = defaultPair(sample.id);
            field.group = field.pair + 1U;
            if (sample.id == birthday) {
                library::DateRecord date{};
                date.year = static_cast<std::uint16_t>(1950 + i % 60);
                date.month = static_cast<std::uint8_t>(1 + i % 12);
                date.day = static_cast<std::uint8_t>(1 + i % 28);
                field.kind = Contact::Kind::date;
                field.value = static_cast<Word>(contact->dates.size());
                contact->dates.push_back({date});
            } else {
                field.value = contact->addText(toUtf16(sample.text + std::to_string(i)));
            }
            unsorted.push_back(field);
        }
        contact->arrange(unsorted);
        contact->texts.shrink_to_fit();
        store->add(std::move(contact));
    }
    return store;
}

}  // namespace ovno2::simulator
