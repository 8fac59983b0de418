// Where the pictures of contacts go.
//
// The module writes every picture that it meets, over whatever has its name. It gets a private folder for
// that; from there the pictures are put where the user wants them, or they go with the folder.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/driver/driver.h"
#include "host/output/incoming.h"

namespace ovno2::host {

class PictureFolder {
  public:
    // Empty = no pictures are kept. `overwrites`: what lies in the wanted folder under the name of a picture
    // and differs is overwritten. Throws CommandFailure for a folder that cannot be made or written.
    explicit PictureFolder(const std::string& wanted = {}, bool overwrites = false);
    PictureFolder(const PictureFolder&) = delete;
    PictureFolder& operator=(const PictureFolder&) = delete;

    // The private folder, for the module: absolute.
    std::string path() const;

    // While it lives, temporary files of the program lie in the private folder: there the module chooses the
    // place of some pictures.
    class ForTemporaryFiles {
      public:
        explicit ForTemporaryFiles(const PictureFolder& folder);
        ~ForTemporaryFiles();
        ForTemporaryFiles(const ForTemporaryFiles&) = delete;
        ForTemporaryFiles& operator=(const ForTemporaryFiles&) = delete;

      private:
        std::string before_;
    };

    // The files in the private folder that hold the pictures of a contact which was read into it.
    std::vector<std::filesystem::path> filesOf(const Contact& contact) const;

    // Puts the contacts' pictures into their place and enters their paths in the contacts. Gives a message in
    // UTF-8 for each that is not there now.
    std::vector<std::string> keep(std::vector<Contact>& contacts);

  private:
    std::string keepOne(const Text& modulePath, bool replaced, std::vector<Text>& kept) const;

    std::filesystem::path wanted_;  // empty = none is kept
    bool overwrites_;
    std::optional<Incoming> private_;
};

}  // namespace ovno2::host
