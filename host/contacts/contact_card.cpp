#include <algorithm>

#include "host/contacts/contact_output.h"
#include "host/contacts/contact_values.h"
#include "host/contacts/field_table.h"
#include "host/output/display_width.h"
#include "host/output/text.h"
#include "host/output/wrapping.h"

namespace ovno2::host {

namespace {

constexpr TextView indent = u"  ";

class Card {
  public:
    explicit Card(std::size_t width) : width_(width) {
        for (const FieldRow& row : fieldRows())
            labels_ = std::max(labels_, TextView(row.label).size());
    }

    void addTitle(const Text& name) { text_ += singleLine(name) + u'\n'; }
    // The label stands before the first line only; further values stand below each other.
    void add(TextView label, TextView value) {
        const std::size_t start = indent.size() + labels_ + indent.size();
        const std::size_t room = width_ > start + narrowest ? width_ - start : narrowest;
        for (const Text& line : wrapped(value, room)) {
            text_.append(indent).append(label).append(labels_ - label.size() + indent.size(), u' ');
            text_.append(line).push_back(u'\n');
            label = {};
        }
    }
    void addRemark(TextView remark) {
        for (const Text& line : wrapped(remark, width_ - indent.size()))
            text_.append(indent).append(line).push_back(u'\n');
    }

    std::string finished() const { return toUtf8(text_); }

  private:
    static constexpr std::size_t narrowest = 20;

    std::size_t width_;
    std::size_t labels_ = 0;  // width of the labels
    Text text_;
};

}  // namespace

std::string asCard(const Contact& contact, std::size_t width, bool verbose) {
    Card card(width);
    const Text name = nameOf(contact);
    card.addTitle(name.empty() ? Text(u"(no name)") : name);
    forEachValue(contact.values, [&](std::size_t i, TextView value) {
        const FieldRow& row = fieldRows()[i];
        if (row.code == HostField::picture) return;
        TextView label = row.label;
        forEachPart(row, decodedValue(value), [&](TextView part) {
            card.add(label, part);
            label = {};
        });
    });
    for (const Text& picture : contact.pictures)
        card.add(fieldRows()[rowOf(HostField::picture)].label, picture);
    if (verbose) {
        card.add(u"Place", contact.location);
        card.add(u"Id", contact.uid);
        for (const Loss& loss : lossesOf(contact)) {
            Text labels;
            for (const std::size_t row : loss.rows)
                labels.append(labels.empty() ? u"" : u", ").append(fieldRows()[row].label);
            card.addRemark(u"(" + labels + u": " + fromUtf8(loss.lost) + u".)");
        }
    }
    return card.finished();
}

}  // namespace ovno2::host
