#include "simulator/library.h"

#include <dlfcn.h>

namespace simulator_tests {

void* symbol(const char* library, const char* name) {
    const std::filesystem::path folder(OVNO2_SIMULATOR_FOLDER);
    void* const opened = ::dlopen((folder / ("lib" + std::string(library) + ".so")).c_str(), RTLD_NOW);
    void* const found = opened == nullptr ? nullptr : ::dlsym(opened, name);
    EXPECT_NE(found, nullptr) << name;
    return found;
}

TemporaryFolder::TemporaryFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "ovno2-simulator-XXXXXX";
    path = ::mkdtemp(pattern.data());
}

std::filesystem::path TemporaryFolder::write(const std::string& name, const std::string& content) const {
    std::filesystem::path file = path / std::u8string(name.begin(), name.end());
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

ContentSession::ContentSession(const std::u16string& serial, Word target) {
    DAAPI(CAAPI_Initialize)(30, 0);
    Word medium = 1;
    status = DAAPI(DAOpenCA)(serial.c_str(), &medium, target, &connection);
    if (status == statusOk) status = DAAPI(CABeginOperation)(connection, 0, &operation);
}

ContentSession::~ContentSession() {
    if (operation != 0) DAAPI(CAEndOperation)(operation);
    if (connection != 0) DAAPI(DACloseCA)(connection);
    DAAPI(CAAPI_Terminate)(0);
}

std::vector<ItemIdRecord> ContentSession::ids(Word folder) const {
    ItemIdListRecord list{sizeof list, 0, 0};
    EXPECT_EQ(DAAPI(CAGetIDList)(connection, folder, 0, &list), statusOk);
    std::vector<ItemIdRecord> records(list.count);
    for (std::size_t i = 0; i < records.size(); ++i)
        records[i] = recordAt<ItemIdRecord>(static_cast<Word>(list.items + i * sizeof(ItemIdRecord)));
    return records;
}

Status ContentSession::read(ItemIdRecord id, ContactRecord& contact) const {
    contact = {};
    contact.size = sizeof contact;
    return DAAPI(CAReadItem)(operation, &id, 0, 1, &contact);
}

}  // namespace simulator_tests
