#include "content/data_items.h"

#include <cstring>

#include "content/state.h"
#include "library/library_memory.h"
#include "pc/registry_access.h"

namespace ovno2::Content {

using namespace std::string_view_literals;  // names of routines whose length is known beforehand

namespace {

using library::Word;

constexpr Long shortRecord = 16;
constexpr Long longRecord = 20;
constexpr Long oddLongRecord = 4;  // some libraries count the words behind the size
constexpr Long largestUsualRecord = 50;
// A size word beyond this is no size: such an array is not read, and its size is not kept.
constexpr Long largestRecord = 1024;
constexpr Long firstVersionWithLongRecords = 30;
constexpr std::size_t mostItemsToWrite = 100;

constexpr TextView sizeKey = u"Software\\Marrowind\\Orvanta\\Nokia";
constexpr TextView sizeName = u"S1";
constexpr Long textValue = 1;

bool isRecordSize(Long size) {
    return size >= shortRecord && size <= largestRecord;
}

// The size in the registry, 0 when there is none that could be one.
Long storedItemSize() {
    std::optional<Long>& stored = state().StoredItemSize;
    if (!stored) stored = numericLong(Registry::GetRegValue(platform::currentUser, sizeKey, sizeName));
    return isRecordSize(*stored) ? *stored : 0;
}

void storeItemSize(Long size) {
    DebugLine(u" SizeSet:", decimal{size});
    attempt([&] {
        Text key(sizeKey);
        Registry::SetRegValue(platform::currentUser, key, sizeName, decimalText(size), textValue);
        state().StoredItemSize = size;
    });
}

// The size word that the array at `pointer` begins with.
Long sizeWordAt(Address pointer) {
    Word first = 0;
    library::copyRecord(pointer, first);
    if (first > static_cast<Word>(largestUsualRecord)) DebugLine(u"!!!", decimal{static_cast<Long>(first)});
    if (first > static_cast<Word>(largestRecord)) throw RuntimeFailure(invalidProcedureCall);
    return static_cast<Long>(first);
}

// The record size that goes with a size word. Records without one begin with their reserved word.
Long recordSizeFor(Long sizeWord) {
    if (isRecordSize(sizeWord)) return sizeWord;
    return sizeWord == oddLongRecord ? longRecord : GetCA_DATA_ITEM_size();
}

Word wordAt(const unsigned char* record, std::size_t word) {
    Word value;
    std::memcpy(&value, record + word * sizeof(Word), sizeof value);
    return value;
}

DataItem itemFrom(const unsigned char* record, std::size_t size) {
    const std::size_t first = size > shortRecord ? 1 : 0;
    DataItem item;
    if (first == 1) item.Size = static_cast<Long>(wordAt(record, 0));
    item.Reserved = static_cast<Long>(wordAt(record, first));
    item.Group = static_cast<Long>(wordAt(record, first + 1));
    item.FieldId = wordAt(record, first + 2);
    std::memcpy(&item.Value, record + size - sizeof item.Value, sizeof item.Value);
    return item;
}

void putItem(const DataItem& item, unsigned char* record, std::size_t size) {
    Word words[4] = {};
    std::size_t count = 0;
    if (size > shortRecord) words[count++] = static_cast<Word>(size);
    words[count++] = static_cast<Word>(item.Reserved);
    words[count++] = static_cast<Word>(item.Group);
    words[count++] = item.FieldId;
    std::memcpy(record, words, count * sizeof(Word));
    std::memcpy(record + size - sizeof item.Value, &item.Value, sizeof item.Value);
}

void takeApart(std::vector<DataItem>& items, Address pointer, std::size_t count) {
    State& content = state();
    const Long sizeWord = sizeWordAt(pointer);
    const Long size = recordSizeFor(sizeWord);
    const std::size_t stride = static_cast<std::size_t>(size);
    if (count > library::largestBlock / stride) throw RuntimeFailure(invalidProcedureCall);
    library::copyBlock(pointer, count * stride, content.BlockBuffer);
    content.ItemRecordSize = size;
    if (size == sizeWord && storedItemSize() != size) storeItemSize(size);
    items.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        items.push_back(itemFrom(content.BlockBuffer.data() + i * stride, stride));
}

}  // namespace

void forgetStoredItemSize() {
    state().StoredItemSize.reset();
}

Long GetCA_DATA_ITEM_size() {
    const RoutineLog log(u"GetCA_DATA_ITEM_size");
    const Long stored = storedItemSize();
    if (stored != 0) return stored;
    const Long version = library::DMAPI_GetAPIVersion.tried().valueOr(firstVersionWithLongRecords);
    return version < firstVersionWithLongRecords ? shortRecord : longRecord;
}

void CopyToDataStruct(std::vector<DataItem>& items, Address pointer, Long count) {
    const RoutineLog log(u"CopyToDataStruct"sv);
    if (count < 1) return;
    items.clear();
    attempt([&] { takeApart(items, pointer, static_cast<std::size_t>(count)); });
}

Address CopyFromDataStructToNokia(std::span<const DataItem> items, library::LowWords& spare,
                                  std::size_t index) {
    const RoutineLog log(u"CopyFromDataStructToNokia");
    Long& recordSize = state().ItemRecordSize;
    if (recordSize == 0) recordSize = GetCA_DATA_ITEM_size();
    DebugLine(decimal{static_cast<Long>(items.size())});
    if (items.empty() || items.size() > mostItemsToWrite) return 0;
    const std::size_t stride = static_cast<std::size_t>(recordSize);
    const std::size_t bytes = stride * items.size();
    void* array = library::CONAAllocMemory.tried(static_cast<Word>(bytes));
    if (!array && index <= spare.size() && bytes <= (spare.size() - index) * sizeof(Word))
        array = spare.at(index);
    if (!array) return 0;
    std::memset(array, 0, bytes);
    for (std::size_t i = 0; i < items.size(); ++i)
        putItem(items[i], static_cast<unsigned char*>(array) + i * stride, stride);
    return library::addressOf(array);
}

void FreeDataItems(Address array, const library::LowWords& spare) {
    if (array != 0 && !spare.holds(array)) library::CONAFreeMemory.tried(library::pointerTo(array));
}

}  // namespace ovno2::Content
