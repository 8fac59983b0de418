#include "host/phones/phone_choice.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "host/output/display_width.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

bool isNamed(const ListedPhone& phone, TextView wanted) {
    return equalsIgnoringCase(phone.serial, wanted) || equalsIgnoringCase(phone.model, wanted) ||
           equalsIgnoringCase(phone.name, wanted);
}

bool isNamedInPart(const ListedPhone& phone, TextView wanted) {
    return containsIgnoringCase(phone.model, wanted) || containsIgnoringCase(phone.name, wanted);
}

bool isNumberedInPart(const ListedPhone& phone, TextView wanted) {
    return containsIgnoringCase(phone.serial, wanted);
}

// One entry a phone, although a phone may be attached in several ways.
template <class Matches>
std::vector<const ListedPhone*> phonesThat(std::span<const ListedPhone> phones, Matches matches) {
    std::vector<const ListedPhone*> found;
    for (const ListedPhone& phone : phones) {
        const bool known = std::any_of(found.begin(), found.end(), [&](const ListedPhone* other) {
            return !phone.serial.empty() && other->serial == phone.serial;
        });
        if (!known && matches(phone)) found.push_back(&phone);
    }
    return found;
}

std::vector<const ListedPhone*> allOf(std::span<const ListedPhone> phones) {
    return phonesThat(phones, [](const ListedPhone&) { return true; });
}

std::string described(const ListedPhone& phone) {
    std::string text = toUtf8(phone.model);
    if (!phone.name.empty() && phone.name != phone.model) text += " \"" + toUtf8(phone.name) + "\"";
    if (!phone.serial.empty()) text += " (" + toUtf8(phone.serial) + ")";
    return forPerson(text);
}

std::string listOf(const std::vector<const ListedPhone*>& phones) {
    std::string lines;
    for (const ListedPhone* phone : phones)
        lines += "\n  " + described(*phone);
    return lines;
}

std::string notFound(std::span<const ListedPhone> phones, TextView wanted) {
    std::vector<Text> names;
    const auto add = [&](const Text& name) {
        if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
    };
    for (const ListedPhone& phone : phones) {
        add(phone.model);
        add(phone.name);
        add(phone.serial);
    }
    std::string message = "No attached phone is called \"" + toUtf8(wanted) + "\".";
    const std::vector<Text> near = nearestNames(wanted, names, 3);
    for (std::size_t i = 0; i < near.size(); ++i)
        message += (i == 0                 ? " Did you mean \""
                    : i + 1 == near.size() ? " or \""
                                           : ", \"") +
                   toUtf8(singleLine(near[i])) + "\"";
    if (!near.empty()) return message + "?";
    return message + " These are attached:" + listOf(allOf(phones));
}

}  // namespace

std::size_t editDistance(TextView a, TextView b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::vector<Text> nearestNames(TextView wanted, std::span<const Text> names, std::size_t count) {
    struct Candidate {
        std::size_t distance;
        const Text* name;
    };
    const Text typed = lowerCase(wanted);
    const std::size_t limit = std::max<std::size_t>(2, typed.size() / 3);
    std::vector<Candidate> candidates;
    for (const Text& name : names) {
        // A word of the name may be all that was typed.
        std::size_t distance = editDistance(typed, lowerCase(name));
        for (const Text& word : split(lowerCase(name), u' '))
            distance = std::min(distance, editDistance(typed, word));
        if (distance <= limit && distance < typed.size()) candidates.push_back({distance, &name});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.distance < b.distance; });
    if (candidates.size() > count) candidates.resize(count);
    std::vector<Text> nearest;
    nearest.reserve(candidates.size());
    for (const Candidate& candidate : candidates)
        nearest.push_back(*candidate.name);
    return nearest;
}

PhoneChoice choosePhone(std::span<const ListedPhone> phones, const std::optional<Text>& wanted,
                        Purpose purpose) {
    if (phones.empty()) return {nullptr, "No phone is attached. Connect one and try again."};
    const std::vector<const ListedPhone*> attached = allOf(phones);
    if (!wanted) {
        const ListedPhone* first = attached.front();
        if (attached.size() == 1) return {first, {}};
        if (purpose == Purpose::read)
            return {first, "This is " + described(*first) + ", the first of " +
                               std::to_string(attached.size()) + " phones; --phone chooses another."};
        return {nullptr,
                "Several phones are attached; say with --phone which one to change:" + listOf(attached)};
    }
    if (wanted->empty())
        return {nullptr, "--phone: an empty name means no phone. These are attached:" + listOf(attached)};
    std::vector<const ListedPhone*> found;
    for (const auto matches : {isNamed, isNamedInPart, isNumberedInPart})
        if (found.empty())
            found = phonesThat(phones, [&](const ListedPhone& phone) { return matches(phone, *wanted); });
    if (found.empty()) return {nullptr, notFound(phones, *wanted)};
    if (found.size() > 1)
        return {nullptr, "\"" + toUtf8(*wanted) +
                             "\" fits several phones; name one by its serial number:" + listOf(found)};
    return {found.front(), {}};
}

}  // namespace ovno2::host
