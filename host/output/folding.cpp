#include "host/output/folding.h"

#include <array>

namespace ovno2::host {

namespace {

// U+00C0 to U+017F; "?" = stays, " " = two letters.
constexpr char16_t firstAccented = 0xC0;
constexpr TextView plainLetters =
    u"aaaaaa ceeeeiiiidnooooo?ouuuuy  aaaaaa ceeeeiiiidnooooo?ouuuuy y"
    u"aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiii  jjkkklllllll"
    u"lllnnnnnnnnnoooooo  rrrrrrssssssssttttttuuuuuuuuuuuuwwyyyzzzzzzs";

TextView twoLetters(char16_t unit) {
    switch (unit) {
        case u'ß':
            return u"ss";
        case u'æ':
            return u"ae";
        case u'œ':
            return u"oe";
        case u'þ':
            return u"th";
        default:
            return u"ij";
    }
}

}  // namespace

Text folded(TextView text) {
    constexpr char16_t firstMark = 0x300, lastMark = 0x36F;  // put over the letter before
    Text plain;
    plain.reserve(text.size());
    for (const char16_t unit : lowerCase(text)) {
        if (unit >= firstMark && unit <= lastMark) continue;
        const std::size_t place = static_cast<std::size_t>(unit) - firstAccented;
        const char16_t letter =
            unit >= firstAccented && place < plainLetters.size() ? plainLetters[place] : u'?';
        if (letter == u'?')
            plain += unit;
        else if (letter == u' ')
            plain += twoLetters(unit);
        else
            plain += letter;
    }
    return plain;
}

}  // namespace ovno2::host
