#include <algorithm>

#include "base/utf8.h"
#include "core/attempt.h"
#include "core/current_platform.h"
#include "pc/byte_table.h"
#include "pc/files.h"
#include "pc/get_file_contents_mod.h"

namespace ovno2::Files {

namespace {

using namespace GetFileContentsMod;

constexpr Long firstFileNumber = 17;
constexpr Long highestFileNumber = 255;
constexpr int mostPasses = 3;
constexpr int mostOpenTries = 20;
constexpr int mostAttributeTries = 3;

constexpr std::string_view bigEndianMark = "\xFE\xFF";
constexpr std::string_view littleEndianMark = "\xFF\xFE";

struct Content {
    std::string_view mark;  // before the first byte of a new file
    std::string bytes;
};

Content contentOf(TextView text, Long encoding) {
    const bool isUtf16 =
        encoding == bigEndianWithMark || encoding == bigEndian || encoding == littleEndianWithMark;
    const std::string_view mark = encoding == bigEndianWithMark      ? bigEndianMark
                                  : encoding == littleEndianWithMark ? littleEndianMark
                                                                     : std::string_view();
    Content content;
    if (!isUtf16 || text.find(u'\0') != TextView::npos) {
        content.bytes = ByteTable().bytesOf(text);
        if (isUtf16 && !content.bytes.starts_with(mark)) content.mark = mark;
        return content;
    }
    content.bytes = toUtf16Bytes(text);
    if (encoding == littleEndianWithMark) {
        if (!text.starts_with(u'\uFEFF')) content.mark = mark;
        return content;
    }
    for (std::size_t i = 0; i + 1 < content.bytes.size(); i += 2)
        std::swap(content.bytes[i], content.bytes[i + 1]);
    content.mark = mark;
    return content;
}

// A file on its way to being written: its number, and the attributes that stood in the way.
class Writing {
  public:
    Writing(Text& path, bool append)
        : path_(path), access_(append ? platform::FileAccess::append : platform::FileAccess::replace) {}
    ~Writing() {
        attempt([&] { files().close(number()); });
        if (attributes_ != platform::noAttributes) attempt([&] { SetAttributes(path_, attributes_); });
    }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    // Several passes, each with its tries; what remains wrong after them.
    FailureNumber open() {
        FailureNumber failure = noFailure;
        for (int pass = 0; pass < mostPasses; ++pass) {
            if (number() == 0) number() = firstFileNumber;
            files().close(number());
            path_ = replaceAll(replaceAll(replaceAll(path_, u"\\?", u"\\"), u"?", u"_"), u"/", u"\\");
            failure = tryToOpen();
            if (failure == pathNotFound) {
                MkDirRecourse(FolderPart(path_, /*keepSeparator=*/true));
                failure = files().open(number(), path_, access_, file_);
            }
            if (failure != invalidProcedureCall) break;
        }
        return failure;
    }

    // A failing step when not all of it can be written.
    void put(const void* bytes, std::size_t count) { require(file_->write(bytes, count)); }
    void finish() { require(file_->close()); }

  private:
    static platform::Files& files() { return currentPlatform().files(); }
    static Long& number() { return stateOf<State>().writeFileNumber; }

    FailureNumber tryToOpen() {
        FailureNumber failure = noFailure;
        int attributeTries = 0;
        for (int tries = 0; tries < mostOpenTries; ++tries) {
            failure = files().open(number(), path_, access_, file_);
            if (failure == fileAlreadyOpen) {
                files().close(number());
                number() = number() >= highestFileNumber ? 1 : number() + 1;
            } else if (failure == pathAccessError && attributeTries < mostAttributeTries) {
                ++attributeTries;
                if (attributes_ == platform::noAttributes) attributes_ = GetAttributes(path_);
                if (attributes_ != platform::noAttributes)
                    SetAttributes(path_, attributes_ & ~platform::attributeHidden);
            } else {
                break;
            }
        }
        return failure;
    }

    Text& path_;
    platform::FileAccess access_;
    platform::OpenFile* file_ = nullptr;        // the platform's, until its number is closed
    Long attributes_ = platform::noAttributes;  // of a file that refused to be opened
};

bool isOnDriveM(TextView path) {
    return lowerCase(path.substr(0, 2)) == u"m:";
}

void tellUser(TextView path, FailureNumber failure) {
    Text message = u"Error writing file: \r" + decimalText(failure) + u", ";
    message.append(describeFailure(failure)).append(u"\r").append(path);
    constexpr Long okButton = 0;
    currentPlatform().windows().messageBox(message, okButton);
}

// Opens the file and lets `fill` write it; what it held before stays when any of that fails.
template <class Fill>
Long writeFile(Text& path, bool append, bool showError, Fill&& fill) {
    const RoutineLog log(u"WriteFileContents");
    if (path.empty()) return 0;
    Long result = -1;
    attempt([&] {
        Writing writing(path, append);
        if (const FailureNumber failure = writing.open()) {
            raisePending(failure);
            DebugLine(path, u" err:");
            if (showError && !isOnDriveM(path)) tellUser(path, failure);
            return;
        }
        fill(writing);
        writing.finish();
        result = 0;
    });
    return result;
}

}  // namespace

Long WriteFileContents(Text& path, TextView text, bool append, Long encoding, bool showError) {
    return writeFile(path, append, showError, [&](Writing& writing) {
        const Content content = contentOf(text, encoding);
        if (!append && !content.mark.empty()) writing.put(content.mark.data(), content.mark.size());
        writing.put(content.bytes.data(), content.bytes.size());
    });
}

Long WriteFileBytes(Text& path, const ByteSource& next, bool showError) {
    return writeFile(path, /*append=*/false, showError, [&](Writing& writing) {
        constexpr std::size_t pieceSize = 1 << 20;
        std::vector<std::uint8_t> piece(pieceSize);
        while (const std::size_t count = next(piece))
            writing.put(piece.data(), count);
    });
}

}  // namespace ovno2::Files
