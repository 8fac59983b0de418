#include "dates/locale_formats.h"

#include <algorithm>

#include "core/current_platform.h"
#include "dates/dates_state.h"
#include "pc/registry_access.h"

namespace ovno2 {

namespace {

using Kind = PicturePiece::Kind;

constexpr TextView internationalKey = u"Control Panel\\International";

// Which kind a run of picture letters has; literal for letters that mean nothing.
Kind dateKind(char16_t letter, std::size_t width) {
    switch (letter) {
        case u'd':
        case u'D':
            return width >= 3 ? Kind::dayName : Kind::day;
        case u'M':
        case u'm':
            return width >= 3 ? Kind::monthName : Kind::month;
        case u'y':
        case u'Y':
            return Kind::year;
        default:
            return Kind::literal;
    }
}

Kind timeKind(char16_t letter, std::size_t) {
    switch (letter) {
        case u'H':
            return Kind::hour24;
        case u'h':
            return Kind::hour12;
        case u'm':
            return Kind::minute;
        case u's':
            return Kind::second;
        case u't':
            return Kind::designator;
        default:
            return Kind::literal;
    }
}

template <Kind (*KindOf)(char16_t, std::size_t)>
Picture takeApart(TextView text) {
    Picture picture;
    picture.reserve(text.size());
    const auto addLiteral = [&](char16_t character) { picture.push_back({.character = character}); };
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == u'\'') {
            for (++i; i < text.size(); ++i) {
                if (text[i] != u'\'')
                    addLiteral(text[i]);
                else if (i + 1 < text.size() && text[i + 1] == u'\'')
                    addLiteral(text[i++]);
                else
                    break;
            }
            ++i;
            continue;
        }
        std::size_t width = 1;
        while (i + width < text.size() && text[i + width] == text[i])
            ++width;
        const Kind kind = KindOf(text[i], width);
        if (kind != Kind::literal)
            picture.push_back(
                {.kind = kind, .width = static_cast<std::uint8_t>(std::min<std::size_t>(width, 4))});
        else if (text[i] != u'g' || KindOf != dateKind)
            for (std::size_t k = 0; k < width; ++k)
                addLiteral(text[i]);
        i += width;
    }
    return picture;
}

DateOrder orderOf(const Picture& picture) {
    const auto place = [&](Kind kind, Kind other) {
        return std::find_if(picture.begin(), picture.end(), [&](const PicturePiece& piece) {
            return piece.kind == kind || piece.kind == other;
        });
    };
    const auto year = place(Kind::year, Kind::year);
    const auto month = place(Kind::month, Kind::monthName);
    const auto day = place(Kind::day, Kind::day);
    if (year < month && year < day) return DateOrder::yearMonthDay;
    return month < day ? DateOrder::monthDayYear : DateOrder::dayMonthYear;
}

// The first literal behind a number. (The platform's own item can lag behind a short date that the user
// changed.)
char16_t separatorOf(const Picture& picture) {
    for (std::size_t i = 1; i < picture.size(); ++i)
        if (picture[i].kind == Kind::literal && picture[i].character != u' ' && picture[i - 1].isNumber())
            return picture[i].character;
    return u'\0';
}

Text itemOr(platform::LocaleItem item, TextView registryName, TextView otherwise) {
    Text text = currentPlatform().locale().item(item);
    if (text.empty() && !registryName.empty())
        text = Registry::GetRegValue(platform::currentUser, internationalKey, registryName);
    return text.empty() ? Text(otherwise) : text;
}

template <std::size_t Count>
void readNames(std::array<Text, Count>& names, platform::LocaleItem first,
               const std::array<TextView, Count>& english, std::size_t letters = TextView::npos) {
    for (std::size_t i = 0; i < Count; ++i)
        names[i] = itemOr(static_cast<platform::LocaleItem>(static_cast<Long>(first) + static_cast<Long>(i)),
                          /*registryName=*/{}, english[i].substr(0, letters));
}

}  // namespace

const std::array<TextView, 12> englishMonths = {u"January",   u"February", u"March",    u"April",
                                                u"May",       u"June",     u"July",     u"August",
                                                u"September", u"October",  u"November", u"December"};
const std::array<TextView, 7> englishDays = {u"Monday", u"Tuesday",  u"Wednesday", u"Thursday",
                                             u"Friday", u"Saturday", u"Sunday"};

Picture datePicture(TextView picture) {
    return takeApart<dateKind>(picture);
}

Picture timePicture(TextView picture) {
    return takeApart<timeKind>(picture);
}

const LocaleFormats& localeFormats() {
    using platform::LocaleItem;
    LocaleFormatsState& state = stateOf<DatesState>().locale;
    if (!state.formatsKnown) {
        LocaleFormats formats;
        formats.shortDateText = itemOr(LocaleItem::shortDate, u"sShortDate", u"dd.MM.yy");
        formats.shortDate = datePicture(formats.shortDateText);
        formats.order = orderOf(formats.shortDate);
        formats.dateSeparator = separatorOf(formats.shortDate);
        formats.timeSeparator = itemOr(LocaleItem::timeSeparator, u"sTime", u":");
        formats.longTime = timePicture(itemOr(LocaleItem::timeFormat, u"sTimeFormat", u"HH:mm:ss"));
        formats.morning = itemOr(LocaleItem::morning, u"s1159", u"");
        formats.afternoon = itemOr(LocaleItem::afternoon, u"s2359", u"");
        state.formats = std::move(formats);
        state.formatsKnown = true;
    }
    return state.formats;
}

const LocaleNames& localeNames() {
    using platform::LocaleItem;
    LocaleFormatsState& state = stateOf<DatesState>().locale;
    if (!state.namesKnown) {
        LocaleNames names;
        readNames(names.months, LocaleItem::monthName, englishMonths);
        readNames(names.abbreviatedMonths, LocaleItem::abbreviatedMonthName, englishMonths,
                  englishAbbreviation);
        readNames(names.days, LocaleItem::dayName, englishDays);
        readNames(names.abbreviatedDays, LocaleItem::abbreviatedDayName, englishDays, englishAbbreviation);
        state.names = std::move(names);
        state.namesKnown = true;
    }
    return state.names;
}

void forgetLocaleFormats() {
    LocaleFormatsState& state = stateOf<DatesState>().locale;
    state.formatsKnown = false;
    state.namesKnown = false;
}

}  // namespace ovno2
