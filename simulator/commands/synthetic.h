// Content of any size made in memory, for benchmarks and for tests of many items: the same at every call,
// with uids from 00000001 on. No state.
#pragma once

#include <memory>

#include "simulator/world/content_store.h"

namespace ovno2::simulator {

// `count` contacts of `fields` fields each: those that people fill in most, again from the first when there
// are more.
std::shared_ptr<ContentStore> syntheticContacts(std::size_t count, std::size_t fields);

// `count` meetings in one calendar, every third with an alarm, every fifth repeated.
std::shared_ptr<ContentStore> syntheticCalendar(std::size_t count);

// `count` messages of `units` UTF-16 units in the inbox.
std::shared_ptr<ContentStore> syntheticMessages(std::size_t count, std::size_t units);

}  // namespace ovno2::simulator
