#include "simulator/world/contact.h"

#include <algorithm>
#include <numeric>

namespace ovno2::simulator {

Contact::TextPlace Contact::addText(std::u16string_view text) {
    const auto place = static_cast<TextPlace>(texts.size());
    texts.append(text.substr(0, text.find(u'\0')));
    texts += u'\0';
    return place;
}

bool Contact::arrange(const std::vector<Field>& unsorted) {
    fieldCounts = {};
    for (const Field& field : unsorted)
        ++fieldCounts[field.pair];
    std::array<Word, pairCount> next{};
    std::exclusive_scan(fieldCounts.begin(), fieldCounts.end(), next.begin(), Word{0});
    fields.resize(unsorted.size());
    for (const Field& field : unsorted)
        fields[next[field.pair]++] = field;
    return *std::max_element(fieldCounts.begin(), fieldCounts.end()) <= mostItemsPerPair;
}

std::uint8_t defaultPair(Word fieldId) {
    if (fieldId < 32) return 0;
    if (fieldId < 256) return 1;
    return fieldId < 512 ? 2 : 3;
}

}  // namespace ovno2::simulator
