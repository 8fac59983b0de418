#include "dates/date_parser.h"

#include "base/values.h"
#include "dates/locale_formats.h"

namespace ovno2 {

namespace {

using Kind = PicturePiece::Kind;

bool isDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

bool isBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == 0xA0 || c == 0x202F || c == 0x200E || c == 0x200F;
}

bool isLetter(char16_t c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= 0xC0 && !isBlank(c));
}

struct Number {
    Long value = 0;
    std::size_t digits = 0;

    bool mustBeYear() const { return digits > 2 || value > 31; }
};

// What has been read; a year of 1 or 2 digits still lacks its century.
struct Parts {
    Number year;
    Long month = 0;
    Long day = 0;
    Long hour = 0;
    Long minute = 0;
    Long second = 0;
    bool hasDate = false;
    bool afternoon = false;
    bool hasDesignator = false;
};

// A place in the text.
class Reader {
  public:
    explicit Reader(TextView text) : text_(text) {}

    bool atEnd() const { return at_ == text_.size(); }
    char16_t next() const { return atEnd() ? u'\0' : text_[at_]; }
    TextView rest() const { return text_.substr(at_); }
    void skip(std::size_t count) { at_ += count; }

    bool skipBlanks() {
        const std::size_t before = at_;
        while (!atEnd() && isBlank(text_[at_]))
            ++at_;
        return at_ != before;
    }
    bool accept(char16_t c) {
        if (atEnd() || text_[at_] != c) return false;
        ++at_;
        return true;
    }
    bool accept(TextView part) {
        if (part.empty() || !rest().starts_with(part)) return false;
        at_ += part.size();
        return true;
    }
    bool acceptName(TextView name) {
        if (name.empty() || !equalsIgnoringCase(rest().substr(0, name.size()), name)) return false;
        at_ += name.size();
        return true;
    }
    // 1 to `most` digits and no further one.
    bool number(Number& number, std::size_t most) {
        Number read;
        while (isDigit(next()) && read.digits <= most) {
            read.value = read.value * 10 + (next() - u'0');
            ++read.digits;
            ++at_;
        }
        if (read.digits == 0 || read.digits > most) return false;
        number = read;
        return true;
    }
    // Exactly `digits` digits, whatever follows.
    bool fixedNumber(Number& number, std::size_t digits) {
        Number read;
        for (; read.digits < digits && isDigit(next()); ++at_, ++read.digits)
            read.value = read.value * 10 + (next() - u'0');
        number = read;
        return read.digits == digits;
    }

  private:
    TextView text_;
    std::size_t at_ = 0;
};

// 1-based place of the name that stands here, the longest one that fits; 0 when there is none.
template <class Names>
Long acceptAnyName(Reader& reader, const Names& names) {
    std::size_t longest = 0;
    Long found = 0;
    for (std::size_t i = 0; i < names.size(); ++i)
        if (names[i].size() > longest &&
            equalsIgnoringCase(reader.rest().substr(0, names[i].size()), names[i])) {
            longest = names[i].size();
            found = static_cast<Long>(i) + 1;
        }
    reader.skip(longest);
    return found;
}

bool acceptDesignator(Reader& reader, const LocaleFormats& formats, Parts& parts) {
    Reader behind = reader;
    const bool morning = behind.acceptName(formats.morning) || behind.acceptName(u"AM");
    if (!morning && !behind.acceptName(formats.afternoon) && !behind.acceptName(u"PM")) return false;
    if (isLetter(behind.next())) return false;
    reader = behind;
    parts.afternoon = !morning;
    parts.hasDesignator = true;
    return true;
}

bool acceptNumberPiece(Reader& reader, const PicturePiece& piece, bool numberFollows, Parts& parts) {
    Number number;
    const std::size_t most = piece.kind == Kind::year ? 4 : 2;
    if (numberFollows ? !reader.fixedNumber(number, piece.width) : !reader.number(number, most)) return false;
    switch (piece.kind) {
        case Kind::day:
            parts.day = number.value;
            break;
        case Kind::month:
            parts.month = number.value;
            break;
        case Kind::year:
            parts.year = number;
            break;
        case Kind::minute:
            parts.minute = number.value;
            break;
        case Kind::second:
            parts.second = number.value;
            break;
        default:
            parts.hour = number.value;
    }
    return true;
}

