// The phone book: everyone by name, and one person in full.
"use strict";

// What a contact is called.
function contactName(contact) {
    const first = (value) => (Array.isArray(value) ? value[0] : value);
    return [contact.firstName, contact.lastName].filter((part) => part).join(" ") || first(contact.formalName) ||
        first(contact.nickname) || first(contact.company) || first(contact.mobile) || first(contact.phone) ||
        first(contact.homePhone) || first(contact.workPhone) || first(contact.email) || "(no name)";
}

sections.contacts = {
    title: "Contacts",
    icon: "contacts",
    of: "contacts",
    what: "contacts",
    data: ["contacts"],
    count: (info) => info.sections?.contacts?.count,
    open(view, {contacts}, info) {
        const state = info.sections?.contacts;
        if (contacts.length === 0) {
            view.append(parts.heading("Contacts"), parts.whyEmpty(state, "contacts"));
            return () => {};
        }
        const numberFields = /^(mobile|phone|homePhone|workPhone|fax|pager)\d?$/;
        const notSearched = new Set(["uid", "location", "picture", "onPhone", "goneSince", "notes"]);
        const valuesOf = (contact) => Object.entries(contact).filter(([key]) => !notSearched.has(key)).flatMap(([, value]) => value);
        const people = contacts.map((contact, index) => ({contact, index, name: contactName(contact)}));
        people.sort((a, b) => words.compare(a.name, b.name));
        for (const person of people) {
            person.haystack = words.haystack(valuesOf(person.contact).map(String));
            person.digits = Object.entries(person.contact).filter(([key]) => numberFields.test(key))
                .flatMap(([, value]) => value).map((number) => number.replace(/\D/g, "")).join(" ");
            person.letter = /\p{L}/u.exec(words.fold(person.name).charAt(0))?.[0].toUpperCase() ?? "#";
        }

        const split = parts.split(view, "Contact");
        const search = parts.search({label: "Search contacts", onQuery: find});
        split.list.append(parts.heading("Contacts"), parts.notice(state, "contacts"), search.element, split.scroller);
        const list = new WindowedList({scroller: split.scroller, label: "Contacts", className: "rows", height: 60, render: row});
        let shown = people;
        let query = "";
        let chosen;

        function secondLine(contact) {
            return [contact.company, contact.mobile, contact.phone, contact.homePhone, contact.workPhone, contact.email]
                .flat().find((value) => value && value !== contactName(contact)) ?? "";
        }
        function row({contact, index, name, letter}, place) {
            const isFirst = query === "" && (place === 0 || shown[place - 1].letter !== letter);
            return dom.make("div", {class: "row"}, dom.make("span", {class: "letter", "aria-hidden": "true"}, isFirst ? letter : ""),
                dom.make("a", {href: "#contacts/" + index}, parts.avatar(name, pictureOf(contact)),
                    dom.make("span", {class: "row-text"}, dom.marked("span", name, query, {class: "row-title"}),
                        dom.marked("span", secondLine(contact), query, {class: "row-more"}), dom.gone(contact))));
        }
        function find(text) {
            query = text;
            const matches = words.matcher(text);
            // A number is found however it is written, with its country or without.
            const digits = /^[\d\s()+/.-]{3,}$/.test(text) ? text.replace(/\D/g, "").replace(/^0+/, "") : "";
            shown = text === "" ? people
                : people.filter((person) => matches(person.haystack) || (digits !== "" && person.digits.includes(digits)));
            search.say(text === "" ? words.count(people.length, "contact", "contacts")
                : words.number(shown.length) + " of " + words.count(people.length, "contact", "contacts"));
            list.show(shown);
            mark();
        }
        function mark() {
            const place = shown.findIndex((person) => person === chosen);
            list.select(place < 0 ? undefined : place);
        }

        find("");
        split.detail.replaceChildren(dom.make("p", {class: "hint"}, "Choose a contact."));
        return ([index]) => {
            chosen = people.find((person) => String(person.index) === index);
            split.open(chosen !== undefined);
            mark();
            if (!chosen) {
                list.update();
                return;
            }
            const heading = contactCard(split.detail, chosen);
            if (split.isNarrow()) heading.focus();
            else if (!split.scroller.contains(document.activeElement)) list.reveal(Math.max(0, shown.indexOf(chosen)));
        };
    },
};

