#include "host/contacts/vcard_builder.h"

#include <algorithm>

#include "host/contacts/vcard_names.h"
#include "host/formats/charset.h"
#include "host/formats/transfer_encodings.h"

namespace ovno2::host {

namespace {

Text textOf(const ContentLine& line, std::string_view value) {
    // What is text though it came in base64.
    if (line.isBinary)
        return trimBlanks(replaceAll(replaceAll(fromUnknownCharset(value), u"\r\n", u"\n"), u"\r", u"\n"));
    Text text = trimBlanks(fromUtf8(unescaped(line, value)));
    return line.parameter(breakParameter).empty() ? text : replaceAll(text, u"\n", u"\r\n");
}

Text textOf(const ContentLine& line) {
    return textOf(line, line.value);
}

std::string uppercased(std::string_view text) {
    return toUtf8(upperCase(fromUtf8(text)));
}

// A value as messages show it: short, on one line.
std::string shown(TextView value) {
    constexpr std::size_t longest = 60;
    Text text(value.substr(0, longest));
    std::ranges::replace_if(
        text, [](char16_t c) { return c < u' '; }, u' ');
    return "\"" + toUtf8(text) + (value.size() > longest ? "..." : "") + "\"";
}

// Types that say no more than the property does.
bool saysNothing(const std::string& type) {
    constexpr std::string_view names[] = {"PREF", "VOICE",  "IPHONE", "INTERNET", "OTHER", "TEXT",
                                          "MSG",  "POSTAL", "INTL",   "PARCEL",   "DOM",   "HOMEPAGE"};
    return std::ranges::find(names, type) != std::end(names);
}

// A year, month and day, apart or together, with a time of day behind them or not; empty = it is no full
// date.
Text isoDateIn(TextView text) {
    Text digits;
    std::size_t place = 0;
    for (; place < text.size() && digits.size() < 8; ++place) {
        const char16_t c = text[place];
        const bool isSeparator =
            (c == u'-' || c == u'/' || c == u'.') && (digits.size() == 4 || digits.size() == 6);
        if (c >= u'0' && c <= u'9')
            digits.push_back(c);
        else if (!isSeparator || text[place - 1] == c)
            return {};
    }
    if (digits.size() < 8 || (place < text.size() && text[place] != u'T' && text[place] != u' ')) return {};
    Text date = digits.substr(0, 4) + u'-' + digits.substr(4, 2) + u'-' + digits.substr(6, 2);
    return isIsoDate(date) ? date : Text();
}

// What kind of image: by its name in the card, else by its first bytes.
std::string extensionOf(std::string_view kind, std::string_view bytes) {
    std::string name = toUtf8(lowerCase(fromUtf8(kind)));
    if (const std::size_t slash = name.rfind('/'); slash != std::string::npos) name.erase(0, slash + 1);
    if (name == "jpeg" || name == "pjpeg") return "jpg";
    if (name == "x-ms-bmp" || name == "x-bmp") return "bmp";
    if (name == "jpg" || name == "png" || name == "gif" || name == "bmp") return name;
    if (bytes.starts_with("\xFF\xD8\xFF")) return "jpg";
    if (bytes.starts_with("\x89PNG")) return "png";
    if (bytes.starts_with("GIF8")) return "gif";
    if (bytes.starts_with("BM")) return "bmp";
    const bool isName =
        std::ranges::all_of(name, [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); });
    return isName && name != "unknown" ? name : std::string();
}

}  // namespace

CardBuilder::CardBuilder() {
    contact_.values.resize(fieldRows().size());
}