bool acceptNamePiece(Reader& reader, const PicturePiece& piece, Parts& parts) {
    const LocaleNames& names = localeNames();
    if (piece.kind == Kind::monthName) {
        parts.month = acceptAnyName(reader, piece.width == 3 ? names.abbreviatedMonths : names.months);
        return parts.month != 0;
    }
    return acceptAnyName(reader, piece.width == 3 ? names.abbreviatedDays : names.days) != 0;
}

bool acceptPicture(Reader& reader, const Picture& picture, const LocaleFormats& formats, Parts& parts) {
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const PicturePiece& piece = picture[i];
        bool accepted = true;
        if (piece.isNumber())
            accepted =
                acceptNumberPiece(reader, piece, i + 1 < picture.size() && picture[i + 1].isNumber(), parts);
        else if (piece.kind == Kind::designator)
            accepted = acceptDesignator(reader, formats, parts);
        else if (piece.kind != Kind::literal)
            accepted = acceptNamePiece(reader, piece, parts);
        else if (isBlank(piece.character))
            reader.skipBlanks();
        else
            accepted = reader.accept(piece.character);
        if (!accepted) return false;
    }
    return true;
}

// Puts the century to the year and the designator to the hour. Nothing when the parts are no date and time.
std::optional<DateFields> fieldsFrom(const Parts& parts) {
    DateFields fields;
    if (parts.hasDate) {
        const Number& year = parts.year;
        fields.year = year.digits <= 2 ? fullYear(year.value) : year.value;
        fields.month = parts.month;
        fields.day = parts.day;
    }
    fields.hour = parts.hour;
    fields.minute = parts.minute;
    fields.second = parts.second;
    if (parts.hasDesignator) {
        if (parts.hour == 12 && !parts.afternoon) fields.hour = 0;
        if (parts.hour < 12 && parts.afternoon) fields.hour += 12;
        if (parts.hour > 12 && !parts.afternoon) return {};
    }
    if (!isValid(fields)) return {};
    return fields;
}

bool acceptTime(Reader& reader, const LocaleFormats& formats, Parts& parts) {
    const auto separator = [&] { return reader.accept(u':') || reader.accept(formats.timeSeparator); };
    if (acceptDesignator(reader, formats, parts)) reader.skipBlanks();
    Number hour, minute, second;
    if (!reader.number(hour, 2)) return false;
    const bool hasMinute = separator();
    if (hasMinute && !reader.number(minute, 2)) return false;
    if (hasMinute && separator() && !reader.number(second, 2)) return false;
    Reader behind = reader;
    behind.skipBlanks();
    if (!parts.hasDesignator && acceptDesignator(behind, formats, parts)) reader = behind;
    parts.hour = hour.value;
    parts.minute = minute.value;
    parts.second = second.value;
    return hasMinute || parts.hasDesignator;
}

// A time and then nothing more.
std::optional<DateFields> finishWithTime(Reader reader, const LocaleFormats& formats, Parts parts) {
    reader.skipBlanks();
    const auto finish = [](Reader& place, const Parts& read) -> std::optional<DateFields> {
        place.skipBlanks();
        return place.atEnd() ? fieldsFrom(read) : std::nullopt;
    };
    Reader other = reader;
    Parts otherParts = parts;
    if (acceptTime(reader, formats, parts))
        if (const auto fields = finish(reader, parts)) return fields;
    if (!acceptPicture(other, formats.longTime, formats, otherParts)) return {};
    return finish(other, otherParts);
}

// The end of the text, or blanks and a time.
std::optional<DateFields> finishDate(Reader reader, const LocaleFormats& formats, const Parts& parts) {
    const bool blanks = reader.skipBlanks();
    if (reader.atEnd()) return fieldsFrom(parts);
    if (!blanks) return {};
    return finishWithTime(reader, formats, parts);
}

