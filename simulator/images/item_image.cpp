#include "simulator/images/item_image.h"

#include "simulator/base/text.h"
#include "simulator/images/date_text.h"

namespace ovno2::simulator {
namespace {

class CountedItemImage : public ItemImage {
  public:
    std::shared_ptr<ContentItem> read(const JsonNode& node, Word position) override {
        auto item = std::make_shared<CountedItem>();
        item->position = position;
        node.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (!readItemMember(name, value, *item)) value.fail("no member of this name");
        });
        return item;
    }
    void write(JsonWriter&, const ContentItem&) const override {}
};

}  // namespace

std::unique_ptr<ItemImage> countedItemsForm() {
    return std::make_unique<CountedItemImage>();
}

void readUid(const JsonNode& node, std::string& uid) {
    const bool isHex = node.isText() && fromHex(node.utf8(), uid);
    if (!isHex || uid.empty() || toHex(uid) != node.utf8()) {
        node.fail("pairs of upper-case hexadecimal digits");
    }
}

std::optional<std::u16string> readItemText(const JsonNode& node) {
    if (node.isNull()) return std::nullopt;
    if (!node.isText()) node.fail("a text or null");
    std::u16string text;
    if (!appendUtf16(text, node.utf8())) node.fail("UTF-8 text");
    if (text.find(u'\0') != std::u16string::npos) node.fail("a text without a character 0");
    return text;
}

void writeItemMember(JsonWriter& writer, const char* name, const std::optional<std::u16string>& text) {
    if (text) {
        writeItemMember(writer, name, *text);
    } else {
        writer.layout(std::string(", \"") + name + "\": null");
    }
}

void readDate(const JsonNode& node, library::DateRecord& date) {
    if (!node.isText() || !parseDateWithOffsets(node.utf8(), date)) {
        node.fail(
            "a day that there is, such as \"2008-07-19\", \"2008-07-19T16:30:00\" or "
            "\"2008-07-19T14:30:00+60+60\"");
    }
}

}  // namespace ovno2::simulator
