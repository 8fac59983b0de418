// The connectivity library's records, word for word as they lie in its memory.
//
// Every member is a 32-bit little-endian word (date and time bytes excepted). `Address` members point into
// the library's memory, which lies below 4 GiB in every process, so the same records work in a 64-bit one. A
// record is copied with one memcpy and never overlaid on foreign memory. Words that nobody names are 0.
#pragma once

#include <cstdint>

#include "base/types.h"

namespace ovno2::library {

using Word = std::uint32_t;
using Handle = Word;  // 0 = none
using Status = Word;  // 0 = success, else a code with the top bit set

// Status codes that callers tell apart.
inline constexpr Status statusOk = 0;
inline constexpr Status deviceListStale = 0x80100004;  // session or device gone: reopen and ask again
inline constexpr Status deviceBusy = 0x80100014;       // the phone is busy with another application
inline constexpr Status contentAccessDenied = 0x80100023;
inline constexpr Status phoneNotReached = 0x80200000;
inline constexpr Status connectionLost = 0x80200006;
inline constexpr Status connectionFailed = 0x80200008;
inline constexpr Status mediumOff = 0x8020000D;
inline constexpr Status serviceFailed = 0x80200010;
inline constexpr Status pairingRefused = 0x80200100;
inline constexpr Status noMoreEntries = 0x80300000;  // end of a folder or file search

// Device information options.
inline constexpr Word generalInformation = 0x10000;
inline constexpr Word propertiesInformation = 0x300000;

// Media in the library's numbering.
inline constexpr Word mediumInfrared = 2;
inline constexpr Word mediumCable = 4;
inline constexpr Word mediumBluetooth = 8;
inline constexpr Word mediumUsb = 16;

// One phone.
struct DeviceRecord {
    Address serialNumber;  // text
    Address friendlyName;  // text
    Address model;         // text
    Address manufacturer;  // text
    Word connectionCount;
    Address connections;  // connectionCount ConnectionRecords
};
static_assert(sizeof(DeviceRecord) == 24);

// One way a phone is attached; a found Bluetooth device has the same form.
struct ConnectionRecord {
    Word deviceNumber;
    Word medium;         // library numbering
    Address deviceName;  // text
    Address address;     // text
    Word state;          // bit set; 8 = attached as USB mass storage
};
static_assert(sizeof(ConnectionRecord) == 20);
inline constexpr Word stateUsbDrive = 8;

struct GeneralInformationRecord {
    Word size;
    Word reserved;
    Address typeName;  // text
    Word word3;
};
static_assert(sizeof(GeneralInformationRecord) == 16);

struct PropertiesRecord {
    Word size;
    Word reserved;
    Word platformCode;
    Word platformLevel;
};
static_assert(sizeof(PropertiesRecord) == 16);

struct MediaRecord {
    Word size;
    Word medium;          // library numbering
    Address description;  // text
    Word state;           // 1 = on, 2 = off
    Word word4;
    Word word5;
    Word word6;
};
static_assert(sizeof(MediaRecord) == 28);

// Phone file system. Folder searches fill FolderRecord, file searches, reads and writes use FileRecord.
struct FolderRecord {
    Address name;     // text
    Word attributes;  // 0x200 clear = may be changed, 0x2000 see callers
    Word timeLow;     // 64-bit file time, UTC
    Word timeHigh;
    Address label;       // text
    Address memoryType;  // text
};
static_assert(sizeof(FolderRecord) == 24);

struct FileRecord {
    Address name;  // text
    Word attributes;
    Word timeLow;  // 64-bit file time, UTC
    Word timeHigh;
    Word size;     // bytes
    Address type;  // text
};
static_assert(sizeof(FileRecord) == 24);

// Content access.
struct FolderInfoRecord {
    Word size;  // 32, or 48 in the longer form
    Word folderId;
    Word unused;
    Address name;  // text
    Address path;  // text
    Word subfolderCount;
    Address subfolders;  // records of the same layout, at a stride of the record size
    Word word7;
};
static_assert(sizeof(FolderInfoRecord) == 32);

struct ItemIdRecord {
    Word size;  // 24
    Word folderId;
    Word position;   // for an item just written: the temporary id
    Word uidLength;  // bytes
    Address uid;     // bytes
    Word word5;
};
static_assert(sizeof(ItemIdRecord) == 24);

struct ItemIdListRecord {
    Word size;  // 12
    Word count;
    Address items;  // count ItemIdRecords
};
static_assert(sizeof(ItemIdListRecord) == 12);

// A data item. Libraries with a device-management version below 30 leave out the leading size word (16
// bytes).
struct DataItemRecord {
    Word size;
    Word reserved;
    Word group;
    Word fieldId;
    Word value;  // a number, or the address of a text, date, picture or address record
};
static_assert(sizeof(DataItemRecord) == 20);

struct ItemPair {
    Word count;     // only the low byte counts
    Address items;  // data items
};

// A contact: four groups of data items.
struct ContactRecord {
    Word size;  // 36
    ItemPair a, b, c, d;
};
static_assert(sizeof(ContactRecord) == 36);

struct PictureRecord {
    Word size;       // 16
    Address format;  // text such as "JPEG"
    Word byteCount;
    Address bytes;
};
static_assert(sizeof(PictureRecord) == 16);

struct DateRecord {
    Word size;  // only the low byte is consulted
    std::uint16_t year;
    std::uint8_t month;
    std::uint8_t day;
    std::uint8_t hour;
    std::uint8_t minute;
    std::uint8_t second;
    std::uint8_t padding;
    std::int32_t firstOffset;   // minutes
    std::int32_t secondOffset;  // minutes
};
static_assert(sizeof(DateRecord) == 20);

// A calendar entry. Libraries with a content-access version below 36 end it before the exceptions (104
// bytes).
struct CalendarRecord {
    Word size;         // 112 or 104
    Word type;         // one of the kinds below
    DateRecord start;  // of a to-do: its due date
    DateRecord end;
    Word alarmState;  // 1 = none, 3 = set
    DateRecord alarm;
    Word recurrence;  // byte 0 kind, byte 1 interval, byte 2 weekdays, Monday first
    DateRecord recurrenceEnd;
    ItemPair items;  // data items
    Word exceptionCount;
    Address exceptions;  // exceptionCount DateRecords
};
static_assert(sizeof(CalendarRecord) == 112);
inline constexpr Word longCalendarRecord = 112;
inline constexpr Word shortCalendarRecord = 104;

// Kinds of calendar entries.
inline constexpr Word calendarMeeting = 1;
inline constexpr Word calendarCall = 2;
inline constexpr Word calendarBirthday = 3;
inline constexpr Word calendarNote = 4;
inline constexpr Word calendarReminder = 5;
inline constexpr Word calendarUnnamed = 6;
inline constexpr Word calendarToDo = 7;

inline constexpr Word alarmNone = 1;
inline constexpr Word alarmSet = 3;

// Kinds of repetition.
inline constexpr Word repeatsNot = 0;
inline constexpr Word repeatsDaily = 1;
inline constexpr Word repeatsWeekly = 2;
inline constexpr Word repeatsMonthly = 3;
inline constexpr Word repeatsYearly = 4;

// Field ids of a calendar entry's data items.
inline constexpr Word calendarSummary = 0x300;      // text
inline constexpr Word calendarLocation = 0x301;     // text
inline constexpr Word calendarDescription = 0x302;  // text; of a birthday the birth year, a number
inline constexpr Word calendarPriority = 0x303;     // number
inline constexpr Word calendarStatus = 0x304;       // number
inline constexpr Word calendarBirthdayMark = 0x306;

// A message; `data` is a text in UTF-16 or a row of bytes.
struct MessageRecord {
    Word size;        // 44
    Word info;        // low four bits: the data format
    Word dataLength;  // bytes
    Address data;
    Word addressCount;  // only the low byte counts
    Address addresses;  // addressCount MessageAddressRecords
    DateRecord date;
};
static_assert(sizeof(MessageRecord) == 44);

struct MessageAddressRecord {
    Word size;  // 12
    Word info;
    Address text;
};
static_assert(sizeof(MessageAddressRecord) == 12);

struct NoteRecord {
    Word size;  // 8
    Address text;
};
static_assert(sizeof(NoteRecord) == 8);

}  // namespace ovno2::library