const std::map<std::string_view, CardBuilder::Handler>& CardBuilder::handlers() {
    static const std::map<std::string_view, Handler> known = {
        {"N", &CardBuilder::addName},
        {"FN", &CardBuilder::addFormattedName},
        {"NICKNAME", &CardBuilder::addNickname},
        {"X-NICKNAME", &CardBuilder::addNickname},
        {"X-ANDROID-CUSTOM", &CardBuilder::addCustom},
        {"ORG", &CardBuilder::addCompany},
        {"TITLE", &CardBuilder::addJob},
        {"ROLE", &CardBuilder::addRole},
        {"TEL", &CardBuilder::addTyped},
        {"EMAIL", &CardBuilder::addTyped},
        {"URL", &CardBuilder::addTyped},
        {"ADR", &CardBuilder::addAddress},
        {"NOTE", &CardBuilder::addNote},
        {"BDAY", &CardBuilder::addBirthday},
        {"CATEGORIES", &CardBuilder::addCategories},
        {"X-CATEGORIES", &CardBuilder::addCategories},
        {"PHOTO", &CardBuilder::addPicture},
        {"UID", &CardBuilder::addUid},
        {"X-IRMC-LUID", &CardBuilder::addPhoneUid},
        {"KIND", &CardBuilder::addKind},
        {"X-ADDRESSBOOKSERVER-KIND", &CardBuilder::addKind},
        {"X-ABLABEL", &CardBuilder::addLabel},
        {otherProperty, &CardBuilder::addOwnOther},
        {birthdayProperty, &CardBuilder::addOwnBirthday},
        // About the file, not the person.
        {"VERSION", &CardBuilder::passOver},
        {"PRODID", &CardBuilder::passOver},
        {"PROFILE", &CardBuilder::passOver},
        {"REV", &CardBuilder::passOver},
        {"CLIENTPIDMAP", &CardBuilder::passOver},
    };
    return known;
}

void CardBuilder::say(std::string_view property, const std::string& what) {
    std::string message(property);
    if (!what.empty()) message.append(": ").append(what);
    if (said_.insert(message).second) contact_.unplaced.push_back(std::move(message));
}

void CardBuilder::addComponent(std::string_view name) {
    say(uppercased(name), name == "AGENT" ? "a card in the card" : "no part of a card");
}

void CardBuilder::add(const ContentLine& line) {
    if (line.name.empty())
        return say("line " + std::to_string(line.number), "no property: " + shown(fromUtf8(line.value)));
    if (line.value.empty() && line.trouble.empty()) return;
    if (!line.trouble.empty()) say(line.name, line.trouble);
    const auto handler = handlers().find(line.name);
    if (handler != handlers().end()) {
        (this->*handler->second)(line);
        const bool isTyped = handler->second == &CardBuilder::addTyped ||
                             handler->second == &CardBuilder::addAddress ||
                             handler->second == &CardBuilder::addPicture;
        if (handler->second != &CardBuilder::passOver) sayParameters(line, isTyped);
    } else if (const Text value = line.isBinary ? Text() : textOf(line); line.isBinary || !value.empty()) {
        say(line.name, line.isBinary ? std::string() : shown(value));
    }
}

// Those that no row can hold.
void CardBuilder::sayParameters(const ContentLine& line, bool usesTypes) {
    constexpr std::string_view used[] = {"VALUE",        "PREF",      "PID", "MEDIATYPE", "X-APPLE-OMIT-YEAR",
                                         breakParameter, rowParameter};
    for (const LineParameter& parameter : line.parameters) {
        const bool isUsed = parameter.name == "TYPE"
                                ? usesTypes || saysNothing(uppercased(parameter.value))
                                : std::ranges::find(used, parameter.name) != std::end(used);
        if (!isUsed) say(line.name, parameter.name + "=" + parameter.value);
    }
}

// False when the row holds one value, and has it.
bool CardBuilder::put(Long code, TextView value) {
    const std::size_t row = rowOf(code);
    if (value.empty()) return true;
    if (fieldRows()[row].holds == Holds::one && !contact_.values[row].empty()) return false;
    contact_.values[row].emplace_back(value);
    return true;
}

void CardBuilder::putOrSay(std::string_view property, Long code, TextView value) {
    if (!put(code, value)) say(property, "a second value: " + shown(value));
}

void CardBuilder::addName(const ContentLine& line) {
    if (hasName_) return say(line.name, "a second name: " + shown(textOf(line)));
    hasName_ = true;
    std::vector<Text> names;
    for (const std::string_view part : partsOf(line.value, ";")) {
        Text name;
        // Several names of one kind; old cards have commas that separate nothing.
        for (const std::string_view piece : partsOf(part, line.isOldForm ? "" : ","))
            if (const Text one = textOf(line, piece); !one.empty())
                name.append(name.empty() ? u"" : u" ").append(one);
        names.push_back(std::move(name));
    }
    constexpr std::size_t last = 0, first = 1, additional = 2, title = 3, suffix = 4, count = 5;
    for (std::size_t i = count; i < names.size(); ++i)
        if (!names[i].empty()) say(line.name, shown(names[i]));
    names.resize(std::max(names.size(), count));
    put(HostField::lastName, names[last]);
    const bool both = !names[first].empty() && !names[additional].empty();
    put(HostField::firstName, names[first] + (both ? u" " : u"") + names[additional]);
    put(HostField::title, names[title]);
    suffix_ = names[suffix];
}

