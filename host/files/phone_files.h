// A phone's files as the commands see them: entries with their paths, found by what the user typed.
//
// Everything goes through the driver, as any host application would do it. Functions throw CommandFailure
// with a message for the user when the phone does not answer. What a phone lists only in part is told as a
// problem, and its entries so far are given; so are folders that lead in a circle.
#pragma once

#include <functional>
#include <optional>
#include <set>

#include "host/driver/driver.h"
#include "host/output/interruption.h"

namespace ovno2::host {

struct PhoneEntry : FolderEntry {
    Text path;  // "E:/Images/beach.jpg"; empty = the phone itself

    bool isPhone() const { return path.empty(); }
    bool isDrive() const { return isFolder && !isPhone() && path.find(u'/') == Text::npos; }
};

// A path of this form as the module takes it.
Text modulePath(TextView path);
Text folderOf(TextView path);  // "E:/Images" of "E:/Images/beach.jpg"; empty = the phone itself

// Ends a command before its end: the phone does not answer any more, or the user does not want it any more.
struct BrokenOff {
    int status;
    std::string message;
};

inline constexpr const char* interrupted = "Interrupted; give the command again to go on.";

struct Listing {
    std::vector<PhoneEntry> entries;  // the folders, then the files, in the phone's order
    bool isComplete = false;          // else the phone gave up behind these
};

class PhoneFiles {
  public:
    // Something that the phone should have listed and did not; `path` is the folder's.
    using Problem = std::function<void(const Text& path, const std::string& message)>;

    // Throws CommandFailure when the module would work on another phone of the same model.
    PhoneFiles(PhoneDriver& driver, const std::vector<ListedPhone>& phones, const ListedPhone& phone,
               Problem problem);
    ~PhoneFiles() { driver_.endFiles(); }
    PhoneFiles(const PhoneFiles&) = delete;
    PhoneFiles& operator=(const PhoneFiles&) = delete;

    // Calls one operation of the driver; `interruption`, once given, looks on meanwhile.
    template <class Call>
    Long ask(Call&& call) const {
        return interruption_ ? interruption_->whileAsking([&] { return call(driver_); }) : call(driver_);
    }
    void lookOn(Interruption* interruption) { interruption_ = interruption; }
    // Throws BrokenOff when the user has asked the program to end.
    void goOnOrEnd() const;

    std::string phoneTitle() const;
    const Text& phoneSerial() const { return phone_.serial; }

    Listing tryToList(const Text& folder) const;
    // All that is in a folder.
    std::vector<PhoneEntry> list(const Text& folder) const;
    // As far as the phone lists it, with a problem where that is not all.
    std::vector<PhoneEntry> listForReading(const Text& folder) const;

    // What a typed path means: one entry, or all that its wildcards match. Throws CommandFailure when that is
    // nothing.
    std::vector<PhoneEntry> find(const std::string& typed) const;
    // The one entry that a path without wildcards means.
    PhoneEntry findOne(const std::string& typed) const;

    // Calls `visit` for everything below a folder: first with an entry, then, for a folder, with what is in
    // it. `depth` counts from 0 in the folder itself. Entries that no path can name are not gone into. Throws
    // CommandFailure when there is more than any phone holds.
    using Visitor = std::function<void(const PhoneEntry& entry, std::size_t depth, bool isLast)>;
    void walk(const PhoneEntry& folder, const Visitor& visit) const;
    // Whether all that is directly in the folder was listed by the walks so far.
    bool isKnownWhole(const Text& folder) const { return !listedInPart_.contains(folder); }

  private:
    class Walk;

    std::vector<PhoneEntry> matching(const PhoneEntry& folder, const Text& part,
                                     const std::string& typed) const;
    std::string notListed(const Text& folder, std::size_t count) const;
    void report(const Text& folder, const std::string& message) const;

    PhoneDriver& driver_;
    const ListedPhone& phone_;
    Problem problem_;
    Interruption* interruption_ = nullptr;
    mutable std::set<Text> listedInPart_;
};

}  // namespace ovno2::host
