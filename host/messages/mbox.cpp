#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "host/formats/transfer_encodings.h"
#include "host/messages/message_output.h"
#include "host/output/console.h"
#include "host/output/display_width.h"

namespace ovno2::host {

namespace {

using namespace std::chrono;

constexpr const char* days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// A local time as mails and mailboxes write it.
struct MailTime {
    std::string inHeader = "Thu, 1 Jan 1970 00:00:00 +0000";
    std::string inSeparator = "Thu Jan  1 00:00:00 1970";
};

// What clocks here were ahead of UTC then.
minutes offsetAt(local_seconds local) {
    const sys_seconds asIfUtc(local.time_since_epoch());
    const auto ahead = [](sys_seconds time) {
        return duration_cast<minutes>(console::localTime(time).time_since_epoch() - time.time_since_epoch());
    };
    return ahead(asIfUtc - ahead(asIfUtc));
}

MailTime mailTime(const Message& message) {
    MailTime time;
    int y = 0, h = 0, min = 0, s = 0;
    unsigned m = 0, d = 0;
    const std::string iso = toUtf8(message.time);
    if (std::sscanf(iso.c_str(), "%d-%u-%uT%d:%d:%d", &y, &m, &d, &h, &min, &s) != 6) return time;
    const year_month_day date{year(y), month(m), day(d)};
    if (!date.ok()) return time;
    const local_seconds local = local_days(date) + hours(h) + minutes(min) + seconds(s);
    const char* const weekday = days[std::chrono::weekday(local_days(date)).c_encoding()];
    const auto offset = static_cast<int>(offsetAt(local).count());
    const int size = std::abs(offset);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s, %u %s %04d %02d:%02d:%02d %c%02d%02d", weekday, d,
                  months[m - 1], y, h, min, s, offset < 0 ? '-' : '+', size / 60, size % 60);
    time.inHeader = text.data();
    std::snprintf(text.data(), text.size(), "%s %s %2u %02d:%02d:%02d %04d", weekday, months[m - 1], d, h,
                  min, s, y);
    time.inSeparator = text.data();
    return time;
}

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char unit) { return unit >= ' ' && unit <= '~'; });
}

// Words of a header as RFC 2047 wants them; long ones go on in a line of their own.
std::string encodedWords(const std::string& utf8, bool always = false) {
    constexpr std::size_t longestPiece = 45, longestLine = 60;
    if (!always && isPlain(utf8) && utf8.size() <= longestLine && utf8.find("=?") == std::string::npos)
        return utf8;
    std::string words;
    for (std::size_t start = 0; start < utf8.size();) {
        std::size_t end = std::min(start + longestPiece, utf8.size());
        while (end < utf8.size() && (static_cast<unsigned char>(utf8[end]) & 0xC0u) == 0x80u)
            --end;
        words += (words.empty() ? "=?UTF-8?B?" : "\n =?UTF-8?B?") +
                 toBase64(std::string_view(utf8).substr(start, end - start)) + "?=";
        start = end;
    }
    return words;
}

// A mail address for a number: what cannot stand in one is left out.
std::string mailAddress(const Text& address) {
    std::string utf8 = toUtf8(address);
    const bool isMail = utf8.find('@') != std::string::npos;
    std::erase_if(utf8, [](char unit) {
        return !(std::isalnum(static_cast<unsigned char>(unit)) ||
                 std::string_view("+*#.-_@").find(unit) != std::string_view::npos);
    });
    if (utf8.empty()) utf8 = "unknown";
    return isMail ? utf8 : utf8 + "@phone.invalid";
}

std::string mailbox(const Text& address, const NameBook& names) {
    const std::string name = toUtf8(singleLine(titleOf(address, names)));
    const bool isPhrase = isPlain(name) && name.find_first_of("()<>[]:;@\\,.\"") == std::string::npos;
    return (isPhrase ? name : encodedWords(name, /*always=*/true)) + " <" + mailAddress(address) + ">";
}

std::string mailboxes(const Message& message, const NameBook& names) {
    std::string all;
    for (const Text& address : message.addresses)
        all += (all.empty() ? "" : ",\n ") + mailbox(address, names);
    return all.empty() ? "unknown <unknown@phone.invalid>" : all;
}

// The body of a mail: no line of it begins like the next mail.
std::string quotedBody(const Text& text) {
    std::string body;
    for (const Text& line : split(replaceAll(replaceAll(text, u"\r\n", u"\n"), u"\r", u"\n"), u'\n')) {
        const std::size_t start = std::min(line.find_first_not_of(u'>'), line.size());
        if (TextView(line).substr(start).starts_with(u"From ")) body += '>';
        body += toUtf8(line) + '\n';
    }
    return body;
}

std::string asMail(const Message& message, const NameBook& names) {
    constexpr const char* me = "Me <me@phone.invalid>";
    constexpr std::size_t subjectWidth = 60;
    const MailTime time = mailTime(message);
    const bool isOurs = message.direction == Message::Direction::sent ||
                        message.direction == Message::Direction::waiting ||
                        message.direction == Message::Direction::draft;
    const std::string others = mailboxes(message, names);
    std::string mail = "From " +
                       (isOurs || message.addresses.empty() ? std::string("me@phone.invalid")
                                                            : mailAddress(message.addresses.front())) +
                       " " + time.inSeparator + "\n";
    mail += "From: " + (isOurs ? me : others) + "\nTo: " + (isOurs ? others : me) + "\n";
    if (!message.time.empty()) mail += "Date: " + time.inHeader + "\n";
    mail += "Subject: " + encodedWords(toUtf8(cutToWidth(singleLine(message.text), subjectWidth))) + "\n";
    mail += "X-Phone-Folder: " + encodedWords(toUtf8(singleLine(message.folder))) + "\n";
    if (*nameOf(message.direction) != 0)
        mail += std::string("X-Phone-Direction: ") + nameOf(message.direction) + "\n";
    if (!message.uid.empty()) mail += "Message-ID: <" + toUtf8(message.uid) + "@phone.invalid>\n";
    mail += "MIME-Version: 1.0\nContent-Type: text/plain; charset=UTF-8\nContent-Transfer-Encoding: 8bit\n\n";
    return mail + quotedBody(message.text) + "\n";
}

}  // namespace

void writeMessagesAsMbox(const std::vector<Message>& messages, const NameBook& names,
                         const std::function<void(std::string_view)>& write) {
    std::vector<const Message*> inOrder;
    inOrder.reserve(messages.size());
    for (const Message& message : messages)
        inOrder.push_back(&message);
    std::ranges::stable_sort(inOrder, {}, &Message::time);
    for (const Message* const message : inOrder)
        write(asMail(*message, names));
}

}  // namespace ovno2::host
