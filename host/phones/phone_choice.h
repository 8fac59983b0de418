// Which of the listed phones the user means.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

struct PhoneChoice {
    const ListedPhone* phone = nullptr;  // null = not decided, and `message` says why
    std::string message;
};

// Without a name, the first phone. Otherwise the phone whose serial number, model or name is `wanted`, else
// whose model or name contains it, else whose serial number does; letter case does not matter. A name that
// fits several phones decides nothing, and one that fits none is answered with the names closest to it.
PhoneChoice choosePhone(std::span<const ListedPhone> phones, TextView wanted);

// The number of single characters to insert, delete or replace to make one text the other.
std::size_t editDistance(TextView a, TextView b);

// Those of `names` that are closest to `wanted`, at most `count`, the closest first; none that is further
// away than a slip of the hand.
std::vector<Text> nearestNames(TextView wanted, std::span<const Text> names, std::size_t count);

}  // namespace ovno2::host
