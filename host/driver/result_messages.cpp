#include "host/driver/result_messages.h"

#include <optional>

#include "host/output/text.h"

namespace ovno2::host {

namespace {

struct ResultMessage {
    std::optional<Operation> operation;  // none = the code means the same everywhere
    std::uint32_t result;
    const char* text;  // "%" stands for the phone, "$" for the file, folder or contact
};

constexpr std::uint32_t step(Long number) {
    return static_cast<std::uint32_t>(number);
}

constexpr const char* connectionLost =
    "The connection to % was lost. Check the cable or the reception and retry.";

constexpr const char* libraryMissing =
    "The connectivity library was not found. Install the phone maker's connectivity software, or name the "
    "folder of the library with --connectivity. --demo shows everything on a simulated phone.";
constexpr const char* softwareNotStarted =
    "The connectivity software could not be started, or is not there: install the phone maker's connectivity "
    "software, close other phone programs, and retry. \"ovphone doctor\" tells what is missing.";
constexpr const char* outOfReach =
    "% was not reached, although it was searched for. See that the phone is on, near, that its Bluetooth is "
    "on and the phone visible to others, and retry.";
constexpr const char* bluetoothOff =
    "Bluetooth is off on this computer and could not be switched on, so % was not reached. Plug its adapter "
    "in or switch it on in the system's settings, and retry; \"ovphone media\" tells whether it is on.";
constexpr const char* pairingRefused =
    "% refused to be paired: the passkeys were not the same, or the request was turned down on the phone. "
    "Retry, and enter the same passkey on the phone when it asks.";

// Numbers of a step mean what the operation says; library statuses mean the same everywhere.
constexpr ResultMessage messages[] = {
    {Operation::listPhones, step(-1),
     "The connectivity software could not be started. Close other phone programs, start the software again "
     "and retry."},
    {Operation::listPhones, step(-2),
     "The connectivity software did not tell how many phones are attached. Retry."},
    {Operation::listPhones, step(-3), "The connectivity software did not list the attached phones. Retry."},
    {Operation::listPhones, step(-7), libraryMissing},
    {Operation::switchMedia, step(-1),
     "The part of the connectivity software that switches connections could not be started. Is it installed "
     "completely?"},
    {Operation::switchMedia, step(-9), libraryMissing},
    {Operation::searchBluetooth, step(-1), softwareNotStarted},
    {Operation::searchBluetooth, step(-2),
     "The connectivity software did not search. See that no other program is searching, and retry."},
    {Operation::pairPhone, step(-1), softwareNotStarted},
    {Operation::pairPhone, step(-2), pairingRefused},
    {Operation::pairPhone, step(-9), "A passkey is needed to pair with %."},
    {Operation::pairPhone, 0x80200000, outOfReach},
    {Operation::pairPhone, 0x8020000D, bluetoothOff},
    {Operation::pairPhone, 0x80200100, pairingRefused},
    {Operation::trustPhone, step(-1), softwareNotStarted},
    {Operation::trustPhone, 0x80200000, outOfReach},
    {Operation::trustPhone, 0x8020000D, bluetoothOff},
    {Operation::trustPhone, 0x80200100, "% did not let itself be trusted. Pair with it anew, and retry."},
    {Operation::readContacts, step(-1),
     "The part of the connectivity software that reads contacts could not be started. Is it installed "
     "completely?"},
    {Operation::readContacts, step(-2),
     "% is no longer attached, or let nobody read its contacts. Check the cable or the Bluetooth connection "
     "and retry."},
    {Operation::readContacts, step(-3),
     "% refused the connection to its contacts. Accept the connection on the phone, and see that it is "
     "switched on, "
     "not locked and in reach; then retry."},
    {Operation::readContacts, step(-4), "% has no phone book that can be read."},
    {Operation::readContacts, step(-5),
     "% is busy: another program is working with it. Close that program, or wait until it is done, and "
     "retry."},
    {Operation::writeContact, step(-1),
     "There was no memory for it, or the connectivity software could not be started."},
    {Operation::writeContact, step(-2),
     "% is no longer attached. Check the cable or the Bluetooth connection and retry."},
    {Operation::writeContact, step(-3),
     "% refused the connection to its contacts. Accept the connection on the phone, and see that it is "
     "switched on, not locked and in reach; then retry."},
    {Operation::writeContact, step(-4),
     "% lets nobody write its contacts now. Another program may be working with it; close that and retry."},
    {Operation::writeContact, step(-5), "% did not list its contacts. Check the connection and retry."},
    {Operation::deleteContact, step(-1), "% has no such contact any more, or cannot be reached."},
    {Operation::deleteContact, step(-2),
     "% is no longer attached. Check the cable or the Bluetooth connection and retry."},
    {Operation::deleteContact, step(-3), "% refused the connection to its contacts. Accept it and retry."},
    {Operation::readMessages, step(-1),
     "The part of the connectivity software that reads messages could not be started. Is it installed "
     "completely?"},
    {Operation::readMessages, step(-2),
     "% is no longer attached, or let nobody read its messages. Check the cable or the Bluetooth connection "
     "and retry."},
    {Operation::readMessages, step(-3),
     "% has no messages that can be read, or refused the connection to them. Accept the connection on the "
     "phone, and see that it is switched on, not locked and in reach; then retry."},
    {Operation::readMessages, step(-4), "% did not tell its folders of messages. Retry."},
    {Operation::readNotes, step(-1),
     "The part of the connectivity software that reads notes could not be started. Is it installed "
     "completely?"},
    {Operation::readNotes, step(-2),
     "% is no longer attached, or let nobody read its notes. Check the cable or the Bluetooth connection and "
     "retry."},
    {Operation::readNotes, step(-3),
     "% has no notes that can be read, or refused the connection to them. Accept the connection on the "
     "phone, "
     "and see that it is switched on, not locked and in reach; then retry."},
    {Operation::readNotes, step(-4), "% did not tell its folders of notes. Retry."},
    {Operation::writeMessages, step(-1),
     "% did not take the change, or the part of the connectivity software for it could not be started."},
    {Operation::writeMessages, step(-2), "% is no longer attached. Attach it again and retry."},
    {Operation::writeMessages, step(-3),
     "% refused the connection. Accept it on the phone, and see that the phone is switched on, not locked "
     "and "
     "in reach; then retry."},
    {Operation::writeMessages, step(-4), "% did not begin the change. Retry."},
    {Operation::writeMessages, step(-5), "% did not list what it has. Retry."},
    {Operation::readCalendar, step(-1),
     "The part of the connectivity software that reads calendars could not be started. Is it installed "
     "completely?"},
    {Operation::readCalendar, step(-2),
     "% is no longer attached, or let nobody read its calendar. Check the cable or the Bluetooth connection "
     "and retry."},
    {Operation::readCalendar, step(-3),
     "% has no calendar that can be read, or refused the connection to it. Accept the connection on the "
     "phone, and see that it is switched on, not locked and in reach; then retry."},
    {Operation::readCalendar, step(-4), "% did not tell its calendars. Retry."},
    {Operation::writeCalendar, step(-1),
     "$ was not taken: it repeats at an interval above 255 or has more than 255 exceptions, there was no "
     "memory, or the connectivity software could not be started."},
    {Operation::writeCalendar, step(-2), "% is no longer attached. Attach it again and retry."},
    {Operation::writeCalendar, step(-3),
     "% refused the connection. Accept it on the phone, and see that the phone is switched on, not locked "
     "and in reach; then retry."},
    {Operation::writeCalendar, step(-4), "% did not begin the change. Retry."},
    {Operation::writeCalendar, step(-5), "% did not list its calendar entries. Retry."},
    {Operation::changeCalendars, step(-1), "% did not tell its calendars. Retry."},
    {Operation::changeCalendars, step(-2), "% is no longer attached. Attach it again and retry."},
    {Operation::changeCalendars, step(-3),
     "% refused the connection. Accept it on the phone, and see that the phone is switched on, not locked "
     "and in reach; then retry."},
    {Operation::changeCalendars, step(-7), "There was no memory for the name of the calendar."},
    {Operation::changeCalendars, step(-8), "% has no calendar of that name."},
    {Operation::openFiles, step(-1),
     "% did not open its files. It may be locked, busy with another program, attached as a USB drive, or no "
     "longer "
     "attached; see to that and retry."},
    {Operation::listFolder, step(-1),
     "% did not list $. The connection may be lost: check the cable or the reception and retry."},
    {Operation::getFile, step(-1), "% did not open its files. Attach it again and retry."},
    {Operation::getFile, step(-2),
     "% did not hand out $. Another program on the phone may have it open, or it was removed meanwhile."},
    {Operation::putFile, step(-1), "% did not open its files. Attach it again and retry."},
    {Operation::putFile, step(-2), "% has no such folder any more."},
    {Operation::putFile, step(-3),
     "% did not take $. Its memory may be full, or the name too long or with characters that the phone does "
     "not "
     "take."},
    {Operation::renameEntry, step(-1), "% did not find the folder of $ any more."},
    {Operation::renameEntry, step(-2),
     "% did not rename $. It may be read-only or in use, or the new name too long or with characters that "
     "the phone "
     "does not take."},
    {Operation::deleteFile, step(-1), "% did not find the folder of $ any more."},
    {Operation::deleteFile, step(-2), "% did not delete $. It may be read-only or in use."},
    {Operation::createFolder, step(-1), "% did not find the folder above $."},
    {Operation::createFolder, step(-2),
     "% did not make $. Its memory may be full or read-only, or the name too long or with characters that "
     "the phone "
     "does not take."},
    {Operation::deleteFolder, step(-1), "% did not find the folder above $ any more."},
    {Operation::deleteFolder, step(-2), "% did not delete $. It may be read-only or in use."},
    {Operation::writeContact, 0x80200006, connectionLost},
    {Operation::deleteContact, 0x80200006, connectionLost},
    {Operation::endContacts, 0x80200006, connectionLost},
    {{}, 0x80100004, "The connection to % was closed. Attach the phone again and retry."},
    {{},
     0x80100014,
     "% is busy: another program is working with it. Close that program, or wait until it is done, and "
     "retry."},
    {{},
     0x80100023,
     "% does not let its contents be read over this connection. If it is attached as a USB drive, choose the "
     "connection mode for phone software (such as \"PC Suite\") on the phone and retry."},
    {{}, 0x80200000, "% cannot be reached. See that it is switched on and in reach, and retry."},
    {{},
     0x80200006,
     "The connection to % was lost, three times over. Check the cable or the reception and retry."},
    {{},
     0x80200008,
     "% refused the connection. Accept it on the phone, and see that the phone is switched on, not locked "
     "and in "
     "reach; then retry."},
    {{}, 0x8020000D, "The kind of connection that % needs is switched off. Switch it on and retry."},
    {{},
     0x80200010,
     "The connectivity service failed, three times over. Start the connectivity software again and retry."},
};

std::string filled(std::string text, const std::string& phone, const std::string& subject) {
    const std::size_t subjectPlace = text.find('$');
    if (subjectPlace != std::string::npos) text.replace(subjectPlace, 1, subject);
    const std::size_t place = text.find('%');
    const char* unnamed = place == 0 ? "The phone" : "the phone";
    if (place != std::string::npos) text.replace(place, 1, phone.empty() ? unnamed : phone);
    return text;
}

}  // namespace

std::string resultMessage(Operation operation, Long result, const std::string& phone,
                          const std::string& subject) {
    const auto code = static_cast<std::uint32_t>(result);
    for (const ResultMessage& message : messages)
        if (message.result == code && (!message.operation || *message.operation == operation))
            return filled(message.text, phone, subject);
    if (result > -1000) return "The operation failed with result " + std::to_string(result) + ".";
    return "The connectivity library reported error 0x" + toUtf8(hexText(code)) + ".";
}

}  // namespace ovno2::host
