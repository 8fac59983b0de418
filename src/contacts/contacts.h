// Reading a phone's contacts into the host's records.
//
// Keeps no state of its own: the connection, the field tables and the phone last identified belong to the
// layers below. The public class calls `NokiaGetAddressBookItems`.
#pragma once

#include "base/host_array.h"
#include "contacts/adr_item.h"
#include "platform/automation.h"

namespace ovno2::Contacts {

// Reads every contact of the phone named by `model` or `PhoneId` and appends one record each to `AdrItems`;
// into an array without elements the first contact goes to index 1 and index 0 stays empty. `Mobilefields` is
// the host's field-definition table, pictures go to `FolderForPics`, `Progressbar` may be null.
//
// The result is the highest index of `AdrItems`, or
//   -1          the content-access library could not be started
//   -2          no such phone, or the operation could not begin
//   -3          the contacts connection could not be opened; the status itself when that is 0x80100023
//   -4          no contacts folder
//   -5          the phone stayed busy
//   any other   the library status with which the identifier list could not be read
// Contacts that cannot be read are left out. Nothing is thrown.
Long NokiaGetAddressBookItems(Text& model, Text& PhoneId, HostArray<AdrItem>& AdrItems,
                              const TextTable& Mobilefields, const Text& FolderForPics,
                              const platform::ObjectPointer& Progressbar);

// Reads the contacts folder over the open connection, in one operation. Results as above: a library status,
// -2, or the highest index.
Long GetContacts(Long folder, HostArray<AdrItem>& AdrItems, const TextTable& Mobilefields,
                 const Text& FolderForPics, const platform::ObjectPointer& Progressbar);

}  // namespace ovno2::Contacts
