// Finding contacts by a name or by anything they hold.
#pragma once

#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

// Those whose name is `wanted`, else those whose name contains it. Letter case and accents do not count.
std::vector<Contact> contactsNamed(const std::vector<Contact>& contacts, TextView wanted);

// Those with a value that contains `wanted`, in any field. Of numbers only the digits count, and the 0 in
// front of one without its country does not: "0171 39" finds +49 171 3920001.
std::vector<Contact> contactsHolding(const std::vector<Contact>& contacts, TextView wanted);

// Names near to one that nobody has, at most `count`.
std::vector<Text> namesNear(const std::vector<Contact>& contacts, TextView wanted, std::size_t count);

}  // namespace ovno2::host
