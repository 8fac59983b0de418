// Reading a phone's calendars, and what of them did not arrive.
#pragma once

#include "host/calendar/calendar_entry.h"
#include "host/phones/arrival.h"

namespace ovno2::host {

struct PhoneCalendars {
    std::vector<Text> names;             // of the calendars, in the phone's order
    std::vector<CalendarEntry> entries;  // those that could be read, in the phone's order
    std::size_t listed = 0;              // as many as the phone named
    std::vector<std::string> missing;    // what did not arrive, why, and what to do about it; UTF-8
};

// Shows how far it has come. Throws CommandFailure when nothing could be read at all.
PhoneCalendars readCalendars(const AttachedPhones& phones, const ListedPhone& phone);

// Reads a second time and says so among the missing when both reads differ.
void readAgain(const AttachedPhones& phones, const ListedPhone& phone, PhoneCalendars& first);

// The names alone. Throws CommandFailure when the phone does not tell them.
std::vector<Text> readCalendarNames(const AttachedPhones& phones, const ListedPhone& phone);

// In the order in which they begin; to-dos without a date at the end.
void sortByStart(std::vector<CalendarEntry>& entries);

}  // namespace ovno2::host
