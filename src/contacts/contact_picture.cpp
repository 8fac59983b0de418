#include "contacts/contact_picture.h"

#include <limits>

#include "library/library_memory.h"
#include "library/library_texts.h"
#include "pc/convert_array.h"
#include "pc/files.h"
#include "pc/folders.h"

namespace ovno2::Contacts {

namespace {

using ConvertArray::ByteArray;
using library::PictureRecord;

// The extension for a picture format of the phone's; what cannot stand in a file name is left out of it.
Text extensionFor(const Text& format) {
    Text extension;
    for (const char16_t c : format)
        if (c >= u' ' && TextView(u"\\/:*?\"<>|").find(c) == TextView::npos) extension.push_back(c);
    return extension.empty() || extension == u"JPEG" ? Text(u"jpg") : lowerCase(extension);
}

Text fileFor(const AdrItem& record, const Text& folder, const Text& uid, const Text& format) {
    Text path = folder.empty() ? Folders::GetTemporaryFolder() + u"ovpic" : folder;
    path.append(uid.empty() ? decimalText(numericValue(record.Location)) : uid);
    return path.append(u".").append(extensionFor(format));
}

// Fails when the bytes cannot be read.
Text pictureBytes(const PictureRecord& picture) {
    return ConvertArray::ConvertByteArrayToString(
        ByteArray(library::copyBlock<std::uint8_t>(picture.bytes, picture.byteCount)));
}

bool holdsAlready(const Text& path, const Text& bytes) {
    return Files::FileExistsW_(path) &&
           Files::FileSize(path, /*skipExistenceTest=*/true) == static_cast<Single>(bytes.size()) &&
           Files::GetFileContents(path, /*decode=*/false) == bytes;
}

}  // namespace

Text savePicture(Address picture, const AdrItem& record, const Text& folder, const Text& uid) {
    constexpr library::Word mostBytes = std::numeric_limits<Long>::max();
    constexpr Long ansi = 0;
    PictureRecord source{};
    attempt([&] { library::copyRecord(picture, source); });
    Text format;
    if (library::isAddress(source.format)) {
        format = library::GetStringFromPointer(source.format);
        DebugLine(u"Pic: ", format);
    }
    if (!library::isAddress(source.bytes) || source.byteCount < 1 || source.byteCount > mostBytes) return {};
    const Text bytes = pictureBytes(source);
    Text path = fileFor(record, folder, uid, format);
    if (!holdsAlready(path, bytes))
        Files::WriteFileContents(path, bytes, /*append=*/false, ansi, /*showError=*/false);
    return path;
}

}  // namespace ovno2::Contacts
