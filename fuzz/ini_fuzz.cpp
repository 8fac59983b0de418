// Any bytes as a profile file: every section and key asked for gives a value that stands in the file,
// trimmed.
#include <cstdlib>

#include "platform/portable/code_pages.h"
#include "platform/portable/ini_text.h"

using ovno2::Text;
using ovno2::TextView;
using namespace ovno2::platform::portable;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto* const page = codePageTable(usualCodePage);
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Text contents;
    if (!decodeMarked(bytes, contents)) contents = page->fromAnsi(bytes);
    for (const TextView section : {u"Nokia 6300", u"", u"s"}) {
        for (const TextView key : {u"Type", u"", u"k"}) {
            const Text value = iniValue(contents, section, key);
            if (value.find_first_of(u"\r\n") != Text::npos || contents.find(value) == Text::npos)
                std::abort();
        }
    }
    return 0;
}
