// Which rows of the field table hold values of one sort, so that a value may move between them on its way
// to a phone and back.
#pragma once

#include <array>
#include <span>

#include "host/contacts/field_table.h"

namespace ovno2::host {

inline constexpr std::size_t addressParts = 5;

// The rows of one kind of address: street, postcode, town, state, country.
using AddressRows = std::array<std::size_t, addressParts>;

// Home, work, general.
std::span<const AddressRows> addressKinds();

// The family of a row: the first of the rows that hold the same sort of value. Of addresses each part is a
// family, since old phones do not keep their kinds apart.
std::size_t familyOf(std::size_t row);

// A person has one such value: a second one takes the place of the first.
bool isSingle(std::size_t row);

// The rows that a phone keeps in the same fields, the row itself among them; an address's five rows.
std::span<const std::size_t> writtenTogether(std::size_t row);

}  // namespace ovno2::host
