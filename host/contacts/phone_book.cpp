#include "host/contacts/phone_book.h"

#include <algorithm>

#include "host/contacts/field_table.h"
#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/progress.h"

namespace ovno2::host {

namespace {

// Counts the contacts that the phone named: the control is told of each, whether it can be read or not.
class ListedContacts {
  public:
    void advanceTo(Long value) {
        constexpr Long announcement = 50;
        const Long step = value - value_;
        value_ = value;
        count_ = step >= announcement ? 0 : count_ + static_cast<std::size_t>(step);
    }
    // Before the announcement come the steps to the contacts.
    std::size_t count() const { return count_; }

  private:
    Long value_ = 0;
    std::size_t count_ = 0;
};

// A picture's value is where this read has put it.
Text withoutPictures(TextView values) {
    static const std::size_t pictureRow = rowOf(HostField::picture);
    Text others;
    forEachValue(values, [&](std::size_t row, TextView value) {
        if (row != pictureRow) others.append(decimalText(static_cast<Long>(row))).append(value).append(u"\t");
    });
    return others;
}

std::string missingContacts(PhoneDriver& driver, const ListedPhone& phone, const PhoneBook& book) {
    return std::to_string(book.contacts.size()) + " of " + std::to_string(book.listed) + " contacts of " +
           titleOf(phone) + " could be read." + whatToDo(driver, phone);
}

}  // namespace

PhoneBook readPhoneBook(const AttachedPhones& phones, const ListedPhone& phone, PictureFolder& pictures) {
    PhoneBook book;
    ListedContacts listed;
    Long result = 0;
    {
        const PictureFolder::ForTemporaryFiles temporary(pictures);
        ProgressBar progress("the contacts of " + titleOf(phone), console::errorIsTerminal() && !isQuiet());
        const auto advanced = [&](Long value) {
            progress.advanceTo(value);
            listed.advanceTo(value);
        };
        result =
            phones.driver().readContacts(phone, fieldDefinitions(), pictures.path(), advanced, book.contacts);
    }
    if (result < 0)
        throw CommandFailure{failed, resultMessage(Operation::readContacts, result, titleOf(phone))};
    book.listed = std::max(listed.count(), book.contacts.size());
    if (book.contacts.size() < book.listed)
        book.missing.push_back(missingContacts(phones.driver(), phone, book));
    std::ranges::move(pictures.keep(book.contacts), std::back_inserter(book.missing));
    return book;
}

void readAgain(const AttachedPhones& phones, const ListedPhone& phone, PhoneBook& first) {
    PictureFolder pictures;
    const PhoneBook second = readPhoneBook(phones, phone, pictures);
    const auto areTheSame = [](const Contact& a, const Contact& b) {
        return a.uid == b.uid && a.location == b.location &&
               withoutPictures(a.values) == withoutPictures(b.values);
    };
    if (first.listed != second.listed || !std::ranges::equal(first.contacts, second.contacts, areTheSame))
        first.missing.push_back(changedBetweenReads("contacts of " + titleOf(phone)));
}

void requireWhole(const PhoneBook& book) {
    requireWhole(book.missing);
}

}  // namespace ovno2::host
