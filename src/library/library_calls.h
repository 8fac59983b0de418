// The signatures of the connectivity library's functions, one declaration each.
//
// The binding (library/library.h) and the simulator take their types from here. On 32-bit Windows all of
// them are stdcall with undecorated names; natively they follow the platform's default. Texts are
// zero-terminated UTF-16. Pointers passed as plain arguments are native pointers; an `Address*` receives an
// address below 4 GiB. What the library fills in belongs to the library and goes back through the matching
// free call.
#pragma once

#include "library/library_records.h"

namespace ovno2::library::signature {

using WideText = const char16_t*;
using SearchProgress = Status (*)(Word, Word);

// ConnAPI: library start
using CONAGetConnAPIVersion = Word();
using CONAInitialize = Status(Word version, WideText callerName);
using CONAUninitialize = Status(Word zero);

// ConnAPI: device management
using DMAPI_GetAPIVersion = Word();
using DMAPI_Initialize = Status(Word version, Word zero);
using DMAPI_Terminate = Status(Word zero);
using CONAOpenDM = Status(Handle* session);
using CONACloseDM = Status(Handle session);
using CONAGetDeviceCount = Status(Handle session, Word* count);
using CONAGetDevices = Status(Handle session, Word* count, DeviceRecord* devices);
using CONAFreeDeviceStructure = Status(Word count,
                                       void* list);  // DeviceRecords, or a search's ConnectionRecords
using CONAGetDeviceInfo = Status(Handle session, WideText serial, Word option, Address* record);
using CONAFreeDeviceInfoStructure = Status(Word option, void* record);
using CONASearchDevices = Status(Handle session, Word option, Word timeout, SearchProgress progress,
                                 Word* count, Address* list);
using CONAChangeDeviceTrustedState = Status(Handle session, Word operation, WideText address,
                                            WideText passkey, WideText name);

// ConnAPI: media
using MCAPI_Initialize = Status(Word version, Word zero);
using MCAPI_Terminate = Status(Word zero);
using CONAOpenMM = Status(Handle* session, Word zero);
using CONACloseMM = Status(Handle session);
using CONAMMGetMedia = Status(Handle session, Word* count, Address* list);
using CONAMMSetMedia = Status(Handle session, MediaRecord* media);
using CONAMMFreeMediaStructures = Status(Word count, void* list);

// ConnAPI: phone file system
using FSAPI_GetAPIVersion = Word();
using FSAPI_Initialize = Status(Word version, Word zero);
using FSAPI_Terminate = Status(Word zero);
using CONAOpenFS = Status(WideText serial, Word* medium, Handle* session, Word* deviceId);
using CONACloseFS = Status(Handle session);
using CONAFindBegin = Status(Handle session, Word options, Handle* search, WideText path);
using CONAFindNextFolder = Status(Handle search, FolderRecord* folder);
using CONAFindNextFile = Status(Handle search, FileRecord* file);
using CONAFindEnd = Status(Handle search);
using CONASetCurrentFolder = Status(Handle session, WideText path);
using CONAReadFile = Status(Handle session, FileRecord* file, Address* data, Word offset, Word length);
using CONAWriteFile = Status(Handle session, FileRecord* file, const void* data, Word zero);
using CONARenameFile = Status(Handle session, WideText name, WideText newName, Word zero);
using CONARenameFolder = Status(Handle session, WideText name, WideText newName, Word zero);
using CONADeleteFile = Status(Handle session, WideText name, Word zero);
using CONACreateFolder = Status(Handle session, WideText name, Word zero);
using CONADeleteFolder = Status(Handle session, WideText name, Word zero);
using CONADeleteFolderFourArguments = Status(Handle session, WideText name, Word flag, Word zero);

// ConnAPI: memory
using CONAAllocString = char16_t*(WideText text);
using CONAFreeString = Status(char16_t* text);
using CONAAllocMemory = void*(Word bytes);
using CONAFreeMemory = Status(void* block);

// DAAPI: content access
using CAAPI_Initialize = Status(Word version, Word zero);
using CAAPI_Terminate = Status(Word zero);
using CAGetAPIVersion = Word();
using DAOpenCA = Status(WideText serial, Word* medium, Word target, Handle* connection);
using DACloseCA = Status(Handle connection);
using CAGetFolderInfo = Status(Handle connection, void* folderRecord);  // 32 or 48 bytes, by its size word
using CAGetIDList = Status(Handle connection, Word folderId, Word zero, ItemIdListRecord* list);
using CABeginOperation = Status(Handle connection, Word zero, Handle* operation);
using CAEndOperation = Status(Handle operation);
using CACommitOperations = Status(Handle operation, ItemIdListRecord* writtenOrNull);
using CAReadItem = Status(Handle operation, ItemIdRecord* id, Word zero, Word one, void* item);
using CAWriteItem = Status(Handle operation, ItemIdRecord* id, Word zero, Word one, void* item);
using CADeleteItem = Status(Handle operation, ItemIdRecord* id, Word zero);
using CAFreeItemData = Status(Handle connection, Word one, void* item);
using CACreateFolder = Status(Handle operation, void* folderRecord, WideText name);
using CARenameFolder = Status(Handle operation, void* folderRecord, WideText name);
using CADeleteFolder = Status(Handle operation, void* folderRecord);

// Content kinds, the `target` of DAOpenCA.
inline constexpr Word targetContacts = 1;
inline constexpr Word targetCalendar = 2;
inline constexpr Word targetNotes = 3;
inline constexpr Word targetMessages = 4;
inline constexpr Word targetOtherMessages = 5;
inline constexpr Word targetCountedItems = 6;

}  // namespace ovno2::library::signature
