// Any words as a calendar entry of the phone: whatever they are, an entry's text is a whole block.
#include <cstdlib>
#include <cstring>

#include "calendar/cal_info.h"
#include "fuzz_home.h"

using namespace ovno2;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzHome home;
    Calendar::Entry entry;
    if (size != 0) std::memcpy(&entry.record, data, std::min(size, sizeof entry.record));
    Calendar::takeItems(entry);
    for (std::size_t i = sizeof entry.record; i + sizeof(Content::DataItem) <= size;
         i += sizeof(Content::DataItem))
        std::memcpy(&entry.items.emplace_back(), data + i, sizeof(Content::DataItem));
    for (const Long platform : {0, 63}) {
        entry.phonePlatform = platform;
        const Text text = Calendar::entryText(entry, u"Work", u"0A");
        const bool isEvent =
            text.starts_with(u"BEGIN:VEVENT\r\n") && text.ends_with(u"\r\nX-IRMC-LUID:0A\r\nEND:VEVENT");
        const bool isToDo =
            text.starts_with(u"BEGIN:VTODO\r\n") && text.ends_with(u"\r\nX-IRMC-LUID:0A\r\nEND:VTODO");
        if (!isEvent && !isToDo) std::abort();
    }
    return 0;
}
