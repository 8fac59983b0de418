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
    return "unknown";
}

}  // namespace

std::string phonesAsJson(std::span<const ListedPhone> phones) {
    std::string text;
    JsonLines lines([&](std::string_view piece) { text += piece; });
    for (const ListedPhone& phone : phones) {
        JsonLine& line = lines.next();
        line.StartObject();
        line.member("model", phone.model);
        line.member("medium", nameOf(media, phone.media));
        line.member("serialNumber", phone.serial);
        line.member("address", phone.address);
        line.member("name", phone.name);
        line.member("platform", nameOf(platforms, phone.type));
        line.member("platformType", phone.type);
        line.EndObject();
    }
    lines.end();
    return text;
}

Table phonesAsTable(std::span<const ListedPhone> phones) {
    Table table({u"Model", u"Medium", u"Serial number", u"Address", u"Name", u"Platform"});
    for (const ListedPhone& phone : phones)
        table.addRow({phone.model, fromUtf8(nameOf(media, phone.media)), phone.serial, phone.address,
                      phone.name, fromUtf8(nameOf(platforms, phone.type))});
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
