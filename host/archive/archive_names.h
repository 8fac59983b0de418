// Where what lies in an archive. Paths are relative to its folder, with "/" between the parts.
#pragma once

namespace ovno2::host::archive {

inline constexpr const char* manifest = "SHA256SUMS";
// Of a run that has begun and not ended; with the phone's serial number.
inline constexpr const char* unfinished = "unfinished.json";
inline constexpr const char* phone = "phone.json";
inline constexpr const char* losses = "losses.json";
inline constexpr const char* fileList = "files.json";

inline constexpr const char* contactCards = "contacts/contacts.vcf";
inline constexpr const char* contactTable = "contacts/contacts.csv";
inline constexpr const char* goneContacts = "contacts/no-longer-on-phone.vcf";
inline constexpr const char* pictures = "contacts/pictures";
inline constexpr const char* calendars = "calendar";
inline constexpr const char* goneEntries = "calendar/no-longer-on-phone.ics";
inline constexpr const char* messageList = "messages/messages.json";
inline constexpr const char* conversations = "messages/conversations";
inline constexpr const char* noteList = "notes/notes.json";
inline constexpr const char* notes = "notes";
inline constexpr const char* files = "files";
inline constexpr const char* replacedFiles = "files-replaced";

}  // namespace ovno2::host::archive
