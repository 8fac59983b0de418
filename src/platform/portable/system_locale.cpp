#include "platform/portable/system_locale.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <locale.h>
#include <map>
#include <vector>

#include "base/values.h"

namespace ovno2::platform::portable {

namespace {

bool isLetter(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// The picture of one conversion; `padded` is false behind "%-". Empty for one without a picture.
Text pictureOfConversion(char16_t conversion, bool padded) {
    const auto number = [&](TextView letters) { return Text(padded ? letters : letters.substr(0, 1)); };
    switch (conversion) {
        case u'd':
            return number(u"dd");
        case u'e':
            return u"d";
        case u'm':
            return number(u"MM");
        case u'b':
        case u'h':
            return u"MMM";
        case u'B':
            return u"MMMM";
        case u'a':
            return u"ddd";
        case u'A':
            return u"dddd";
        case u'Y':
        case u'G':
            return u"yyyy";
        case u'y':
        case u'g':
            return u"yy";
        case u'H':
            return number(u"HH");
        case u'k':
            return u"H";
        case u'I':
            return number(u"hh");
        case u'l':
            return u"h";
        case u'M':
            return number(u"mm");
        case u'S':
            return number(u"ss");
        case u'p':
        case u'P':
            return u"tt";
        case u'D':
            return u"MM/dd/yy";
        case u'F':
            return u"yyyy-MM-dd";
        case u'T':
            return u"HH:mm:ss";
        case u'R':
            return u"HH:mm";
        case u'r':
            return u"hh:mm:ss tt";
        case u'n':
        case u't':
            return u" ";
        case u'%':
            return u"%";
        default:
            return {};
    }
}

// Text of the C library in the code set of `locale`, which the calling thread uses at the moment.
Text fromLocale(const char* bytes) {
    const std::size_t length = std::mbstowcs(nullptr, bytes, 0);
    if (length == static_cast<std::size_t>(-1)) return {};
    std::vector<wchar_t> wide(length + 1);
    std::mbstowcs(wide.data(), bytes, wide.size());
    Text text;
    for (std::size_t i = 0; i < length; ++i) {
        const auto character = static_cast<char32_t>(wide[i]);
        if (character < 0x10000) {
            text.push_back(static_cast<char16_t>(character));
        } else {
            text.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
            text.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
        }
    }
    return text;
}

// The first plain separator in the picture, `otherwise` when it has none (such as one with words between the
// numbers).
Text separatorIn(const Text& picture, TextView otherwise) {
    const std::size_t place = picture.find_first_of(u":./-");
    return place == Text::npos ? Text(otherwise) : Text(1, picture[place]);
}

using Items = std::map<LocaleItem, Text>;

void addNames(Items& items, LocaleItem first, std::initializer_list<nl_item> names, locale_t locale) {
    Long item = static_cast<Long>(first);
    for (const nl_item name : names)
        items[static_cast<LocaleItem>(item++)] = fromLocale(nl_langinfo_l(name, locale));
}

Items itemsOf(locale_t locale) {
    Items items;
    const auto info = [&](nl_item item) { return fromLocale(nl_langinfo_l(item, locale)); };
    items[LocaleItem::morning] = info(AM_STR);
    items[LocaleItem::afternoon] = info(PM_STR);
    // The C library writes the form with designators apart from the one for everybody.
    const bool designators = info(T_FMT).find(u"%r") != Text::npos || info(T_FMT).find(u"%p") != Text::npos;
    items[LocaleItem::timeFormat] =
        pictureFromTimeFormat(designators && !info(T_FMT_AMPM).empty() ? info(T_FMT_AMPM) : info(T_FMT));
    items[LocaleItem::shortDate] = pictureFromTimeFormat(info(D_FMT));
    addNames(items, LocaleItem::dayName, {DAY_2, DAY_3, DAY_4, DAY_5, DAY_6, DAY_7, DAY_1}, locale);
    addNames(items, LocaleItem::abbreviatedDayName,
             {ABDAY_2, ABDAY_3, ABDAY_4, ABDAY_5, ABDAY_6, ABDAY_7, ABDAY_1}, locale);
    addNames(items, LocaleItem::monthName,
             {MON_1, MON_2, MON_3, MON_4, MON_5, MON_6, MON_7, MON_8, MON_9, MON_10, MON_11, MON_12}, locale);
    addNames(items, LocaleItem::abbreviatedMonthName,
             {ABMON_1, ABMON_2, ABMON_3, ABMON_4, ABMON_5, ABMON_6, ABMON_7, ABMON_8, ABMON_9, ABMON_10,
              ABMON_11, ABMON_12},
             locale);
    return items;
}

Items systemItems() {
    const char* name = std::getenv("LC_ALL");
    if (!name || !*name) name = std::getenv("LC_TIME");
    if (!name || !*name) name = std::getenv("LANG");
    const bool named = name && *name && std::strcmp(name, "POSIX") != 0 &&
                       !(name[0] == 'C' && (name[1] == '\0' || name[1] == '.'));
    locale_t locale = named ? newlocale(LC_ALL_MASK, "", nullptr) : nullptr;
    const bool usable = locale != nullptr;
    if (!usable) locale = newlocale(LC_ALL_MASK, "C", nullptr);
    const locale_t before = uselocale(locale);
    Items items = itemsOf(locale);
    uselocale(before);
    freelocale(locale);
    Text& shortDate = items[LocaleItem::shortDate];
    if (!usable || shortDate.empty()) shortDate = u"yyyy-MM-dd";
    Text& timeFormat = items[LocaleItem::timeFormat];
    if (timeFormat.empty()) timeFormat = u"HH:mm:ss";
    // Years without their century would lose it on the way to the host and back.
    if (shortDate.find(u"yyyy") == Text::npos) shortDate = replaceAll(shortDate, u"yy", u"yyyy");
    items[LocaleItem::dateSeparator] = separatorIn(shortDate, u"-");
    items[LocaleItem::timeSeparator] = separatorIn(timeFormat, u":");
    return items;
}

}  // namespace

Text pictureFromTimeFormat(TextView format) {
    Text picture;
    bool quoted = false;
    const auto quote = [&](bool on) {
        if (quoted != on) picture.push_back(u'\'');
        quoted = on;
    };
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] == u'\'') {
            picture.append(u"''");
            continue;
        }
        if (format[i] != u'%') {
            if (isLetter(format[i]) || quoted) quote(isLetter(format[i]));
            picture.push_back(format[i]);
            continue;
        }
        quote(false);
        bool padded = true;
        // Flags, and the modifiers for other calendars and digits.
        for (++i; i < format.size() && TextView(u"-_0^#EO").find(format[i]) != TextView::npos; ++i)
            if (format[i] == u'-' || format[i] == u'_') padded = false;
        if (i < format.size()) picture.append(pictureOfConversion(format[i], padded));
    }
    quote(false);
    return trimBlanks(picture);
}

Text systemLocaleItem(LocaleItem item) {
    static const Items items = systemItems();
    const auto found = items.find(item);
    return found == items.end() ? Text() : found->second;
}

}  // namespace ovno2::platform::portable
