#include "host/formats/charset.h"

#include <algorithm>

#include "host/formats/code_page.h"

namespace ovno2::host {

namespace {

constexpr std::uint32_t latinPage = 1252;
constexpr std::uint32_t utf8Page = 65001;
constexpr std::uint32_t firstIsoPage = 28591;
constexpr std::uint32_t lastIso = 16;  // ISO-8859-16

struct NamedPage {
    std::u16string_view name;  // without what separates its words
    std::uint32_t page;
};

constexpr NamedPage namedPages[] = {
    {u"utf8", utf8Page},  {u"ascii", latinPage}, {u"usascii", latinPage}, {u"latin1", 28591},
    {u"latin2", 28592},   {u"koi8r", 20866},     {u"koi8u", 21866},       {u"shiftjis", 932},
    {u"sjis", 932},       {u"eucjp", 20932},     {u"gb2312", 936},        {u"gbk", 936},
    {u"big5", 950},       {u"euckr", 949},       {u"ksc56011987", 949},   {u"tis620", 874},
    {u"windows874", 874}, {u"windows932", 932},  {u"windows936", 936},    {u"windows949", 949},
    {u"windows950", 950}, {u"ibm437", 437},      {u"ibm850", 850},        {u"windows31j", 932},
};

// The code page of a character set; 0 = not known.
std::uint32_t pageOf(std::string_view charset) {
    Text name = lowerCase(fromUtf8(charset));
    std::erase_if(name, [](char16_t c) { return c == u'-' || c == u'_' || c == u' '; });
    const auto* const known = std::ranges::find(namedPages, TextView(name), &NamedPage::name);
    if (known != std::end(namedPages)) return known->page;
    const auto numberAfter = [&](TextView start) {
        return name.starts_with(start)
                   ? static_cast<std::uint32_t>(std::max(0, numericLong(TextView(name).substr(start.size()))))
                   : 0;
    };
    if (const std::uint32_t part = numberAfter(u"iso8859"); part >= 1 && part <= lastIso)
        return firstIsoPage + part - 1;
    for (const TextView start : {TextView(u"windows"), TextView(u"cp"), TextView(u"xcp")})
        if (const std::uint32_t page = numberAfter(start); page >= 1250 && page <= 1258) return page;
    return 0;
}

}  // namespace

bool fromCharset(std::string_view bytes, std::string_view charset, Text& text) {
    const std::uint32_t page = pageOf(charset);
    if (page == utf8Page) {
        text = fromUtf8(bytes);
        return true;
    }
    return page != 0 && fromCodePage(bytes, page, text);
}

Text fromUnknownCharset(std::string_view bytes) {
    Text text;
    if (!readUtf8(bytes, text)) fromCodePage(bytes, latinPage, text);
    return text;
}

std::string withoutMark(std::string_view file) {
    constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
    if (file.starts_with(utf8Mark)) return std::string(file.substr(utf8Mark.size()));
    const auto byte = [&](std::size_t place) {
        return place < file.size() ? static_cast<unsigned char>(file[place]) : 1u;
    };
    const bool bigEndian = (byte(0) == 0xFE && byte(1) == 0xFF) || (byte(0) == 0 && byte(1) > 1);
    const bool littleEndian = (byte(0) == 0xFF && byte(1) == 0xFE) || (byte(0) > 1 && byte(1) == 0);
    if (!bigEndian && !littleEndian) return std::string(file);
    std::string units(file.substr(0, file.size() / 2 * 2));
    if (bigEndian)
        for (std::size_t i = 0; i < units.size(); i += 2)
            std::swap(units[i], units[i + 1]);
    Text text = fromUtf16Bytes(units);
    if (text.starts_with(u'\uFEFF')) text.erase(0, 1);
    return toUtf8(text);
}

}  // namespace ovno2::host
