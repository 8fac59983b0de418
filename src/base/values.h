// Numbers as text and text as numbers, and the small text operations that the whole module shares.
#pragma once

#include <span>
#include <vector>

#include "base/types.h"

namespace ovno2 {

// The decimal number at the start of a text: leading blanks, a sign, digits, one decimal point, read up to
// the first character that cannot continue it; 0 when there is none. "7.1.180.94" gives 7.1.
double numericValue(TextView text);

// The same as a 32-bit number, rounded half to even; values outside the range give the nearest bound.
Long numericLong(TextView text);

// The nearest whole number, halves to even. Throws RuntimeFailure 6 when it does not fit.
Long roundHalfToEven(double value);

// Decimal text: "300", "-5", "4.1" (at most 15 significant digits, at most 7 for a Single).
Text decimalText(Long value);
Text decimalText(double value);
Text decimalText(Single value);

// Upper-case hexadecimal digits without leading zeros: "80100014", "0".
Text hexText(std::uint32_t value);

Text lowerCase(TextView text);  // simple case mapping, locale-independent
Text upperCase(TextView text);
bool equalsIgnoringCase(TextView a, TextView b);
bool containsIgnoringCase(TextView text, TextView part);
bool contains(TextView text, char16_t unit);  // four units a step: for texts that rarely hold it
Text trimBlanks(TextView text);               // blanks (U+0020) at both ends
Text replaceAll(TextView text, TextView from, TextView to);
Text removeAll(TextView text, char16_t unwanted);
// Splits at every separator; an empty text gives no parts.
std::vector<Text> split(TextView text, char16_t separator);
Text join(std::span<const Text> parts, char16_t separator);

// Parts of a log line. `decimal` prints 5 as "5", `spacedDecimal` as " 5" (a blank where a minus would
// stand).
struct decimal {
    Long value;
};
struct spacedDecimal {
    Long value;
};
struct hex {
    std::uint32_t value;
    explicit hex(std::uint32_t number) : value(number) {}
    explicit hex(Long number) : value(static_cast<std::uint32_t>(number)) {}
};

inline void appendPart(Text& line, TextView part) {
    line.append(part);
}
inline void appendPart(Text& line, const Text& part) {
    line.append(part);
}
inline void appendPart(Text& line, const char16_t* part) {
    line.append(part);
}
void appendPart(Text& line, decimal part);
void appendPart(Text& line, spacedDecimal part);
void appendPart(Text& line, hex part);

}  // namespace ovno2
