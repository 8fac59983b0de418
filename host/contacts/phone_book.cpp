#include "host/contacts/phone_book.h"

#include "host/contacts/field_table.h"
#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/progress.h"
#include "host/phones/attached_phones.h"

namespace ovno2::host {

namespace fs = std::filesystem;

PictureFolder::PictureFolder(const std::string& wanted) : kept_(!wanted.empty()) {
    if (!kept_) {
        path_ = console::makeTemporaryFolder();
        return;
    }
    path_ = fs::absolute(console::pathOf(wanted));
    std::error_code error;
    fs::create_directories(path_, error);
    if (!fs::is_directory(path_))
        throw CommandFailure{failed, "--pictures: the folder \"" + wanted + "\" cannot be made" +
                                         (error ? ": " + error.message() : "") + "."};
}

PictureFolder::~PictureFolder() {
    std::error_code ignored;
    if (!kept_) fs::remove_all(path_, ignored);
}

std::string PictureFolder::path() const {
    return console::textOf(path_);
}

std::vector<Contact> readPhoneBook(PhoneDriver& driver, const ListedPhone& phone,
                                   const PictureFolder& pictures) {
    std::vector<Contact> contacts;
    Long result = 0;
    {
        ProgressBar progress("the contacts of " + titleOf(phone), console::errorIsTerminal());
        result = driver.readContacts(
            phone, fieldDefinitions(), pictures.path(), [&](Long value) { progress.advanceTo(value); },
            contacts);
    }
    if (result < 0)
        throw CommandFailure{failed, resultMessage(Operation::readContacts, result, titleOf(phone))};
    return contacts;
}

}  // namespace ovno2::host
