#include "simulator/world/contact.h"

#include <algorithm>

namespace ovno2::simulator {

Contact::TextPlace Contact::addText(std::u16string_view text) {
    const auto place = static_cast<TextPlace>(texts.size());
    texts.append(text.substr(0, text.find(u'\0')));
    texts += u'\0';
    return place;
}

bool Contact::arrange() {
    const auto byPair = [](const Field& left, const Field& right) { return left.pair < right.pair; };
    if (!std::is_sorted(fields.begin(), fields.end(), byPair)) {
        std::stable_sort(fields.begin(), fields.end(), byPair);
    }
    std::array<std::size_t, pairCount> counts{};
    for (const Field& field : fields)
        ++counts[field.pair];
    return *std::max_element(counts.begin(), counts.end()) <= mostItemsPerPair;
}

std::uint8_t defaultPair(Word fieldId) {
    if (fieldId < 32) return 0;
    if (fieldId < 256) return 1;
    return fieldId < 512 ? 2 : 3;
}

}  // namespace ovno2::simulator
