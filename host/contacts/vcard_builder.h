// One address card on its way to a contact: takes the card's lines, ends with the contact.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/contacts/contact_draft.h"
#include "host/formats/content_lines.h"

namespace ovno2::host {

class CardBuilder {
  public:
    CardBuilder();

    void add(const ContentLine& line);
    // A component inside the card, which no row can hold.
    void addComponent(std::string_view name);
    // Something for the contact's `unplaced`; once each.
    void say(std::string_view property, const std::string& what);

    // Places what had to wait for the rest of the card. Empty, or why the card is no contact.
    std::string finish();
    ContactDraft& contact() { return contact_; }

  private:
    // A value that goes to one of several rows, by its types.
    struct Typed {
        std::string property, group;
        std::vector<Text> parts;  // one; of an address five
        std::set<std::string> types;
        int rank = 0;             // the preferred ones come first
        std::optional<Long> row;  // the host code of the row that the card names
        bool isWork() const { return types.contains("WORK"); }
    };

    using Handler = void (CardBuilder::*)(const ContentLine&);
    static const std::map<std::string_view, Handler>& handlers();

    void addName(const ContentLine& line);
    void addFormattedName(const ContentLine& line);
    void addNickname(const ContentLine& line);
    void addCustom(const ContentLine& line);
    void addCompany(const ContentLine& line);
    void addJob(const ContentLine& line);
    void addRole(const ContentLine& line);
    void addTyped(const ContentLine& line);
    void addAddress(const ContentLine& line);
    void addNote(const ContentLine& line);
    void addBirthday(const ContentLine& line);
    void addCategories(const ContentLine& line);
    void addPicture(const ContentLine& line);
    void addUid(const ContentLine& line);
    void addPhoneUid(const ContentLine& line);
    void addKind(const ContentLine& line);
    void addLabel(const ContentLine& line);
    void addOwnOther(const ContentLine& line);
    void addOwnBirthday(const ContentLine& line);
    void passOver(const ContentLine&) {}

    Typed typedOf(const ContentLine& line) const;
    void sayParameters(const ContentLine& line, bool usesTypes);
    bool put(Long code, TextView value);
    void putOrSay(std::string_view property, Long code, TextView value);
    void placeTyped(Typed& typed);
    void placeAddress(Typed& typed);
    void placeLabels();
    void placeFormattedName();

    ContactDraft contact_;
    std::set<std::string> said_;
    std::vector<Typed> typed_;
    std::map<std::string, Text> labels_;  // by group
    std::vector<Text> roles_;
    std::optional<Text> formattedName_;
    Text additionalName_, suffix_;
    Text phoneUid_;
    bool hasName_ = false;
    bool isFormalName_ = false;  // the card says that its formatted name is one
    bool isGroup_ = false;       // a list of contacts, and no contact
};

}  // namespace ovno2::host