void CardBuilder::addFormattedName(const ContentLine& line) {
    const Text name = textOf(line);
    if (formattedName_) return say(line.name, "a second name: " + shown(name));
    formattedName_ = name;
    isFormalName_ = !line.parameter(rowParameter).empty();
}

void CardBuilder::addNickname(const ContentLine& line) {
    Text names;
    for (const std::string_view item : partsOf(line.value, ","))
        if (const Text name = textOf(line, item); !name.empty())
            names.append(names.empty() ? u"" : u", ").append(name);
    putOrSay(line.name, HostField::nickname, names);
}

// Nicknames where the version has none.
void CardBuilder::addCustom(const ContentLine& line) {
    const std::vector<std::string_view> parts = partsOf(line.value, ";");
    if (parts[0] != "vnd.android.cursor.item/nickname" || parts.size() == 1)
        return say(line.name, shown(textOf(line)));
    putOrSay(line.name, HostField::nickname, textOf(line, parts[1]));
}

void CardBuilder::addCompany(const ContentLine& line) {
    for (const std::string_view part : partsOf(line.value, ";"))
        put(HostField::company, textOf(line, part));
}

void CardBuilder::addJob(const ContentLine& line) {
    put(HostField::jobTitle, textOf(line));
}

void CardBuilder::addRole(const ContentLine& line) {
    roles_.push_back(textOf(line));
}

CardBuilder::Typed CardBuilder::typedOf(const ContentLine& line) const {
    constexpr int noRank = 1000;
    Typed typed{line.name, line.group, {}, {}, noRank, std::nullopt};
    for (const LineParameter& parameter : line.parameters) {
        if (parameter.name == "TYPE")
            // Some programs put the whole list into quotation marks.
            for (const Text& type : split(upperCase(fromUtf8(parameter.value)), u','))
                typed.types.insert(toUtf8(trimBlanks(type)));
        if (parameter.name == "PREF")
            typed.rank = std::clamp(numericLong(fromUtf8(parameter.value)), 0, noRank);
        if (parameter.name == rowParameter) {
            for (const CardKind& kind : cardKinds)
                for (const Long code : {kind.first, kind.second})
                    if (kind.property == line.name && code != HostField::none &&
                        fieldRows()[rowOf(code)].key == parameter.value)
                        typed.row = code;
        }
    }
    if (typed.types.contains("PREF")) typed.rank = 0;
    return typed;
}

void CardBuilder::addTyped(const ContentLine& line) {
    Text value = textOf(line);
    constexpr TextView scheme = u"tel:";
    if (line.name == "TEL" && line.parameter("VALUE") != "text" &&
        equalsIgnoringCase(TextView(value).substr(0, scheme.size()), scheme)) {
        value.erase(0, scheme.size());
        if (const std::size_t more = value.find(u';'); more != Text::npos) {
            say(line.name, shown(TextView(value).substr(more + 1)));
            value.resize(more);
        }
    }
    if (value.empty()) return;
    typed_.push_back(typedOf(line));
    typed_.back().parts.push_back(std::move(value));
}

void CardBuilder::addAddress(const ContentLine& line) {
    std::vector<Text> parts;
    for (const std::string_view part : partsOf(line.value, ";"))
        parts.push_back(textOf(line, part));
    constexpr std::size_t postBox = 0, addition = 1, street = firstAddressPart;
    parts.resize(std::max(parts.size(), firstAddressPart + addressParts));
    if (parts[street].empty()) parts[street].swap(parts[addition]);
    for (std::size_t i = 0; i < parts.size(); ++i)
        if ((i < firstAddressPart || i >= firstAddressPart + addressParts) && !parts[i].empty())
            say(line.name, std::string() +
                               (i == postBox    ? "the post box "
                                : i == addition ? "the addition "
                                                : "") +
                               shown(parts[i]));
    typed_.push_back(typedOf(line));
    const auto first = parts.begin() + firstAddressPart;
    typed_.back().parts.assign(first, first + addressParts);
}

