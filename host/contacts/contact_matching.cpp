#include "host/contacts/contact_matching.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "host/contacts/field_families.h"

namespace ovno2::host {

namespace {

std::vector<ContactContent> contentsOf(std::span<const ContactDraft> contacts) {
    std::vector<ContactContent> contents;
    contents.reserve(contacts.size());
    for (const ContactDraft& contact : contacts)
        contents.push_back(contentOf(contact));
    return contents;
}

class Matching {
  public:
    Matching(std::span<const ContactDraft> cards, std::span<const ContactDraft> contacts)
        : cards_(cards),
          contacts_(contacts),
          cardContents_(contentsOf(cards)),
          contents_(contentsOf(contacts)),
          matches_(cards.size()),
          taken_(contacts.size()) {
        for (std::size_t i = 0; i < contacts.size(); ++i) {
            if (!contacts[i].uid.empty()) byUid_.emplace(contacts[i].uid, i);
            byContent_[contents_[i]].push_back(i);
            byName_[nameOf(contacts[i])].push_back(i);
        }
    }

    std::vector<std::optional<ContactMatch>> found() {
        eachUnmatched([&](std::size_t card) { return withUid(card); });
        eachUnmatched([&](std::size_t card) { return equal(card); });
        eachUnmatched([&](std::size_t card) { return holding(card); });
        eachUnmatched([&](std::size_t card) { return agreeing(card, /*byNumber=*/true); });
        eachUnmatched([&](std::size_t card) { return agreeing(card, /*byNumber=*/false); });
        return std::move(matches_);
    }

  private:
    template <class Find>
    void eachUnmatched(Find find) {
        for (std::size_t card = 0; card < cards_.size(); ++card)
            if (!matches_[card]) {
                matches_[card] = find(card);
                if (matches_[card]) taken_[matches_[card]->contact] = true;
            }
    }

    std::optional<ContactMatch> withUid(std::size_t card) const {
        const auto known = byUid_.find(cards_[card].uid);
        if (cards_[card].uid.empty() || known == byUid_.end() || taken_[known->second]) return std::nullopt;
        const std::size_t contact = known->second;
        const Text name = nameOf(cards_[card]);
        const bool agrees = (!name.empty() && name == nameOf(contacts_[contact])) ||
                            shareNumber(cardContents_[card], contents_[contact]);
        return agrees ? std::optional(ContactMatch{contact, true}) : std::nullopt;
    }
    // Each contact once; equal cards find equal contacts.
    std::optional<ContactMatch> equal(std::size_t card) {
        const auto known = byContent_.find(cardContents_[card]);
        if (known == byContent_.end()) return std::nullopt;
        std::vector<std::size_t>& left = known->second;
        while (!left.empty() && taken_[left.back()])
            left.pop_back();
        return left.empty() ? std::nullopt : std::optional(ContactMatch{left.back()});
    }
    std::optional<ContactMatch> holding(std::size_t card) const {
        std::optional<ContactMatch> match;
        for (const std::size_t contact : named(card)) {
            if ((match && taken_[contact]) || !holdsAll(contents_[contact], cardContents_[card])) continue;
            match = ContactMatch{contact};
            if (!taken_[contact]) break;
        }
        return match;
    }
    // A number without a name says nothing about who it is.
    std::optional<ContactMatch> agreeing(std::size_t card, bool byNumber) const {
        if (nameOf(cards_[card]).empty()) return std::nullopt;
        for (const std::size_t contact : named(card))
            if (!taken_[contact] && !contradict(cardContents_[card], contents_[contact]) &&
                (!byNumber || shareNumber(cardContents_[card], contents_[contact])))
                return ContactMatch{contact};
        return std::nullopt;
    }
    std::span<const std::size_t> named(std::size_t card) const {
        const auto known = byName_.find(nameOf(cards_[card]));
        return known == byName_.end() ? std::span<const std::size_t>() : known->second;
    }

