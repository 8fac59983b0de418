#include "simulator/images/phones_folder.h"

#include <algorithm>

#include "simulator/images/phone_image.h"
#include "simulator/images/surroundings_image.h"

namespace ovno2::simulator {
namespace {

// The folders in it that are phone images.
std::vector<std::filesystem::path> imagesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> images;
    std::error_code failed, unreadable;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failed)) {
        const auto identity = std::filesystem::symlink_status(entry.path() / "phone.json", unreadable).type();
        // What cannot be looked into may be an image: reading it will tell.
        if (identity != std::filesystem::file_type::not_found) images.push_back(entry.path());
    }
    if (failed) throw ImageError(folder, "", "a folder of phone images that can be read");
    if (images.empty()) {
        const bool isImage = std::filesystem::exists(folder / "phone.json", unreadable);
        throw ImageError(folder, "",
                         isImage ? "the folder around it: this is the image of one phone"
                                 : "a subfolder with a phone.json for each phone");
    }
    std::sort(images.begin(), images.end());
    return images;
}

std::vector<std::shared_ptr<Phone>> readPhones(const std::filesystem::path& folder,
                                               std::vector<std::string>& errors) {
    std::vector<std::shared_ptr<Phone>> phones;
    for (const std::filesystem::path& image : imagesIn(folder)) {
        try {
            phones.push_back(readPhoneImage(image));
        } catch (const std::exception& error) {
            errors.emplace_back(error.what());
        }
    }
    std::stable_sort(phones.begin(), phones.end(),
                     [](const auto& left, const auto& right) { return left->order < right->order; });
    return phones;
}

void addPhones(World& world, const std::filesystem::path& folder) {
    for (const auto& phone : readPhones(folder, world.imageErrors)) {
        if (!world.add(phone)) {
            world.imageErrors.emplace_back(ImageError(phone->image / "phone.json", "/serialNumber",
                                                      "a serial number that no other phone has")
                                               .what());
        }
    }
    if (!world.phonesFolder.empty()) return;
    world.phonesFolder = folder;
    const system::FolderLock lock = lockImage(folder);
    removeLeftovers(folder);
    world.found = readBluetooth(folder);
    world.media = readMedia(folder);
}

}  // namespace

void loadPhones(World& world, const std::filesystem::path& folder) {
    try {
        addPhones(world, folder);
    } catch (const std::exception& error) {
        world.imageErrors.emplace_back(error.what());
    }
}

}  // namespace ovno2::simulator
