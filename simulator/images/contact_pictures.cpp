#include "simulator/images/contact_pictures.h"

#include <algorithm>
#include <system_error>

#include "simulator/base/text.h"
#include "simulator/images/image_file.h"
#include "simulator/world/contact.h"

namespace ovno2::simulator {
namespace {

// Pictures of a phone book's item, which is a contact.
const std::vector<Contact::Picture>& picturesOf(const ContentItem& item) {
    return static_cast<const Contact&>(item).pictures;
}

// The format as a file's extension: letters and digits alone, "jpg" when there are none.
std::string extensionOf(const Contact& contact, const Contact::Picture& picture) {
    std::string extension;
    if (picture.format != Contact::none) {
        for (const char letter : toUtf8(contact.textAt(picture.format))) {
            const bool upper = letter >= 'A' && letter <= 'Z';
            const bool plain = (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
            if (upper || plain) extension += upper ? static_cast<char>(letter - 'A' + 'a') : letter;
        }
    }
    return extension.empty() || extension == "jpeg" ? "jpg" : extension;
}

// Puts the picture's bytes into a file of the image that is not there yet; its name inside the image.
std::filesystem::path storePicture(const std::filesystem::path& image, const Contact& contact,
                                   const Contact::Picture& picture) {
    const std::filesystem::path folder = image / "pictures";
    std::filesystem::create_directories(folder);
    std::filesystem::path name;
    for (int number = 0; name.empty() || std::filesystem::exists(folder / name); ++number) {
        const std::string suffix = number == 0 ? "" : "-" + std::to_string(number);
        name = toHex(contact.uid) + suffix + "." + extensionOf(contact, picture);
    }
    IncomingFile(image, picture.bytes).moveTo(folder / name);
    return std::filesystem::path("pictures") / name;
}

}  // namespace

PictureFiles picturesOf(const ContentStore& contacts) {
    PictureFiles files;
    for (const auto& item : contacts.items) {
        for (const Contact::Picture& picture : picturesOf(*item)) {
            if (!picture.file.empty()) files.insert(picture.file);
        }
    }
    return files;
}

void writeNewPictures(const std::filesystem::path& image, ContentStore& contacts, PictureFiles& written) {
    for (auto& item : contacts.items) {
        const bool inFiles = std::ranges::all_of(
            picturesOf(*item), [](const Contact::Picture& one) { return !one.file.empty(); });
        if (inFiles) continue;
        auto changed = std::make_shared<Contact>(static_cast<const Contact&>(*item));
        for (Contact::Picture& picture : changed->pictures) {
            if (!picture.file.empty()) continue;
            picture.file = storePicture(image, *changed, picture);
            picture.bytes.clear();
            written.insert(picture.file);
        }
        item = std::move(changed);
    }
}

void removePictures(const std::filesystem::path& image, const PictureFiles& files, const PictureFiles& kept) {
    std::error_code ignored;
    for (const std::filesystem::path& file : files) {
        if (!kept.contains(file)) std::filesystem::remove(image / file, ignored);
    }
}

}  // namespace ovno2::simulator