    std::span<const ContactDraft> cards_, contacts_;
    std::vector<ContactContent> cardContents_, contents_;
    std::vector<std::optional<ContactMatch>> matches_;
    std::vector<bool> taken_;
    std::unordered_map<Text, std::size_t> byUid_;
    std::map<ContactContent, std::vector<std::size_t>> byContent_;
    std::unordered_map<Text, std::vector<std::size_t>> byName_;
};

// Values of one family that the contact does not have yet go behind those that it has.
class Merger {
  public:
    Merger(ContactDraft& result, const ContactDraft& card, bool replaces, std::vector<std::string>& kept)
        : result_(result), card_(card), replaces_(replaces), kept_(kept), there_(contentOf(result)) {}

    void mergeRow(std::size_t row) {
        const std::vector<Text>& values = card_.values[row];
        if (values.empty() || holds(row, values)) return;
        std::vector<Text>& own = result_.values[row];
        if (isSingle(row) && (own.empty() || replaces_)) {
            own = values;
        } else if (isSingle(row)) {
            kept_.push_back(toUtf8(fieldRows()[row].label) + ": the phone's differs and stays");
        } else {
            for (const Text& value : values)
                if (!holds(row, {value})) add(row, value);
        }
    }

    // An address goes into one of its kind that lacks only what it has, or beside those that are there.
    void mergeAddress(const AddressRows& kind, std::size_t n) {
        bool known = true;
        for (const std::size_t row : kind)
            if (!partOf(card_, row, n).empty() && !holds(row, {partOf(card_, row, n)})) known = false;
        if (known) return;
        std::size_t count = 0;
        for (const std::size_t row : kind)
            count = std::max(count, result_.values[row].size());
        const bool completes = count == 1 && std::ranges::all_of(kind, [&](std::size_t row) {
                                   const Text own = partOf(result_, row, 0), wanted = partOf(card_, row, n);
                                   return own.empty() || wanted.empty() || own == wanted;
                               });
        for (const std::size_t row : kind) {
            std::vector<Text>& own = result_.values[row];
            const Text wanted = partOf(card_, row, n);
            if (completes && (wanted.empty() || !own.empty())) continue;
            if (!completes) own.resize(count);
            own.push_back(wanted);
        }
    }

    void mergePicture() {
        if (card_.pictures.empty()) return;
        const bool isThere = std::ranges::any_of(result_.pictures, [&](const ContactDraft::Picture& own) {
            return own.bytes == card_.pictures.front().bytes;
        });
        if (isThere) return;
        if (result_.pictures.empty() || replaces_)
            result_.pictures = {card_.pictures.front()};
        else
            kept_.push_back("Picture: the phone's differs and stays");
    }

  private:
    static Text partOf(const ContactDraft& contact, std::size_t row, std::size_t n) {
        return n < contact.values[row].size() ? contact.values[row][n] : Text();
    }
    bool holds(std::size_t row, const std::vector<Text>& values) const {
        ContactDraft part;
        part.values.resize(fieldRows().size());
        part.values[row] = values;
        return holdsAll(there_, contentOf(part));
    }
    void add(std::size_t row, const Text& value) {
        std::vector<Text>& first = result_.values[writtenTogether(row).front()];
        std::vector<Text>& last = result_.values[writtenTogether(row).back()];
        (first.empty() ? first : last).push_back(value);
    }

    ContactDraft& result_;
    const ContactDraft& card_;
    bool replaces_;
    std::vector<std::string>& kept_;
    const ContactContent there_;
};

}  // namespace

std::vector<std::optional<ContactMatch>> matchContacts(std::span<const ContactDraft> cards,
                                                       std::span<const ContactDraft> contacts) {
    return Matching(cards, contacts).found();
}

ContactDraft merged(const ContactDraft& contact, const ContactDraft& card, bool isByUid,
                    std::vector<std::string>& kept) {
    ContactDraft result = contact;
    Merger merger(result, card, isByUid, kept);
    for (std::size_t row = 0; row < fieldRows().size(); ++row) {
        const bool isAddress = writtenTogether(row).size() == addressParts;
        if (!isAddress && fieldRows()[row].code != HostField::other) merger.mergeRow(row);
    }
    for (const AddressRows& kind : addressKinds()) {
        std::size_t count = 0;
        for (const std::size_t row : kind)
            count = std::max(count, card.values[row].size());
        for (std::size_t n = 0; n < count; ++n)
            merger.mergeAddress(kind, n);
    }
    merger.mergePicture();
    return result;
}

}  // namespace ovno2::host
