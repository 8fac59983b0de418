// DAAPI: content access under its exported names. The answers come from ConnAPI, where the world is.
#include "simulator/calls/content_functions.h"

namespace content = ovno2::simulator::content;
using namespace ovno2::library;

SIMULATOR_EXPORT Word SIMULATOR_STDCALL CAGetAPIVersion() {
    return content::version();
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CAAPI_Initialize(Word version, Word) {
    return content::initialize(version);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CAAPI_Terminate(Word) {
    return content::terminate();
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL DAOpenCA(signature::WideText serial, Word* medium, Word target,
                                                   Handle* connection) {
    return content::openConnection(serial, medium, target, connection);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL DACloseCA(Handle connection) {
    return content::closeConnection(connection);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CAGetFolderInfo(Handle connection, void* folderRecord) {
    return content::folderInfo(connection, folderRecord);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CAGetIDList(Handle connection, Word folderId, Word,
                                                      ItemIdListRecord* list) {
    return content::itemIds(connection, folderId, list);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CABeginOperation(Handle connection, Word, Handle* operation) {
    return content::beginOperation(connection, operation);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CAEndOperation(Handle operation) {
    return content::endOperation(operation);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CACommitOperations(Handle operation, ItemIdListRecord* written) {
    return content::commitOperations(operation, written);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CAWriteItem(Handle operation, ItemIdRecord* id, Word, Word,
                                                      void* item) {
    return content::writeItem(operation, id, item);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CADeleteItem(Handle operation, ItemIdRecord* id, Word) {
    return content::deleteItem(operation, id);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CACreateFolder(Handle operation, void* folderRecord,
                                                         signature::WideText name) {
    return content::createFolder(operation, folderRecord, name);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CARenameFolder(Handle operation, void* folderRecord,
                                                         signature::WideText name) {
    return content::renameFolder(operation, folderRecord, name);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CADeleteFolder(Handle operation, void* folderRecord) {
    return content::deleteFolder(operation, folderRecord);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CAReadItem(Handle operation, ItemIdRecord* id, Word, Word,
                                                     void* item) {
    return content::readItem(operation, id, item);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CAFreeItemData(Handle connection, Word, void* item) {
    return content::freeItem(connection, item);
}

SIMULATOR_CHECK(CAGetAPIVersion);
SIMULATOR_CHECK(CAAPI_Initialize);
SIMULATOR_CHECK(CAAPI_Terminate);
SIMULATOR_CHECK(DAOpenCA);
SIMULATOR_CHECK(DACloseCA);
SIMULATOR_CHECK(CAGetFolderInfo);
SIMULATOR_CHECK(CAGetIDList);
SIMULATOR_CHECK(CABeginOperation);
SIMULATOR_CHECK(CAEndOperation);
SIMULATOR_CHECK(CAReadItem);
SIMULATOR_CHECK(CAFreeItemData);
SIMULATOR_CHECK(CACommitOperations);
SIMULATOR_CHECK(CAWriteItem);
SIMULATOR_CHECK(CADeleteItem);
SIMULATOR_CHECK(CACreateFolder);
SIMULATOR_CHECK(CARenameFolder);
SIMULATOR_CHECK(CADeleteFolder);
