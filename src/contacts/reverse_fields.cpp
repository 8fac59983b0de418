#include "contacts/reverse_fields.h"

#include "contacts/writing_state.h"
#include "content/host_fields.h"
#include "content/state.h"
#include "core/settings.h"
#include "devices/devices.h"
#include "pc/registry_access.h"

namespace ovno2::Contacts {

namespace {

constexpr Long generalAddress = 256;
constexpr Long homeAddress = 257;
constexpr Long workAddress = 258;
constexpr Long faxNumber = 80;

void grow(std::vector<Long>& table, Long code) {
    if (table.size() <= static_cast<std::size_t>(code)) table.resize(static_cast<std::size_t>(code) + 1, 0);
}

// True when the place was free.
bool fill(std::vector<Long>& table, Long code, Long id) {
    grow(table, code);
    Long& place = table[static_cast<std::size_t>(code)];
    if (place != 0) return false;
    place = id;
    return true;
}

void set(std::vector<Long>& table, std::initializer_list<Long> codes, Long id) {
    for (const Long code : codes) {
        grow(table, code);
        table[static_cast<std::size_t>(code)] = id;
    }
}

}  // namespace

library::Word ReverseFields::idOf(Long code) const {
    const auto entry = [code](const std::vector<Long>& table) {
        const bool known = code > 0 && static_cast<std::size_t>(code) < table.size();
        return known ? table[static_cast<std::size_t>(code)] : 0;
    };
    const Long first = entry(FieldIdByCode);
    return static_cast<library::Word>(first != 0 ? first : entry(AltFieldIdByCode));
}

const ReverseFields& reverseFields() {
    ReverseFields& tables = writingState().fields;
    if (tables.FieldIdByCode.empty()) BuildReverseFieldTables(tables);
    return tables;
}

void BuildReverseFieldTables(ReverseFields& tables) {
    const RoutineLog log(u"BuildReverseFieldTables");
    const Content::FieldTables& forward = Content::state().Fields;
    if (forward.version == 0) Content::InitFieldTables();
    const library::Answer version = library::DMAPI_GetAPIVersion.tried();
    if (forward.version == 0 || version.valueOr(0) <= 0) throw RuntimeFailure(invalidProcedureCall);
    ReverseFields built;
    for (Long id = 0; id < static_cast<Long>(Content::fieldIdCount); ++id) {
        const Long code = forward.code(static_cast<std::uint32_t>(id));
        if (code > 0 && !fill(built.FieldIdByCode, code, id)) fill(built.AltFieldIdByCode, code, id);
        const Long alternative = forward.alternativeCode(static_cast<std::uint32_t>(id));
        if (alternative > 0) fill(built.AltFieldIdByCode, alternative, id);
    }
    set(built.FieldIdByCode,
        {HostField::street, HostField::postcode, HostField::town, HostField::state, HostField::country},
        generalAddress);
    if (version.status >= Content::firstVersionWithLongIds) {
        set(built.FieldIdByCode,
            {HostField::workStreet, HostField::workPostcode, HostField::workTown, HostField::workState,
             HostField::workCountry},
            workAddress);
        set(built.FieldIdByCode,
            {HostField::homeStreet, HostField::homePostcode, HostField::homeTown, HostField::homeState,
             HostField::homeCountry},
            homeAddress);
    }
    const Text fax = Registry::GetIniValue(Devices::profileSection(), u"NFax", settings().profilePath);
    if (numericValue(fax) == 1) set(built.FieldIdByCode, {HostField::fax, HostField::fax2}, faxNumber);
    tables = std::move(built);
}

}  // namespace ovno2::Contacts
