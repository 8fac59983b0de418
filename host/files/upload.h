// Copying files and folders to the phone.
//
// The phone gives every file the time of its arrival, so a file that is there is compared by its content:
// with what this computer has sent (see sent_files.h), and where that tells nothing, by fetching it. A file
// that cannot be compared is written. Files that begin like a text in UTF-16 or with a UTF-8 mark go to the
// phone as text in the system's code page: that is how the phone driver sends texts.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>

#include "host/files/fetcher.h"
#include "host/files/file_report.h"
#include "host/files/sent_files.h"

namespace ovno2::host {

class Upload {
  public:
    // What a file or folder of this computer is called on the phone; none = it stays here.
    using Naming = std::function<std::optional<Text>(const std::filesystem::path& local)>;

    // With `isTrial` nothing is sent or made, and everything else as if it were. Without a naming everything
    // keeps its name.
    Upload(const PhoneFiles& phone, PhoneEntry target, bool overwrite, bool isTrial, Naming naming = {});

    // Adds a file, or a folder with all that is in it; an absolute path.
    void add(const std::filesystem::path& local);
    // Adds all that is in a folder.
    void addAllIn(const std::filesystem::path& folder);
    // Adds a file that gets another name on the phone.
    void add(const std::filesystem::path& file, const Text& name);

    std::uint64_t totalBytes() const { return total_; }
    void announce(FileReport& report) const { announce(top_, target_.path, report); }

    // Copies all that was added. Throws BrokenOff.
    void run(FileReport& report, TransferProgress& progress);
    // Lets go of what is on its way.
    void drop();

  private:
    struct File {
        std::filesystem::path local;
        Text name;  // on the phone
        std::uint64_t size = 0;
    };
    struct Folder {
        std::filesystem::path local;  // empty for the top, which holds what was added
        Text name;                    // on the phone
        std::vector<File> files;
        std::vector<Folder> folders;
        std::vector<std::filesystem::path> others;  // neither file nor folder
        std::string wrong;                          // why it cannot be read
    };
    struct Sent {
        FileResult result;
        File file;
        Content content;
    };
    using Entries = std::map<Text, PhoneEntry>;  // by name in lower case
    enum class Likeness { equal, different, unknown };

    void fill(Folder& folder);
    void announce(const Folder& folder, const Text& path, FileReport& report) const;
    void copyFolder(const Folder& folder, const Text& path, bool isNew);
    void copyFiles(const Folder& folder, const Text& path, Entries& there);
    bool makeFolder(const Folder& folder, Entries& there, Text& actual);
    std::string obstacle(const File& file, const std::string& path, const Entries& there) const;
    Likeness compare(const Content& content, const File& file, const PhoneEntry& there);
    FileResult copyFile(const File& file, const Text& folder, Entries& there, std::vector<Sent>& sent);
    Long send(const File& file, const Text& folder);
    void check(const Text& folder, std::vector<Sent>& sent);
    void leaveOut(const Folder& folder, const Text& path, const std::string& why);

    const PhoneFiles& phone_;
    PhoneEntry target_;
    bool overwrite_;
    bool isTrial_;
    Naming naming_;
    Folder top_;
    std::uint64_t total_ = 0;
    SentFiles sentFiles_;
    Fetcher fetcher_;                    // brings what has to be compared
    std::unique_ptr<Incoming> renamed_;  // holds a file under the name that it gets on the phone
    FileReport* report_ = nullptr;
    TransferProgress* progress_ = nullptr;
};

}  // namespace ovno2::host