function pictureOf(contact) {
    return Array.isArray(contact.picture) ? contact.picture[0] : contact.picture;
}

// Shows a person in full; gives the heading.
function contactCard(pane, {contact, name}) {
    const groups = [
        [/^(mobile|phone|homePhone|workPhone|fax|pager)\d?$/, "Numbers"],
        [/^(email|web)\d?$/, "Mail and web"],
        [/^(home|work)?(street|postcode|town|state|country|address)$/i, "Addresses"],
        [/^(company|jobTitle)$/, "Work"],
        [/^(firstName|lastName|formalName|nickname|title|birthday|categories)$/, "Person"],
        [/^note\d?$/, "Notes"],
    ];
    // What a value leads to; nothing for what only looks like an address.
    function linkOf(key, value) {
        if (/^(mobile|phone|homePhone|workPhone|pager)\d?$/.test(key) && /\d/.test(value)) return "tel:" + value.replace(/[^\d+*#]/g, "");
        if (/^email\d?$/.test(key) && /^[^\s@]+@[^\s@]+$/.test(value)) return "mailto:" + encodeURIComponent(value.replace(/\p{Cs}/gu, ""));
        if (/^web\d?$/.test(key) && /^https?:\/\//i.test(value)) return URL.canParse?.(value) ? value : undefined;
        return undefined;
    }
    function shownValue(key, value) {
        if (key === "birthday") return dom.make("dd", {}, dom.time(value, words.dayLong(value)));
        const link = linkOf(key, value);
        return link ? dom.make("dd", {}, dom.text("a", value, {href: link, rel: "noreferrer"}))
            : dom.text("dd", value, {class: /^note|address$/i.test(key) ? "prose" : undefined});
    }

    const heading = dom.text("h2", name, {tabindex: "-1"});
    const picture = pictureOf(contact);
    const url = picture && archive.url(picture);
    pane.replaceChildren(parts.backLink("#contacts", "Contacts"), dom.make("div", {class: "card-head"},
        url ? dom.make("img", {class: "portrait", src: url, alt: "Picture of " + words.bare(name)}) : parts.avatar(name),
        dom.make("div", {}, heading, dom.gone(contact))));
    const left = new Map(Object.entries(contact).filter(([key]) => !["picture", "uid", "location", "onPhone", "goneSince"].includes(key)));
    function add(title, keys) {
        if (keys.length === 0) return;
        pane.append(dom.make("h3", {}, title), dom.make("dl", {class: "fields"}, keys.map((key) => {
            const values = [left.get(key)].flat();
            left.delete(key);
            return [dom.make("dt", {}, words.label(key)), values.map((value) => shownValue(key, String(value)))];
        })));
    }
    // The parts of an address under one name, where it is clear which belong together.
    function joinAddress(kind, label) {
        const key = (part) => (kind === "" ? part : kind + part.charAt(0).toUpperCase() + part.slice(1));
        const value = (part) => [left.get(key(part)) ?? ""].flat();
        const all = ["street", "postcode", "town", "state", "country"];
        if (all.some((part) => value(part).length > 1)) return;
        const [street, postcode, town, state, country] = all.map((part) => value(part)[0]);
        for (const part of all) left.delete(key(part));
        const lines = [street, [postcode, town].filter((part) => part).join(" "), state, country].filter((line) => line);
        if (lines.length > 0) left.set(label, [lines.join("\n")]);
    }
    joinAddress("home", "homeAddress");
    joinAddress("work", "workAddress");
    joinAddress("", "address");
    const losses = contact.notes;
    left.delete("notes");
    for (const [pattern, title] of groups) add(title, [...left.keys()].filter((key) => pattern.test(key)));
    add("Other", [...left.keys()]);
    if (Array.isArray(losses))
        pane.append(dom.make("h3", {}, "Not handed over by the phone"), dom.make("ul", {class: "muted"}, losses.map((loss) =>
            dom.make("li", {}, dom.text("span", (loss.fields ?? []).map(words.label).join(", ") + ": " + loss.lost)))));
    pane.scrollTop = 0;
    return heading;
}
