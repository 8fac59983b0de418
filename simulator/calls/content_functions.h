// Content access as ConnAPI answers it; DAAPI exports each under its own name (daapi/content_exports.cpp).
//
// Owns nothing: connections and operations are sessions of the world. Lists of identifiers and folder records
// belong to their connection and are valid until it closes; an item that was read goes back with `freeItem`.
#pragma once

#include "simulator/calls/exports.h"

namespace ovno2::simulator::content {

using namespace ovno2::library;

SIMULATOR_SHARED Word version();
SIMULATOR_SHARED Status initialize(Word version);
SIMULATOR_SHARED Status terminate();
SIMULATOR_SHARED Status openConnection(const char16_t* serial, Word* medium, Word target, Handle* connection);
SIMULATOR_SHARED Status closeConnection(Handle connection);
SIMULATOR_SHARED Status folderInfo(Handle connection, void* folderRecord);
SIMULATOR_SHARED Status itemIds(Handle connection, Word folderId, ItemIdListRecord* list);
SIMULATOR_SHARED Status beginOperation(Handle connection, Handle* operation);
SIMULATOR_SHARED Status endOperation(Handle operation);
SIMULATOR_SHARED Status commitOperations(Handle operation, ItemIdListRecord* written);
SIMULATOR_SHARED Status readItem(Handle operation, const ItemIdRecord* id, void* item);
SIMULATOR_SHARED Status writeItem(Handle operation, ItemIdRecord* id, const void* item);
SIMULATOR_SHARED Status deleteItem(Handle operation, const ItemIdRecord* id);
SIMULATOR_SHARED Status freeItem(Handle connection, void* item);
SIMULATOR_SHARED Status createFolder(Handle operation, void* folderRecord, const char16_t* name);
SIMULATOR_SHARED Status renameFolder(Handle operation, void* folderRecord, const char16_t* name);
SIMULATOR_SHARED Status deleteFolder(Handle operation, void* folderRecord);

}  // namespace ovno2::simulator::content
