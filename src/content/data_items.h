// Data items: the typed fields of a contact, calendar entry or message.
//
// In the library's memory they lie in arrays of equal-sized records, with a leading size word (20 bytes) or,
// in older libraries, without it (16 bytes). The size is learnt from the first array a phone delivers and
// kept in the registry for writes that no read precedes.
#pragma once

#include <span>
#include <vector>

#include "library/library_records.h"
#include "library/low_words.h"

namespace ovno2::Content {

struct DataItem {
    Long Size = 0;      // 0 when read from a 16-byte record
    Long Reserved = 0;  // passed through; 0 in items the module creates
    Long Group = 0;     // field group 1 to 4
    library::Word FieldId = 0;
    library::Word Value = 0;  // a number, or the address of a text, date, picture or address record

    bool operator==(const DataItem&) const = default;
};

// Bytes of a data item where no array has told yet: the registry's number, else what goes with the library's
// version.
Long GetCA_DATA_ITEM_size();

// Takes the array of `count` data items at `pointer` apart. `items` is left alone when `count` is below 1,
// and empty when the array cannot be read.
void CopyToDataStruct(std::vector<DataItem>& items, Address pointer, Long count);

// Builds the library's form of `items` and returns its address, which the caller gives back with
// `FreeDataItems` after the write. When the library has no memory the array is built in `spare` from word
// `index` on; 0 when it does not fit there, and for no items or more than 100.
Address CopyFromDataStructToNokia(std::span<const DataItem> items, library::LowWords& spare,
                                  std::size_t index);
void FreeDataItems(Address array, const library::LowWords& spare);

// The registry's item size is read again at the next need; a library session begins with this.
void forgetStoredItemSize();

}  // namespace ovno2::Content
