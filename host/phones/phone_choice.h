// Which of the listed phones the user means.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

// What the command does with the phone: what is to be changed must be named.
enum class Purpose { read, change };

struct PhoneChoice {
    const ListedPhone* phone = nullptr;  // null = not decided, and `message` says why
    std::string message;  // with a phone: which of several was taken; empty = no choice was left
};

// Without a name, the first phone; to change something, only when no other is attached. Otherwise the phone
// whose serial number, model or name is `wanted`, else whose model or name contains it, else whose serial
// number does; letter case does not matter. A name that fits several phones decides nothing, and one that
// fits none is answered with the names closest to it. A phone that is attached in several ways counts once.
PhoneChoice choosePhone(std::span<const ListedPhone> phones, const std::optional<Text>& wanted,
                        Purpose purpose);

// The number of single characters to insert, delete or replace to make one text the other.
std::size_t editDistance(TextView a, TextView b);

// Those of `names` that are closest to `wanted`, at most `count`, the closest first; none that is further
// away than a slip of the hand.
std::vector<Text> nearestNames(TextView wanted, std::span<const Text> names, std::size_t count);

}  // namespace ovno2::host