std::optional<DateFields> readShortDate(TextView text, const LocaleFormats& formats) {
    Reader reader(text);
    Parts parts;
    if (!acceptPicture(reader, formats.shortDate, formats, parts)) return {};
    if (parts.year.digits == 0 || parts.month == 0 || parts.day == 0) return {};
    parts.hasDate = true;
    return finishDate(reader, formats, parts);
}

// The tolerant form: up to three numbers, one of which may be a month in words.
class DateItems {
  public:
    explicit DateItems(const LocaleFormats& formats) : formats_(formats) {}

    // Reads items up to the end or the time. False when what stands here cannot belong to a date.
    bool read(Reader& reader) {
        while (count_ < 3 && !reader.atEnd()) {
            if (startsTime(reader)) break;
            if (isDigit(reader.next())) {
                if (!reader.number(items_[count_], 4)) return false;
            } else if (month_ != 0 || !monthName(reader)) {
                return false;
            }
            ++count_;
            separator(reader);
        }
        if (count_ < 2) return false;
        // The last separator belongs to nothing unless it is a full stop, or a comma before the time.
        if (last_ != u'\0' && last_ != u'.' && (last_ != u',' || reader.atEnd())) return false;
        if (reader.atEnd() || blanksBehind_) return true;
        return yearFirst() && dashes_ == 2 && reader.accept(u'T') && isDigit(reader.next());
    }

    // The parts in their order; nothing when the numbers are no date in any of the orders allowed.
    std::optional<Parts> parts() const {
        if (monthAt_ < count_) return partsByName();
        if (count_ == 2) return partsWithoutYear();
        if (items_[1].digits > 2) return {};
        if (yearFirst()) return dateOfParts(items_[0], items_[1], items_[2]);
        const bool monthFirst = formats_.order != DateOrder::dayMonthYear;
        return dateOrExchanged(items_[2], items_[monthFirst ? 0 : 1], items_[monthFirst ? 1 : 0]);
    }

  private:
    // A number with a time separator or a designator behind it, or a designator.
    bool startsTime(Reader reader) const {
        Parts ignored;
        if (acceptDesignator(reader, formats_, ignored)) return true;
        Number number;
        if (!reader.number(number, 2)) return false;
        if (reader.next() == u':') return true;
        const Text& separator = formats_.timeSeparator;
        if (separator != u"." && separator != u"-" && separator != u"/" && reader.accept(separator))
            return true;
        reader.skipBlanks();
        return acceptDesignator(reader, formats_, ignored);
    }

    bool monthName(Reader& reader) {
        std::size_t length = 0;
        while (length < reader.rest().size() && isLetter(reader.rest()[length]))
            ++length;
        const TextView word = reader.rest().substr(0, length);
        if (length == 0) return false;
        const auto isWord = [&](TextView name) {
            if (name.ends_with(u'.')) name.remove_suffix(1);
            return !name.empty() && equalsIgnoringCase(word, name);
        };
        const LocaleNames& names = localeNames();
        for (std::size_t i = 0; i < names.months.size() && month_ == 0; ++i)
            if (isWord(names.months[i]) || isWord(names.abbreviatedMonths[i]) || isWord(englishMonths[i]) ||
                isWord(englishMonths[i].substr(0, englishAbbreviation)))
                month_ = static_cast<Long>(i) + 1;
        if (month_ == 0) return false;
        monthAt_ = count_;
        reader.skip(length);
        return true;
    }

    void separator(Reader& reader) {
        blanksBehind_ = reader.skipBlanks();
        last_ = u'\0';
        if (!reader.atEnd() && TextView(u"./-,").find(reader.next()) != TextView::npos) {
            last_ = reader.next();
            reader.skip(1);
        } else if (formats_.dateSeparator != u'\0' && reader.accept(formats_.dateSeparator)) {
            last_ = u'/';
        }
        if (last_ != u'\0') blanksBehind_ = reader.skipBlanks();
        if (last_ == u'-') ++dashes_;
        if (count_ == 1) first_ = last_;
    }

