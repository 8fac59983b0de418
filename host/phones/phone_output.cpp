#include "host/phones/phone_output.h"

#include "host/output/command_output.h"
#include "host/output/json.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

struct Name {
    Long value;
    const char* text;
};

constexpr Name media[] = {
    {eMediaCable, "cable"}, {eMediaBT, "Bluetooth"},       {eMediaIR, "infrared"},
    {eMediaUSB, "USB"},     {eMediaUSBDrive, "USB drive"},
};

constexpr Name platforms[] = {
    {eNokiaPhoneS40, "S40"},       {eNokiaPhoneS40_2, "S40 2nd"}, {eNokiaPhoneS40_3, "S40 3rd"},
    {eNokiaPhoneS40_4, "S40 4th"}, {eNokiaPhoneS40_5, "S40 5th"}, {eNokiaPhoneS40_6, "S40 6th"},
    {eNokiaPhoneS40_7, "S40 7th"}, {eNokiaPhoneS40_8, "S40 8th"}, {eNokiaPhoneS60, "S60"},
    {eNokiaPhoneS60_2, "S60 2nd"}, {eNokiaPhoneS60_3, "S60 3rd"}, {eNokiaPhoneS60_3_FP1, "S60 3rd FP1"},
    {eNokiaPhoneS60_5, "S60 5th"}, {eNokiaPhoneS60_6, "S60 6th"}, {eNokiaPhoneS80, "S80"},
};

template <std::size_t count>
const char* nameOf(const Name (&names)[count], Long value) {
    for (const Name& name : names)
        if (name.value == value) return name.text;
    return nullptr;
}

Text labelOf(const char* name) {
    return fromUtf8(name ? name : "unknown");
}

// What a phone does not tell is left out.
void writeMember(JsonLine& line, const char* name, const Text& value) {
    if (!value.empty()) line.member(name, TextView(value));
}
void writeMember(JsonLine& line, const char* name, const char* value) {
    if (value) line.member(name, value);
}

}  // namespace

void writePhone(JsonLine& line, const ListedPhone& phone) {
    writeMember(line, "model", phone.model);
    writeMember(line, "medium", nameOf(media, phone.media));
    writeMember(line, "serialNumber", phone.serial);
    writeMember(line, "address", phone.address);
    writeMember(line, "name", phone.name);
    writeMember(line, "platform", nameOf(platforms, phone.type));
    if (phone.type != eNokiaPhoneType) line.member("platformType", phone.type);
}

std::string phonesAsJson(std::span<const ListedPhone> phones) {
    std::string text;
    JsonLines lines([&](std::string_view piece) { text += piece; });
    for (const ListedPhone& phone : phones) {
        JsonLine& line = lines.next();
        line.StartObject();
        writePhone(line, phone);
        line.EndObject();
    }
    lines.end();
    return text;
}

Table phonesAsTable(std::span<const ListedPhone> phones) {
    Table table({u"Model", u"Medium", u"Serial number", u"Address", u"Name", u"Platform"});
    for (const ListedPhone& phone : phones)
        table.addRow({phone.model, labelOf(nameOf(media, phone.media)), phone.serial, phone.address,
                      phone.name, labelOf(nameOf(platforms, phone.type))});
    return table;
}

void showPhones(std::span<const ListedPhone> phones, bool asJson) {
    if (asJson)
        write(phonesAsJson(phones));
    else if (phones.empty())
        note("No phone is attached.");
    else
        writeTable(phonesAsTable(phones));
}

}  // namespace ovno2::host
