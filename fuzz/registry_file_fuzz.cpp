// Any bytes as a .reg file: reading them is safe, and a value written into them is there afterwards, in
// memory and in the file written back, until it is removed.
#include <cstdlib>

#include "platform/portable/registry_file.h"

using ovno2::Text;
using ovno2::TextView;
using ovno2::platform::RegistryValue;
using ovno2::platform::portable::RegistryFile;

namespace {

constexpr TextView key = u"HKEY_CURRENT_USER\\Software\\A";

bool holds(const RegistryFile& file, TextView name, const RegistryValue& value) {
    const RegistryValue* found = file.find(key, name);
    return found && found->type == value.type && found->text == value.text && found->number == value.number;
}

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    RegistryFile file(bytes);
    check(RegistryFile(file.bytes()).hasKey(key) == file.hasKey(key));

    const RegistryValue text = {.type = 1, .text = Text(u"C:\\\"x\"\0", 8), .bytes = {}, .number = 0};
    const RegistryValue list = {.type = 7, .text = Text(u"a\0b\0\0", 5), .bytes = {}, .number = 0};
    const RegistryValue number = {.type = 4, .text = {}, .bytes = {}, .number = 300};
    file.set(key, u"v", text);
    file.set(key, u"list", list);
    file.set(key, u"", number);
    check(holds(file, u"V", text) && holds(file, u"list", list) && holds(file, u"", number));
    RegistryFile again(file.bytes());
    check(holds(again, u"v", text) && holds(again, u"list", list) && holds(again, u"", number));
    check(again.remove(key, u"v"));
    check(!RegistryFile(again.bytes()).find(key, u"v"));
    return 0;
}
