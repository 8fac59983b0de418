// The host's records as the module's: which member of one is which member of the other.
//
// The module's records hold only the members it knows; the others stay as the host has them.
#pragma once

#include "com/arrays.h"
#include "com/interface.h"
#include "driver/cov_no2.h"

namespace ovno2::com {

// The record information of one of the records of ovCommon, from the type library this module carries; the
// caller owns the reference. Null when it cannot be had.
IRecordInfo* recordInformation(const GUID& record);

// Whether the elements of `array` are records of this type and size.
bool holdsRecords(SAFEARRAY* array, const GUID& record, std::size_t size);

// A new array of `array`'s own record type, or, when that is null, of `record`'s. Null when there is no
// memory.
SAFEARRAY* createRecordArray(SAFEARRAY* array, const GUID& record, SAFEARRAYBOUND bound);

// The members that both sides have, each shown to `visit` as (host's member, module's member).
inline constexpr GUID guidOfAdrItem = {
    0x6C3ADA3B, 0x5C7F, 0x429D, {0xAF, 0x57, 0x37, 0xF5, 0xF3, 0xD5, 0xA7, 0x24}};
inline constexpr GUID guidOfCalItem = {
    0x85419B22, 0x2922, 0x47E1, {0xA8, 0x4C, 0x7E, 0xD7, 0xD2, 0x8D, 0x89, 0x9E}};
inline constexpr GUID guidOfDirItem = {
    0x44C231B0, 0xEDB0, 0x477B, {0x9B, 0x0A, 0xF8, 0xA7, 0x9B, 0xE3, 0x3F, 0x6D}};

template <class Visit>
void eachMember(AdrItem*, Visit&& visit) {
    visit(&tAdrItem::Location, &AdrItem::Location);
    visit(&tAdrItem::FieldValues, &AdrItem::FieldValues);
    visit(&tAdrItem::FieldValuesAsRead, &AdrItem::FieldValuesAsRead);
    visit(&tAdrItem::Uid, &AdrItem::Uid);
}
template <class Visit>
void eachMember(CalItem*, Visit&& visit) {
    visit(&tCalItem::ItemNumber, &CalItem::ItemNumber);
    visit(&tCalItem::VCalText, &CalItem::VCalText);
    visit(&tCalItem::VCalTextRead, &CalItem::VCalTextRead);
    visit(&tCalItem::ItemKind, &CalItem::ItemKind);
    visit(&tCalItem::ItemUid, &CalItem::ItemUid);
}
template <class Visit>
void eachMember(DirItem*, Visit&& visit) {
    visit(&tDirItem::DisplayName, &DirItem::DisplayName);
    visit(&tDirItem::Name, &DirItem::Name);
    visit(&tDirItem::FullName, &DirItem::FullName);
    visit(&tDirItem::Size, &DirItem::Size);
    visit(&tDirItem::DateText, &DirItem::DateText);
    visit(&tDirItem::Flags, &DirItem::Flags);
}

template <class Record, class HostRecord, const GUID& Id>
struct RecordForm {
    using Slot = HostRecord;
    static constexpr bool hasHostMembers = true;

    static bool fits(SAFEARRAY* array) { return holdsRecords(array, Id, sizeof(Slot)); }
    static SAFEARRAY* create(SAFEARRAY* array, SAFEARRAYBOUND bound) {
        return createRecordArray(array, Id, bound);
    }
    static Record read(const Slot& slot) {
        Record record;
        eachMember(&record, [&](auto host, auto own) {
            if constexpr (std::is_same_v<decltype(record.*own), Text&>)
                (record.*own).assign(viewOf(slot.*host));
            else
                record.*own = slot.*host;
        });
        return record;
    }
    static void write(PendingWrites& writes, Slot& place, const Slot& current, const Record& record) {
        eachMember(static_cast<Record*>(nullptr), [&](auto host, auto own) {
            if constexpr (std::is_same_v<decltype(record.*own), const Text&>)
                writes.text(&(place.*host), current.*host, record.*own);
            else
                writes.number(&(place.*host), current.*host, record.*own);
        });
    }
};

template <>
struct ElementForm<AdrItem> : RecordForm<AdrItem, tAdrItem, guidOfAdrItem> {};
template <>
struct ElementForm<CalItem> : RecordForm<CalItem, tCalItem, guidOfCalItem> {};
template <>
struct ElementForm<DirItem> : RecordForm<DirItem, tDirItem, guidOfDirItem> {};

static_assert(sizeof(tAdrItem) == 68 && sizeof(tCalItem) == 48 && sizeof(tDirItem) == 28);

}  // namespace ovno2::com
