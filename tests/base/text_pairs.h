// Tables of texts and what becomes of them.
#pragma once

#include <utility>
#include <vector>

#include "base/values.h"

namespace ovno2 {

// "text=result|text=result", one pair for each case.
inline std::vector<std::pair<Text, Text>> pairsOf(TextView cases) {
    std::vector<std::pair<Text, Text>> pairs;
    for (const Text& each : split(cases, u'|'))
        pairs.emplace_back(each.substr(0, each.find(u'=')), each.substr(each.find(u'=') + 1));
    return pairs;
}

}  // namespace ovno2
