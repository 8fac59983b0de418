// Messages and notes as the module takes them: one text of fields divided by tabs, which is why a tab in a
// text goes as a blank. The fields: kind, note's UID, -, folder id, -, UID, recipients, text.
#include "host/driver/driver.h"

namespace ovno2::host {

namespace {

Text inOneField(const Text& text) {
    return replaceAll(text, u"\t", u" ");
}

}  // namespace

Long PhoneDriver::writeMessage(const ListedPhone& phone, const std::vector<Text>& recipients,
                               const Text& text) {
    return writeData(phone, u"1\t\t\t\t\t\t" + inOneField(join(recipients, u',')) + u"\t" + inOneField(text));
}

Long PhoneDriver::writeNote(const ListedPhone& phone, const Text& uid, const Text& text) {
    return writeData(phone, u"4\t\t\t\t\t" + uid + u"\t\t" + inOneField(text));
}

Long PhoneDriver::deleteMessage(const ListedPhone& phone, DataStore store, const Text& folderId,
                                const Text& uid) {
    return deleteData(phone,
                      decimalText(static_cast<Long>(store)) + u"\t\t\t" + folderId + u"\t\t" + uid + u"\t\t");
}

Long PhoneDriver::deleteNote(const ListedPhone& phone, const Text& uid) {
    return deleteData(phone, u"4\t" + uid);
}

}  // namespace ovno2::host