void CardBuilder::addNote(const ContentLine& line) {
    typed_.push_back(typedOf(line));
    typed_.back().types.clear();
    typed_.back().parts.push_back(textOf(line));
}

void CardBuilder::addBirthday(const ContentLine& line) {
    const Text value = textOf(line), date = isoDateIn(value);
    const std::string_view omitted = line.parameter("X-APPLE-OMIT-YEAR");
    if (date.empty() || (!omitted.empty() && toUtf8(date).starts_with(omitted)))
        return say(line.name, shown(value) + " is no day with its year");
    if (!contact_.values[rowOf(HostField::birthday)].empty())
        return say(line.name, "a second day: " + shown(value));
    put(HostField::birthday, date);
}

void CardBuilder::addCategories(const ContentLine& line) {
    for (const std::string_view item : partsOf(line.value, line.isOldForm ? ";," : ","))
        for (const Text& category : split(textOf(line, item), u';'))
            put(HostField::categories, trimBlanks(category));
}

void CardBuilder::addPicture(const ContentLine& line) {
    constexpr std::string_view data = "data:", encoding = ";base64,";
    std::string_view kind = line.parameter("TYPE");
    if (line.isBinary) {
        if (line.trouble.empty() && !line.value.empty())
            contact_.pictures.push_back({line.value, extensionOf(kind, line.value)});
        return;
    }
    const std::string value = unescaped(line, line.value);
    const std::size_t mark = value.find(encoding);
    if (!equalsIgnoringCase(fromUtf8(value.substr(0, data.size())), u"data:") || mark == std::string::npos)
        return say(line.name, "the picture is not in the card: " + shown(fromUtf8(value)));
    bool whole = true;
    std::string bytes = fromBase64(std::string_view(value).substr(mark + encoding.size()), whole);
    if (!whole || bytes.empty()) return say(line.name, "its base64 is damaged");
    const std::string mediaType = value.substr(data.size(), mark - data.size());
    const bool isImage = mediaType.starts_with("image/");
    std::string extension =
        extensionOf(isImage ? std::string_view(mediaType).substr(0, mediaType.find(';')) : kind, bytes);
    contact_.pictures.push_back({std::move(bytes), std::move(extension)});
}

void CardBuilder::addUid(const ContentLine& line) {
    if (!contact_.uid.empty()) return say(line.name, "a second one: " + shown(textOf(line)));
    contact_.uid = textOf(line);
}

void CardBuilder::addPhoneUid(const ContentLine& line) {
    phoneUid_ = textOf(line);
}

void CardBuilder::addKind(const ContentLine& line) {
    const std::string kind = uppercased(line.value);
    isGroup_ = isGroup_ || kind == "GROUP";
    if (kind != "INDIVIDUAL" && kind != "GROUP") say(line.name, line.value);
}

void CardBuilder::addLabel(const ContentLine& line) {
    if (!labels_.emplace(line.group, textOf(line)).second || line.group.empty())
        say(line.name, shown(textOf(line)));
}

void CardBuilder::addOwnOther(const ContentLine& line) {
    put(HostField::other, textOf(line));
}

void CardBuilder::addOwnBirthday(const ContentLine& line) {
    put(HostField::birthday, textOf(line));
}

// What a label of a group says, as a type of the property that it belongs to.
void CardBuilder::placeLabels() {
    constexpr std::pair<TextView, std::string_view> known[] = {
        {u"Home", "HOME"},   {u"Work", "WORK"},         {u"Mobile", "CELL"}, {u"Other", "OTHER"},
        {u"Pager", "PAGER"}, {u"HomePage", "HOMEPAGE"}, {u"HomeFAX", "FAX"}, {u"WorkFAX", "FAX"},
    };
    std::map<std::string_view, Typed*> owners;
    for (Typed& typed : typed_)
        if (!typed.group.empty()) owners.emplace(typed.group, &typed);
    for (const auto& [group, label] : labels_) {
        if (group.empty()) continue;
        TextView inner = label;
        if (inner.starts_with(u"_$!<") && inner.ends_with(u">!$_")) inner = inner.substr(4, inner.size() - 8);
        const auto* const meaning = std::ranges::find_if(
            known, [&](const auto& one) { return equalsIgnoringCase(one.first, inner); });
        const auto owner = owners.find(group);
        if (meaning != std::end(known) && owner != owners.end())
            owner->second->types.emplace(meaning->second);
        else
            say("X-ABLABEL", shown(label));
    }
}

