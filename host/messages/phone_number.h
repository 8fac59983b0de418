// Numbers as people write them, and whose they are.
#pragma once

#include <unordered_map>
#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

// True when both may be the same number: blanks and signs do not count, "00" is "+", and one without its
// country is the same as one with it: "0171 392-0001" and "+49 171 3920001".
bool sameNumber(TextView a, TextView b);

// What all ways to write a number have in common, for looking it up; the text itself for an address that is
// none.
Text numberKey(TextView address);

// Whom numbers and mail addresses belong to.
class NameBook {
  public:
    NameBook() = default;
    explicit NameBook(const std::vector<Contact>& contacts);

    // Empty for one that nobody has. Where two share a number, the first has it.
    Text nameOf(TextView address) const;

    // The mobile numbers of whoever is called so; letter case and accents do not count.
    std::vector<Text> mobilesOf(TextView name) const;

  private:
    struct Entry {
        Text address;
        Text name;
        bool isMobile = false;
    };
    std::unordered_map<Text, std::vector<Entry>> entries_;  // by key
};

}  // namespace ovno2::host
