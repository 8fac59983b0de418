#include "host/contacts/picture_folder.h"

#include <algorithm>
#include <fstream>
#include <map>

#include "host/contacts/contact_values.h"
#include "host/contacts/field_table.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr const char* temporaryVariable = "TMP";
#else
constexpr const char* temporaryVariable = "TMPDIR";
#endif

// Makes the folder and those above it that are missing, for the user alone: pictures are nobody else's
// business.
void makeOwnFolders(const fs::path& folder, std::error_code& error) {
    std::vector<fs::path> made;
    for (fs::path path = folder; path.has_relative_path() && !fs::exists(path, error);
         path = path.parent_path())
        made.push_back(path);
    fs::create_directories(folder, error);
    std::error_code ignored;
    for (const fs::path& path : made)
        fs::permissions(path, fs::perms::owner_all, ignored);
}

// How a folder stands in values, the drive left out.
Text folderInValues(const fs::path& folder) {
    const Text path = replaceAll(fromUtf8(console::textOf(folder)), u"/", u"\\") + u'\\';
    return path.substr(path.find(u'\\'));
}

bool holdTheSame(const fs::path& a, const fs::path& b) {
    std::error_code error;
    if (!fs::is_regular_file(b, error) || fs::file_size(a) != fs::file_size(b)) return false;
    std::ifstream first(a, std::ios::binary), second(b, std::ios::binary);
    using Bytes = std::istreambuf_iterator<char>;
    return first && second && std::equal(Bytes(first), Bytes(), Bytes(second), Bytes());
}

// The paths in a picture value. Each leads to `folder`, which has "\\" at its end and no drive in front, so
// that a
// ";" parts two of them only before such a path.
std::vector<Text> pathsIn(TextView value, TextView folder) {
    std::vector<Text> paths;
    const auto startOf = [&](std::size_t place) {
        constexpr std::size_t drive = 2;
        return place >= drive && value[place - 1] == u':' ? place - drive : place;
    };
    for (std::size_t place = value.find(folder); place != TextView::npos;) {
        const std::size_t next = value.find(folder, place + 1);
        const std::size_t end = next == TextView::npos ? value.size() : startOf(next) - 1;
        paths.emplace_back(value.substr(startOf(place), end - startOf(place)));
        place = next;
    }
    if (paths.empty() && !value.empty()) paths.emplace_back(value);
    return paths;
}

TextView pictureValueOf(const Contact& contact) {
    TextView picture;
    const std::size_t pictureRow = rowOf(HostField::picture);
    forEachValue(contact.values, [&](std::size_t row, TextView value) {
        if (row == pictureRow) picture = value;
    });
    return picture;
}

}  // namespace

PictureFolder::PictureFolder(const std::string& wanted, bool overwrites) : overwrites_(overwrites) {
    const auto refuse = [&](const std::string& why) {
        throw CommandFailure{failed, (wanted.empty() ? "A folder for temporary files"
                                                     : "--pictures: the folder \"" + wanted + "\"") +
                                         " cannot be " + why + "."};
    };
    std::error_code error;
    if (!wanted.empty()) {
        wanted_ = fs::absolute(console::pathOf(wanted));
        makeOwnFolders(wanted_, error);
        if (!fs::is_directory(wanted_)) refuse("made: " + error.message());
    }
    const fs::path parent = wanted.empty() ? fs::temp_directory_path(error) : wanted_;
    if (error) refuse("written: " + error.message());
    try {
        private_.emplace(parent);
    } catch (const fs::filesystem_error& failure) {
        refuse("written: " + failure.code().message());
    }
    if (folderInValues(private_->path()).find(u'?') != Text::npos)
        refuse("used: the phone driver takes no path with a \"?\"");
}

PictureFolder::ForTemporaryFiles::ForTemporaryFiles(const PictureFolder& folder)
    : before_(console::environment(temporaryVariable)) {
    console::setEnvironment(temporaryVariable, folder.path());
}

PictureFolder::ForTemporaryFiles::~ForTemporaryFiles() {
    console::setEnvironment(temporaryVariable, before_);
}

std::string PictureFolder::path() const {
    return console::textOf(private_->path());
}

std::vector<fs::path> PictureFolder::filesOf(const Contact& contact) const {
    std::vector<fs::path> files;
    for (const Text& picture : pathsIn(pictureValueOf(contact), folderInValues(private_->path()))) {
        const fs::path file = pathOfModuleText(picture);
        if (std::ranges::find(files, file) == files.end()) files.push_back(file);
    }
    return files;
}

std::vector<std::string> PictureFolder::keep(std::vector<Contact>& contacts) {
    std::vector<std::string> messages;
    if (wanted_.empty()) return messages;
    const Text folder = folderInValues(private_->path());
    std::map<Text, int> uses;  // of a file; what the module wrote last is in it
    for (const Contact& contact : contacts)
        for (const Text& picture : pathsIn(pictureValueOf(contact), folder))
            ++uses[picture];
    for (Contact& contact : contacts)
        for (const Text& picture : pathsIn(pictureValueOf(contact), folder)) {
            const std::string missing = keepOne(picture, --uses[picture] > 0, contact.pictures);
            if (!missing.empty()) messages.push_back("A picture of " + titleOf(contact) + missing);
        }
    return messages;
}

// What became of a picture that is not in its place, to follow its name; empty for one that is.
std::string PictureFolder::keepOne(const Text& modulePath, bool replaced, std::vector<Text>& kept) const {
    const fs::path source = pathOfModuleText(modulePath);
    if (replaced) return " is lost: the phone has another one of the same name.";
    std::error_code error;
    if (source.parent_path() != private_->path() || !fs::is_regular_file(source, error))
        return " could not be written. See whether the disk is full, and give the command again.";
    const fs::path target = wanted_ / source.filename();
    const std::string name = "\"" + console::textOf(target) + "\"";
    if (!holdTheSame(source, target)) {
        fs::permissions(source, fs::perms::owner_read | fs::perms::owner_write, error);
        try {
            if (!Incoming::move(source, target, overwrites_))
                return " is not kept: " + name + " is there and differs. --force overwrites it.";
        } catch (const fs::filesystem_error& failure) {
            return " could not be put to " + name + ": " + failure.code().message() + ".";
        }
    }
    kept.push_back(fromUtf8(console::textOf(target)));
    return {};
}

}  // namespace ovno2::host
