// Reading a phone's contacts.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

// Where pictures go: the folder that the user names, or one that is removed afterwards, since the phone's
// pictures come with the contacts in any case.
class PictureFolder {
  public:
    // Empty = they are not kept. Throws CommandFailure for a folder that cannot be made.
    explicit PictureFolder(const std::string& wanted = {});
    ~PictureFolder();
    PictureFolder(const PictureFolder&) = delete;
    PictureFolder& operator=(const PictureFolder&) = delete;

    std::string path() const;  // absolute

  private:
    bool kept_;
    std::filesystem::path path_;
};

// Shows how far it has come. Throws CommandFailure.
std::vector<Contact> readPhoneBook(PhoneDriver& driver, const ListedPhone& phone,
                                   const PictureFolder& pictures);

}  // namespace ovno2::host
