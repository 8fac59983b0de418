#include "simulator/library.h"

#include <dlfcn.h>
#include <fstream>
#include <random>

namespace simulator_tests {

void* symbol(const char* library, const char* name) {
    const std::filesystem::path folder(OVNO2_SIMULATOR_FOLDER);
    void* const opened = ::dlopen((folder / ("lib" + std::string(library) + ".so")).c_str(), RTLD_NOW);
    void* const found = opened == nullptr ? nullptr : ::dlsym(opened, name);
    EXPECT_NE(found, nullptr) << name;
    return found;
}

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    do {
        path = std::filesystem::temp_directory_path() / ("ovno2-simulator-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::filesystem::path TemporaryFolder::write(const std::string& name, const std::string& content) const {
    std::filesystem::path file = path / std::u8string(name.begin(), name.end());
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

std::string fileContent(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

World::World() {
    control.reset();
}

World::~World() {
    EXPECT_EQ(control.leaks(), "");
}

std::string World::balance(const char* part) {
    return control.balance()[part].dump();
}

ContentSession::ContentSession(const std::u16string& serial) {
    DAAPI(CAAPI_Initialize)(30, 0);
    Word medium = 1;
    status = DAAPI(DAOpenCA)(serial.c_str(), &medium, signature::targetContacts, &connection);
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
    for (std::size_t i = 0; i < records.size(); ++i) {
        records[i] = recordAt<ItemIdRecord>(static_cast<Word>(list.items + i * sizeof(ItemIdRecord)));
    }
    return records;
}

Status ContentSession::read(ItemIdRecord id, ContactRecord& contact) const {
    contact = {};
    contact.size = sizeof contact;
    return DAAPI(CAReadItem)(operation, &id, 0, 1, &contact);
}

Status ContentSession::free(ContactRecord& contact) const {
    return DAAPI(CAFreeItemData)(connection, 1, &contact);
}

std::vector<std::u16string> ContentSession::texts(const ItemIdRecord& id) const {
    ContactRecord contact;
    std::vector<std::u16string> all;
    if (read(id, contact) != statusOk) return all;
    for (const ItemPair& pair : {contact.a, contact.b, contact.c, contact.d}) {
        for (Word i = 0; i < pair.count; ++i) {
            const auto item =
                recordAt<DataItemRecord>(static_cast<Word>(pair.items + i * sizeof(DataItemRecord)));
            const std::string number = std::to_string(item.fieldId);
            all.push_back(std::u16string(number.begin(), number.end()) + u"=" + textAt(item.value));
        }
    }
    free(contact);
    return all;
}

std::u16string textAt(ovno2::Address address) {
    if (address == 0) return u"(none)";
    if (address < 0x10000) return u"(a number)";
    return reinterpret_cast<const char16_t*>(static_cast<std::uintptr_t>(address));
}

std::u16string uidText(const ItemIdRecord& id) {
    std::u16string digits;
    for (Word i = 0; i < id.uidLength; ++i) {
        const auto byte = recordAt<unsigned char>(id.uid + i);
        digits += u"0123456789ABCDEF"[byte >> 4];
        digits += u"0123456789ABCDEF"[byte & 15];
    }
    return digits;
}

}  // namespace simulator_tests
