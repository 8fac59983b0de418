// Messages and notes as the module takes them: one text of fields divided by tabs, which is why a tab in a
// text goes as a blank.
#pragma once

#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

inline constexpr Long messagesAndNotes = 4;  // the kind of their write session

inline Text inOneField(const Text& text) {
    return replaceAll(text, u"\t", u" ");
}

// Kind, note's UID, -, folder id, -, UID, recipients, text.
inline Text newMessage(const std::vector<Text>& recipients, const Text& text) {
    return u"1\t\t\t\t\t\t" + inOneField(join(recipients, u',')) + u"\t" + inOneField(text);
}
inline Text noteToWrite(const Text& uid, const Text& text) {
    return u"4\t\t\t\t\t" + uid + u"\t\t" + inOneField(text);
}
inline Text messageToDelete(DataStore store, const Text& folderId, const Text& uid) {
    return decimalText(static_cast<Long>(store)) + u"\t\t\t" + folderId + u"\t\t" + uid + u"\t\t";
}
inline Text noteToDelete(const Text& uid) {
    return u"4\t" + uid;
}

}  // namespace ovno2::host