    bool yearFirst() const {
        return items_[0].mustBeYear() ||
               (formats_.order == DateOrder::yearMonthDay && count_ == 3 && !items_[2].mustBeYear());
    }

    static std::optional<Parts> dateOfParts(Number year, Number month, Number day) {
        Parts parts;
        parts.hasDate = true;
        parts.year = year;
        parts.month = month.value;
        parts.day = day.value;
        if (month.digits > 2 || day.digits > 2 || !fieldsFrom(parts)) return {};
        return parts;
    }
    static std::optional<Parts> dateOrExchanged(Number year, Number month, Number day) {
        const std::optional<Parts> parts = dateOfParts(year, month, day);
        return parts ? parts : dateOfParts(year, day, month);
    }

    static Number thisYear() { return {.value = currentYear(), .digits = 4}; }
    static Number oneDay() { return {.value = 1, .digits = 1}; }

    std::optional<Parts> partsWithoutYear() const {
        if (first_ == u'\0' || (first_ != u'/' && first_ != u'-' && first_ != formats_.dateSeparator))
            return {};
        if (items_[0].mustBeYear()) return dateOfParts(items_[0], items_[1], oneDay());
        if (items_[1].mustBeYear()) return dateOfParts(items_[1], items_[0], oneDay());
        const bool monthFirst = formats_.order != DateOrder::dayMonthYear;
        return dateOrExchanged(thisYear(), items_[monthFirst ? 0 : 1], items_[monthFirst ? 1 : 0]);
    }

    std::optional<Parts> partsByName() const {
        Number numbers[2];
        std::size_t found = 0;
        for (std::size_t i = 0; i < count_; ++i)
            if (i != monthAt_) numbers[found++] = items_[i];
        const Number month{.value = month_, .digits = 1};
        if (found == 1)
            return numbers[0].mustBeYear() ? dateOfParts(numbers[0], month, oneDay())
                                           : dateOfParts(thisYear(), month, numbers[0]);
        return numbers[0].mustBeYear() ? dateOfParts(numbers[0], month, numbers[1])
                                       : dateOfParts(numbers[1], month, numbers[0]);
    }

    const LocaleFormats& formats_;
    Number items_[3];
    std::size_t count_ = 0;
    std::size_t monthAt_ = 3;  // which item is the month in words; 3 = none
    Long month_ = 0;
    char16_t first_ = u'\0';  // separator behind the first item
    char16_t last_ = u'\0';   // and behind the last one
    int dashes_ = 0;
    bool blanksBehind_ = false;
};

std::optional<DateFields> readTolerantly(TextView text, const LocaleFormats& formats) {
    Reader reader(text);
    DateItems items(formats);
    if (!items.read(reader)) return {};
    const std::optional<Parts> parts = items.parts();
    if (!parts) return {};
    if (reader.atEnd()) return fieldsFrom(*parts);
    return finishWithTime(reader, formats, *parts);
}

}  // namespace

std::optional<DateFields> readDateFields(TextView text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    if (text.empty() || text.size() > longestDateText) return {};
    const LocaleFormats& formats = localeFormats();
    if (const auto fields = readShortDate(text, formats)) return fields;
    // Where times are written with the separator of dates, three numbers are rather a date.
    const bool timeFirst = !formats.timeSeparator.starts_with(formats.dateSeparator);
    if (timeFirst)
        if (const auto fields = finishWithTime(Reader(text), formats, {})) return fields;
    if (const auto fields = readTolerantly(text, formats)) return fields;
    return timeFirst ? std::nullopt : finishWithTime(Reader(text), formats, {});
}

std::optional<DateValue> readDate(TextView text) {
    const std::optional<DateFields> fields = readDateFields(text);
    if (!fields) return {};
    return dateOf(*fields);
}

}  // namespace ovno2
