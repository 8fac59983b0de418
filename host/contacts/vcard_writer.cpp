#include "host/contacts/vcard_writer.h"

#include <algorithm>

#include "host/contacts/vcard_names.h"
#include "host/formats/content_lines.h"
#include "host/formats/transfer_encodings.h"

namespace ovno2::host {

namespace {

class CardWriter {
  public:
    CardWriter(const ContactDraft& contact, CardVersion version)
        : contact_(contact),
          version_(version),
          lines_(card_, version == CardVersion::v21 ? LineForm::old : LineForm::current) {}

    std::string written() {
        lines_.line("BEGIN", "VCARD");
        lines_.line("VERSION", number());
        writeNames();
        for (const CardKind& kind : cardKinds)
            writeKind(kind);
        for (const AddressKind& kind : addressKinds)
            writeAddresses(kind);
        writeBirthdays();
        writeList("CATEGORIES", HostField::categories, ",", ValueKind::item);
        for (const Text& value : rowValues(HostField::other))
            write(std::string(otherProperty), value);
        for (const ContactDraft::Picture& picture : contact_.pictures)
            writePicture(picture);
        writeUid();
        lines_.line("END", "VCARD");
        return std::move(card_);
    }

  private:
    std::string_view number() const {
        constexpr std::string_view numbers[] = {"2.1", "3.0", "4.0"};
        return numbers[static_cast<std::size_t>(version_)];
    }

    const std::vector<Text>& rowValues(Long code) const { return contact_.values[rowOf(code)]; }

    void write(const std::string& head, const Text& value, ValueKind kind = ValueKind::text) {
        lines_.line(head + breakMark(value), lines_.escaped(toUtf8(value), kind));
    }

    // Says so when all lines of a value end in CR LF.
    static std::string breakMark(const Text& value) {
        if (value.find(u'\r') == Text::npos) return {};
        const bool isMixed = replaceAll(value, u"\r\n", u"").find_first_of(u"\r\n") != Text::npos;
        return isMixed ? std::string() : ";" + std::string(breakParameter) + "=CRLF";
    }

    std::string part(Long code) const {
        return lines_.escaped(toUtf8(firstValue(contact_, code)), ValueKind::part);
    }

    void writeList(std::string_view head, Long code, std::string_view separator, ValueKind kind) {
        std::string list;
        Text all;
        for (const Text& value : rowValues(code)) {
            list.append(list.empty() ? "" : separator).append(lines_.escaped(toUtf8(value), kind));
            all.append(value);
        }
        if (!list.empty()) lines_.line(std::string(head) + breakMark(all), list);
    }

    static std::string rowMark(Long code) {
        return ";" + std::string(rowParameter) + "=" + std::string(fieldRows()[rowOf(code)].key);
    }

    // A property with a type, as the version writes it.
    std::string typed(std::string_view property, std::string_view type) const {
        std::string head(property);
        if (type.empty()) return head;
        if (version_ == CardVersion::v21) return head.append(";").append(type);
        head.append(";TYPE=");
        const bool isSmall = version_ == CardVersion::v40;
        std::ranges::transform(type, std::back_inserter(head), [&](char c) {
            return isSmall && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        });
        return head;
    }

    void writeNames() {
        Text all;
        for (const Long code : {HostField::lastName, HostField::firstName, HostField::title})
            all.append(firstValue(contact_, code));
        lines_.line("N" + breakMark(all), part(HostField::lastName) + ";" + part(HostField::firstName) +
                                              ";;" + part(HostField::title) + ";");
        const Text formal(firstValue(contact_, HostField::formalName));
        const bool isMarked = !formal.empty() && !saysMoreThanName(formal, contact_);
        write(isMarked ? "FN" + rowMark(HostField::formalName) : "FN",
              formal.empty() ? cardName(contact_) : formal);
        for (const Text& nickname : rowValues(HostField::nickname))
            write("NICKNAME", nickname, ValueKind::item);
        writeList("ORG", HostField::company, ";", ValueKind::part);
    }

    // The reader brings the first value without a mark to the first row, and all others to the second.
    void writeKind(const CardKind& kind) {
        const bool hasUsualType = kind.type.empty() && version_ != CardVersion::v40;
        const std::string head = typed(kind.property, hasUsualType ? kind.usualType : kind.type);
        const ValueKind valueKind = kind.property == "URL" ? ValueKind::uri : ValueKind::text;
        const auto writeOne = [&](const Text& value, std::string mark) {
            // A number that looks like an address, and is none.
            if (kind.property == "TEL" && value.find(u':') != Text::npos) mark += ";VALUE=text";
            write(head + mark, value, valueKind);
        };
        const std::vector<Text>& first = rowValues(kind.first);
        for (std::size_t i = 0; i < first.size(); ++i)
            writeOne(first[i], i == 0 || kind.second == HostField::none ? "" : rowMark(kind.first));
        if (kind.second == HostField::none) return;
        for (const Text& further : rowValues(kind.second))
            writeOne(further, first.empty() ? rowMark(kind.second) : "");
    }

    void writeAddresses(const AddressKind& kind) {
        std::size_t count = 0;
        for (const Long code : kind.rows)
            count = std::max(count, rowValues(code).size());
        for (std::size_t i = 0; i < count; ++i) {
            std::string value(firstAddressPart, ';');
            Text all;
            for (const Long& code : kind.rows) {
                if (&code != kind.rows) value.push_back(';');
                if (i >= rowValues(code).size()) continue;
                value.append(lines_.escaped(toUtf8(rowValues(code)[i]), ValueKind::part));
                all.append(rowValues(code)[i]);
            }
            lines_.line(typed("ADR", kind.type) + breakMark(all), value);
        }
    }

    void writeBirthdays() {
        bool isFirst = true;
        for (const Text& birthday : rowValues(HostField::birthday)) {
            if (isFirst && isIsoDate(birthday)) {
                const bool isShort = version_ == CardVersion::v40;
                write("BDAY", isShort ? removeAll(birthday, u'-') : birthday);
            } else {
                write(std::string(birthdayProperty), birthday);
            }
            isFirst = false;
        }
    }

    void writePicture(const ContactDraft::Picture& picture) {
        const std::string kind = picture.extension == "jpg" ? "jpeg" : picture.extension;
        if (version_ == CardVersion::v40) {
            const std::string type = kind.empty() ? "application/octet-stream" : "image/" + kind;
            lines_.line("PHOTO", "data:" + type + ";base64," + toBase64(picture.bytes));
            return;
        }
        std::string upper;
        std::ranges::transform(kind, std::back_inserter(upper), [](char c) {
            return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        });
        lines_.binary("PHOTO", upper.empty() ? upper : ";TYPE=" + upper, picture.bytes);
    }

    void writeUid() {
        if (contact_.uid.empty()) return;
        // In 4.0 it is a URI unless it says that it is none.
        const bool isText = version_ == CardVersion::v40 && contact_.uid.find(u':') == Text::npos;
        write(isText ? "UID;VALUE=text" : "UID", contact_.uid);
    }

    const ContactDraft& contact_;
    CardVersion version_;
    std::string card_;
    ContentLineWriter lines_;
};

}  // namespace

std::optional<CardVersion> cardVersion(std::string_view number) {
    if (number == "2.1") return CardVersion::v21;
    if (number == "3.0") return CardVersion::v30;
    if (number == "4.0") return CardVersion::v40;
    return std::nullopt;
}

std::string writeCard(const ContactDraft& contact, CardVersion version) {
    return CardWriter(contact, version).written();
}

}  // namespace ovno2::host
