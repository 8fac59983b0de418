// What programs were compiled against: the places of the records' members, and the numbers of the
// enumerations, which are those of the driver. The type libraries come from the same description as these
// declarations; the members of the class stand in tests/com.
#include <cstddef>

#include "devices/devices.h"
#include "windows/component_test.h"

namespace ovno2 {
namespace {

#define AT(record, member, offset) static_assert(offsetof(record, member) == (offset), #member)
#define SAME(name) static_assert(Long{::name} == Long{ovno2::name}, #name)

// clang-format off
AT(tAdrItem, Location, 20); AT(tAdrItem, FieldValues, 32); AT(tAdrItem, FieldValuesAsRead, 36); AT(tAdrItem, Uid, 60);
AT(tCalItem, ItemNumber, 0); AT(tCalItem, VCalText, 4); AT(tCalItem, VCalTextRead, 8); AT(tCalItem, ItemKind, 24);
AT(tCalItem, ItemUid, 32);
AT(tDirItem, DisplayName, 0); AT(tDirItem, Name, 4); AT(tDirItem, FullName, 8); AT(tDirItem, Size, 12);
AT(tDirItem, DateText, 16); AT(tDirItem, Flags, 20);

SAME(eMediaUnknown); SAME(eMediaCable); SAME(eMediaBT); SAME(eMediaIR); SAME(eMediaUSB); SAME(eMediaUSBDrive);
SAME(eNokiaPhoneType); SAME(eNokiaPhoneS40); SAME(eNokiaPhoneS40_2); SAME(eNokiaPhoneS40_3); SAME(eNokiaPhoneS40_4);
SAME(eNokiaPhoneS40_5); SAME(eNokiaPhoneS40_6); SAME(eNokiaPhoneS40_7); SAME(eNokiaPhoneS40_8); SAME(eNokiaPhoneS60);
SAME(eNokiaPhoneS60_2); SAME(eNokiaPhoneS60_3); SAME(eNokiaPhoneS60_3_FP1); SAME(eNokiaPhoneS60_5);
SAME(eNokiaPhoneS60_6); SAME(eNokiaPhoneS80);
// clang-format on

}  // namespace
}  // namespace ovno2
