#include "host/output/incoming.h"

#include <chrono>
#include <random>
#include <thread>
#include <vector>

#include "host/output/console.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

// What killed programs have left in a folder.
void removeAbandoned(const fs::path& folder) {
    std::error_code ignored;
    std::vector<fs::path> left;
    for (const auto& one : fs::directory_iterator(folder, ignored))
        if (console::textOf(one.path().filename()).starts_with(Incoming::prefix) &&
            fs::is_directory(one.symlink_status(ignored)))
            left.push_back(one.path());
    for (const fs::path& one : left)
        IncomingOwner::removeAbandoned(one);
}

std::string newName() {
    std::random_device random;
    return Incoming::prefix + toUtf8(hexText(random()));
}

}  // namespace

Incoming::Incoming(const fs::path& folder) {
    removeAbandoned(folder);
    while (!owner_) {
        path_ = folder / newName();
        owner_ = IncomingOwner::make(path_);
    }
}

std::unique_ptr<Incoming> Incoming::alone(const fs::path& folder) {
    fs::path path = folder / (std::string(prefix) + "alone");
    // A program that was killed holds it for as long as it takes to clear it away.
    constexpr int attempts = 40;
    for (int i = 0; i < attempts; ++i) {
        if (i != 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        IncomingOwner::removeAbandoned(path);
        if (std::unique_ptr<IncomingOwner> owner = IncomingOwner::make(path))
            return std::unique_ptr<Incoming>(new Incoming(std::move(path), std::move(owner)));
    }
    return nullptr;
}

Incoming::~Incoming() {
    std::error_code ignored;
    clear();
    owner_.reset();
    fs::remove_all(path_, ignored);
}

void Incoming::clear() const {
    std::error_code ignored;
    for (const auto& one : fs::directory_iterator(path_, ignored))
        fs::remove_all(one.path(), ignored);
}

fs::path Incoming::arrived() const {
    std::error_code ignored;
    fs::directory_iterator files(path_, ignored);
    if (files == fs::directory_iterator()) return {};
    const fs::path file = files->path();
    files.increment(ignored);
    const bool isAlone = files == fs::directory_iterator();
    return isAlone && fs::is_regular_file(fs::symlink_status(file, ignored)) ? file : fs::path();
}

bool Incoming::move(const fs::path& file, const fs::path& place, bool overwrite) {
    if (!overwrite) return IncomingOwner::moveToFreePlace(file, place);
    fs::rename(file, place);
    return true;
}

}  // namespace ovno2::host
