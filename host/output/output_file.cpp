#include "host/output/output_file.h"

#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr const char* unfinished = "written";

}  // namespace

OutputFile::OutputFile(const std::string& name, bool overwrites) : name_(name), overwrites_(overwrites) {
    if (name == "-") return;
    place_ = console::pathOf(name);
    std::error_code error;
    if (fs::is_directory(place_, error)) fail("it is a folder; give the name of a file in it.");
    if (!overwrites && fs::exists(fs::symlink_status(place_, error)))
        fail("it is there already; --force overwrites it.");
    try {
        incoming_ =
            std::make_unique<Incoming>(place_.has_parent_path() ? place_.parent_path() : fs::path("."));
    } catch (const fs::filesystem_error& failure) {
        fail(failure.code().message() + ".");
    }
    file_.open(incoming_->path() / unfinished, std::ios::binary);
    if (!file_) fail("the folder takes no files.");
}

void OutputFile::write(std::string_view bytes) {
    if (place_.empty()) {
        writeData(bytes);
        return;
    }
    file_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file_) fail("the disk may be full.");
}

void OutputFile::finish() {
    if (place_.empty()) return;
    file_.close();
    if (!file_) fail("the disk may be full.");
    const fs::path written = incoming_->path() / unfinished;
    try {
        fs::permissions(written, fs::perms::owner_read | fs::perms::owner_write);
        if (!Incoming::move(written, place_, overwrites_))
            fail("it is there already; --force overwrites it.");
    } catch (const fs::filesystem_error& failure) {
        fail(failure.code().message() + ".");
    }
    incoming_.reset();
}

void OutputFile::fail(const std::string& why) const {
    throw CommandFailure{failed, "\"" + name_ + "\" is not written: " + why};
}

}  // namespace ovno2::host
