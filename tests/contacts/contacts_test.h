// What the contacts tests share: simulated phones, a field-definition table, and the values of the contacts
// read.
#pragma once

#include <gmock/gmock.h>

#include "common/field_table.h"
#include "common/phone_test.h"
#include "contacts/contacts.h"
#include "contacts/contacts_connection.h"
#include "content/sessions.h"
#include "core/settings.h"
#include "devices/devices.h"
#include "devices/session.h"

namespace ovno2::Contacts {

using Control = simulator::Control;
using Json = Control::Json;

class ContactsTest : public PhoneTest {
  protected:
    ~ContactsTest() override {
        letGo();
        EXPECT_EQ(0, simulator.balance()["closedInside"]);
    }

    void letGo() {
        Contacts::CloseContactsConnection();
        Content::PIMApiTerminate();
        Session::DMApiTerminate();
    }

    static Json contactOf(const std::string& uid, Json fields) {
        return {{"uid", uid}, {"fields", std::move(fields)}};
    }
    void addPhone(Json contacts) {
        simulator.addPhone(Control::plainPhone(serial), Control::phoneBook(std::move(contacts)));
    }
    void addContact(Json fields) { addPhone({contactOf("0A0B", std::move(fields))}); }

    Long read() { return NokiaGetAddressBookItems(model, phoneId, items, table, pictureFolder, progressbar); }

    // Values of a contact by its place in the array, shown with "|" for the tabs.
    Text values(Long index = 1) { return replaceAll(items.at(index).FieldValues, u"\t", u"|"); }
    // Everything as at the start, but for the settings of the test itself.
    void startOver() {
        letGo();
        simulator.reset();
        resetThreadState();
        usePlatform(machine);
        settings().getAllFields = getAllFields;
        items.clear();
    }
    // The values of a single contact with these fields.
    Text valuesOf(Json fields) {
        startOver();
        stateOf<Devices::State>().platformType = platformType;
        addContact(std::move(fields));
        EXPECT_EQ(1, read());
        return items.hasElements() ? values() : Text(u"(not read)");
    }

    Text model = u"Nokia N95";
    Text phoneId;
    const std::string serial = "356300010000017";
    TextTable table = tableOf({1, 2, 3, 5, 20, 22, 70});
    HostArray<AdrItem> items;
    Text pictureFolder;
    platform::ObjectPointer progressbar;
    Long getAllFields = 0;
    Long platformType = 0;
};

}  // namespace ovno2::Contacts
