#include "simulator/images/phones_folder.h"

#include <algorithm>

#include "simulator/images/phone_image.h"
#include "simulator/images/surroundings_image.h"

namespace ovno2::simulator {
namespace {

std::vector<std::shared_ptr<Phone>> readPhones(const std::filesystem::path& folder,
                                               std::vector<std::string>& errors) {
    std::vector<std::filesystem::path> images;
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failed)) {
        if (std::filesystem::exists(entry.path() / "phone.json", failed)) images.push_back(entry.path());
    }
    if (failed || !std::filesystem::is_directory(folder)) {
        errors.push_back(ImageError(folder, "/", "a folder of phone images").what());
        return {};
    }
    std::sort(images.begin(), images.end());
    std::vector<std::shared_ptr<Phone>> phones;
    for (const std::filesystem::path& image : images) {
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

}  // namespace

void loadPhones(World& world, const std::filesystem::path& folder) {
    for (const auto& phone : readPhones(folder, world.imageErrors)) {
        if (!world.add(phone)) {
            world.imageErrors.emplace_back(ImageError(phone->image / "phone.json", "/serialNumber",
                                                      "a serial number that no other phone has")
                                               .what());
        }
    }
    if (!world.phonesFolder.empty()) return;
    world.phonesFolder = folder;
    try {
        world.found = readBluetooth(folder);
        world.media = readMedia(folder);
    } catch (const std::exception& error) {
        world.imageErrors.emplace_back(error.what());
    }
}

}  // namespace ovno2::simulator
