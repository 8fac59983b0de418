#include "host/contacts/field_families.h"

#include <numeric>
#include <vector>

namespace ovno2::host {

namespace {

using namespace HostField;

constexpr Long pairs[][2] = {{mobile, mobile2},
                             {phone, phone2},
                             {homePhone, homePhone2},
                             {workPhone, workPhone2},
                             {fax, fax2},
                             {email, email2},
                             {web, web2},
                             {note, note2}};
constexpr Long addresses[][addressParts] = {{homeStreet, homePostcode, homeTown, homeState, homeCountry},
                                            {workStreet, workPostcode, workTown, workState, workCountry},
                                            {street, postcode, town, state, country}};
constexpr Long singles[] = {firstName, lastName, formalName, nickname, title, company, jobTitle, birthday};

struct Families {
    std::vector<std::size_t> family;                 // by row
    std::vector<std::vector<std::size_t>> together;  // by row
    std::vector<AddressRows> addressKinds;

    Families() : family(fieldRows().size()), together(fieldRows().size()) {
        std::iota(family.begin(), family.end(), std::size_t{0});
        for (std::size_t row = 0; row < together.size(); ++row)
            together[row] = {row};
        for (const auto& [first, second] : pairs) {
            family[rowOf(second)] = rowOf(first);
            together[rowOf(first)] = together[rowOf(second)] = {rowOf(first), rowOf(second)};
        }
        for (const auto& kind : addresses) {
            AddressRows rows{};
            for (std::size_t part = 0; part < addressParts; ++part) {
                rows[part] = rowOf(kind[part]);
                family[rows[part]] = rowOf(addresses[0][part]);
            }
            for (const std::size_t row : rows)
                together[row].assign(rows.begin(), rows.end());
            addressKinds.push_back(rows);
        }
    }
};

const Families& families() {
    static const Families all;
    return all;
}

}  // namespace

std::span<const AddressRows> addressKinds() {
    return families().addressKinds;
}

std::size_t familyOf(std::size_t row) {
    return families().family[row];
}

bool isSingle(std::size_t row) {
    return std::ranges::find(singles, fieldRows()[row].code) != std::end(singles);
}

std::span<const std::size_t> writtenTogether(std::size_t row) {
    return families().together[row];
}

}  // namespace ovno2::host
