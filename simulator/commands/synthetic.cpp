#include "simulator/commands/synthetic.h"

#include "simulator/base/text.h"
#include "simulator/world/calendar_entry.h"
#include "simulator/world/contact.h"
#include "simulator/world/message.h"

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

std::shared_ptr<ContentStore> newStore(ContentFolder root, std::size_t count) {
    auto store = std::make_shared<ContentStore>();
    store->root = std::move(root);
    store->items.reserve(count);
    store->byUid.reserve(count);
    return store;
}

// A moment of ten years from 2005 on, a different one for each number, in a zone an hour east of Greenwich.
library::DateRecord momentOf(std::size_t number) {
    library::DateRecord date{};
    date.year = static_cast<std::uint16_t>(2005 + number % 10);
    date.month = static_cast<std::uint8_t>(1 + number / 10 % 12);
    date.day = static_cast<std::uint8_t>(1 + number / 120 % 28);
    date.hour = static_cast<std::uint8_t>(6 + number % 12);
    date.minute = static_cast<std::uint8_t>(number % 60);
    date.firstOffset = 60;
    return date;
}

}  // namespace

std::shared_ptr<ContentStore> syntheticContacts(std::size_t count, std::size_t fields) {
    std::shared_ptr<ContentStore> store = newStore({1, u"Contacts", u"predefContacts", {}}, count);
    store->numbered = true;
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

std::shared_ptr<ContentStore> syntheticCalendar(std::size_t count) {
    const ContentFolder root{1, u"\\", u"\\", {{2, u"Calendar", u"\\Calendar", {}}}};
    std::shared_ptr<ContentStore> store = newStore(root, count);
    for (std::size_t i = 1; i <= count; ++i) {
        auto entry = std::make_shared<CalendarEntry>();
        entry->uid = uidOf(i);
        entry->folderId = 2;
        entry->start = momentOf(i);
        entry->end = entry->start;
        entry->end.hour += 2;
        if (i % 3 == 0) {
            entry->alarm = entry->start;
            entry->alarm.hour -= 1;
            entry->alarmState = library::alarmSet;
        }
        if (i % 5 == 0) entry->recurrence = library::repeatsWeekly | 1U << 8 | 9U << 16;
        const std::string number = std::to_string(i);
        entry->fields = {
            {.id = library::calendarSummary, .value = toUtf16("Meeting with team " + number)},
            {.id = library::calendarLocation, .value = toUtf16("Room " + number)},
            {.id = library::calendarDescription, .value = toUtf16("Bring the plans of " + number)}};
        store->add(std::move(entry));
    }
    return store;
}

std::shared_ptr<ContentStore> syntheticMessages(std::size_t count, std::size_t units) {
    const ContentFolder root{1, u"\\", u"\\", {{2, u"predefInbox", u"Inbox", {}}}};
    std::shared_ptr<ContentStore> store = newStore(root, count);
    for (std::size_t i = 1; i <= count; ++i) {
        auto message = std::make_shared<Message>();
        message->uid = uidOf(i);
        message->folderId = 2;
        message->date = momentOf(i);
        std::u16string text = toUtf16("Message " + std::to_string(i) + " ");
        while (text.size() < units)
            text += static_cast<char16_t>(u'a' + text.size() % 26);
        text.resize(units);
        message->data.assign(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
        message->addresses.push_back({.text = toUtf16("+49 171 39200" + std::to_string(i % 100))});
        store->add(std::move(message));
    }
    return store;
}

}  // namespace ovno2::simulator