void CardBuilder::placeTyped(Typed& typed) {
    if (typed.property == "ADR") return placeAddress(typed);
    TextView value = typed.parts[0];
    std::set<std::string>& types = typed.types;
    for (const char* const mobile : {"MOBILE", "CAR", "PCS"})
        if (types.contains(mobile)) types.insert("CELL");
    types.erase("MOBILE");
    // What kind of number comes before where it is.
    std::string_view kind;
    for (const std::string_view one : {"FAX", "PAGER", "CELL", "WORK", "HOME"})
        if (kind.empty() && typed.property == "TEL" && types.contains(std::string(one))) kind = one;
    const auto* const rows = std::ranges::find_if(
        cardKinds, [&](const CardKind& one) { return one.property == typed.property && one.type == kind; });
    for (const std::string& type : types)
        if (type != kind && !saysNothing(type)) say(typed.property, "TYPE=" + type + " of " + shown(value));
    Long code = rows->first;
    if (rows->second != HostField::none && !contact_.values[rowOf(code)].empty()) code = rows->second;
    code = typed.row.value_or(code);
    putOrSay(typed.property, code, value);
}

void CardBuilder::placeAddress(Typed& typed) {
    const auto* kind = std::ranges::find_if(addressKinds, [&](const AddressKind& one) {
        return !one.type.empty() && typed.types.contains(std::string(one.type));
    });
    if (kind == std::end(addressKinds)) kind = addressKinds;
    for (std::size_t i = 0; i < addressParts; ++i)
        put(kind->rows[i], typed.parts[i]);
    for (const std::string& type : typed.types)
        if (type != kind->type && !saysNothing(type)) say(typed.property, "TYPE=" + type);
}

void CardBuilder::placeFormattedName() {
    const Text formatted = formattedName_.value_or(Text());
    if (isFormalName_ || saysMoreThanName(formatted, contact_)) put(HostField::formalName, formatted);
    if (suffix_.empty()) return;
    const TextView formal = firstValue(contact_, HostField::formalName);
    if (formal.empty()) {
        Text name;
        for (const TextView part :
             {firstValue(contact_, HostField::title), firstValue(contact_, HostField::firstName),
              firstValue(contact_, HostField::lastName), TextView(suffix_)})
            if (!part.empty()) name.append(name.empty() ? u"" : u" ").append(part);
        put(HostField::formalName, name);
    } else if (formal.find(suffix_) == TextView::npos) {
        say("N", shown(suffix_));
    }
}

std::string CardBuilder::finish() {
    if (isGroup_)
        return "a list of contacts (" + shown(formattedName_.value_or(Text())) + "), and no contact";
    placeLabels();
    std::ranges::stable_sort(typed_, [](const Typed& a, const Typed& b) {
        return std::pair(a.rank, a.isWork()) < std::pair(b.rank, b.isWork());
    });
    for (Typed& typed : typed_)
        placeTyped(typed);
    const std::vector<Text>& jobs = contact_.values[rowOf(HostField::jobTitle)];
    std::set<Text> known(jobs.begin(), jobs.end());
    for (const Text& role : roles_)
        if (known.insert(role).second) put(HostField::jobTitle, role);
    placeFormattedName();
    if (contact_.uid.empty()) contact_.uid = phoneUid_;
    const bool isEmpty =
        contact_.pictures.empty() &&
        std::ranges::all_of(contact_.values, [](const auto& values) { return values.empty(); });
    if (!isEmpty) return {};
    std::string why = "the card holds nothing that a phone can hold";
    for (const std::string& one : contact_.unplaced)
        why.append(&one == contact_.unplaced.data() ? " (" : "; ").append(one);
    return contact_.unplaced.empty() ? why : why + ")";
}

}  // namespace ovno2::host
