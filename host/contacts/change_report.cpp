#include "host/contacts/change_report.h"

#include <algorithm>

namespace ovno2::host {

namespace {

using Result = ReportedItem::Result;

Result resultOf(const ContactChange& change) {
    if (!change.isDone()) return Result::failed;
    switch (change.kind) {
        case ContactChange::Kind::add:
            return Result::added;
        case ContactChange::Kind::change:
            return Result::changed;
        default:
            return Result::removed;
    }
}

// The labels of what differs.
std::string fieldsOf(const ContactChange& change) {
    const ContactContent before = contentOf(change.before), after = contentOf(change.after);
    ContactContent differs = lacking(after, before);
    std::ranges::move(lacking(before, after), std::back_inserter(differs));
    std::ranges::sort(differs);
    return labelsOf(differs);
}

}  // namespace

void reportChanges(std::span<const ReportedContact> contacts, std::span<const ContactChange> changes,
                   const ReportOptions& wanted) {
    std::vector<ReportedItem> items;
    items.reserve(contacts.size());
    for (const ReportedContact& contact : contacts) {
        ReportedItem& item = items.emplace_back(ReportedItem{.title = contact.title});
        item.unplaced = contact.unplaced;
        if (contact.change == ReportedContact::none) continue;
        const ContactChange& change = changes[contact.change];
        item.result = resultOf(change);
        item.uid = change.after.uid;
        item.message = change.failure;
        if (change.kind == ContactChange::Kind::change) item.fields = fieldsOf(change);
    }
    reportChanges(items, wanted);
}

}  // namespace ovno2::host
