// Phone books of any size made in memory, for benchmarks and for tests of many contacts. No state.
#pragma once

#include <memory>

#include "simulator/world/contact_store.h"

namespace ovno2::simulator {

// `count` contacts of `fields` fields each, the same ones at every call: uids 00000001 and on, the fields
// that people fill in most, again from the first when there are more.
std::shared_ptr<ContactStore> syntheticContacts(std::size_t count, std::size_t fields);

}  // namespace ovno2::simulator
