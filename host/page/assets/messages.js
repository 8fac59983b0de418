// Messages as talks.
"use strict";

sections.messages = {
    title: "Messages",
    icon: "messages",
    of: "messages",
    what: "messages",
    data: ["messages"],
    extra: ["contacts"],
    count: (info) => info.sections?.messages?.count,
    open(view, {messages, contacts}, info) {
        const state = info.sections?.messages;
        if (messages.length === 0) {
            view.append(parts.heading("Messages"), parts.whyEmpty(state, "messages"));
            return () => {};
        }
        const pictures = new Map(contacts.map((contact) => [contactName(contact), pictureOf(contact)]));
        const talks = conversations.of(messages);
        const entries = talks.flatMap((talk) => talk.entries)
            .sort((a, b) => ((a.message.time ?? "") < (b.message.time ?? "") ? 1 : -1));
        for (const talk of talks) talk.haystack = words.haystack([talk.title, ...talk.addresses]);
        for (const entry of entries) entry.haystack = words.fold(entry.message.text ?? "");

        const findTalks = words.finder(talks, (talk) => talk.haystack);
        const findMessages = words.finder(entries, (entry) => entry.haystack);

        const split = parts.split(view, "Conversation");
        const search = parts.search({label: "Search messages", onQuery: find});
        split.list.append(parts.heading("Messages"), parts.notice(state, "messages"), search.element, split.scroller);
        const list = new WindowedList({scroller: split.scroller, label: "Conversations", className: "rows", height: 68, render: row});
        const head = dom.make("div", {class: "talk-head"});
        const bubbles = dom.make("div", {class: "scroller", role: "region", "aria-label": "Messages of the conversation", tabindex: "0"});
        split.detail.classList.remove("scroller");
        split.detail.removeAttribute("tabindex");
        split.detail.classList.add("talk");
        const talkList = new WindowedList({scroller: bubbles, label: "Messages", className: "bubbles", keys: false, height: 70, render: bubble});
        let query = "";
        let shown = talks;
        let chosen, chosenEntry;

        function row(item) {
            const talk = item.conversation ?? item;
            const {message, index} = item.conversation ? item : talk.last;
            const mine = conversations.isOutgoing(message) ? "You: " : "";
            return dom.make("div", {class: "row"}, dom.make("a", {href: "#messages/" + talk.index + (item.conversation ? "/" + index : "")},
                parts.avatar(talk.title, pictures.get(talk.title)),
                dom.make("span", {class: "row-text"},
                    dom.make("span", {class: "row-line"}, dom.marked("span", talk.title, query, {class: "row-title"}),
                        dom.make("span", {class: "row-date"}, dom.time(message.time, words.day(message.time)))),
                    dom.make("span", {class: "row-line"},
                        dom.make("span", {class: "row-more"}, mine, dom.marked("bdi", snippet(message.text || "(no text)"), query)),
                        item.conversation ? "" : dom.make("span", {class: "count"}, words.number(talk.entries.length))))));
        }
        // A part of a text with the first of the words that are looked for.
        function snippet(text) {
            const word = query.toLowerCase().split(/\s+/)[0];
            const place = word ? text.toLowerCase().indexOf(word) : -1;
            return (place > 20 ? "… " + text.slice(text.lastIndexOf(" ", place - 8) + 1) : text).slice(0, 200);
        }

        function bubble({message, index}, place) {
            const before = talkList.items[place - 1]?.message;
            const isNewDay = (before?.time ?? "").slice(0, 10) !== (message.time ?? "").slice(0, 10) || place === 0;
            const remark = {waiting: "waiting in the outbox", draft: "draft"}[message.direction] ?? (message.direction ? "" : message.folder);
            const side = conversations.isOutgoing(message) ? "mine" : "theirs";
            return dom.make("div", {class: "message " + side},
                isNewDay ? dom.make("p", {class: "talk-day"}, message.time ? dom.time(message.time, words.dayLong(message.time)) : "no time") : "",
                dom.make("div", {class: "bubble" + (index === chosenEntry ? " chosen" : "") + (message.direction === "draft" ? " draft" : "")},
                    dom.make("span", {class: "unseen"}, side === "mine" ? "You: " : [dom.text("bdi", chosen.title), ": "]),
                    message.text ? dom.marked("p", message.text, query, {class: "prose"}) : dom.make("p", {class: "no-text"}, "(no text)"),
                    dom.make("p", {class: "bubble-time"}, remark ? [dom.text("bdi", remark), " "] : "", dom.time(message.time, words.clock(message.time)),
                        " ", dom.gone(message))));
        }

        function find(text) {
            query = text;
            if (text === "") {
                shown = talks;
                search.say(words.count(talks.length, "conversation", "conversations") + ", " + words.count(messages.length, "message", "messages"));
            } else {
                const people = findTalks(text), found = findMessages(text);
                shown = [...people, ...found];
                search.say((people.length > 0 ? words.count(people.length, "conversation", "conversations") + ", " : "") +
                    words.count(found.length, "message", "messages") + " found");
            }
            list.show(shown);
            mark();
        }
        function mark() {
            const place = shown.findIndex((item) => (item.conversation ? item.index === chosenEntry : item === chosen && chosenEntry === undefined));
            list.select(place < 0 ? undefined : place);
        }

        find("");
        split.detail.replaceChildren(dom.make("p", {class: "hint"}, "Choose a conversation."));
        return ([talk, entry]) => {
            const before = chosen;
            chosen = talks[talk];
            chosenEntry = entry === undefined ? undefined : Number(entry);
            split.open(chosen !== undefined);
            mark();
            list.update();
            if (!chosen) return;
            if (before !== chosen || chosenEntry !== undefined) {
                const heading = dom.text("h2", chosen.title, {tabindex: "-1"});
                const addresses = chosen.addresses.join(", ");
                head.replaceChildren(parts.backLink("#messages", "Messages"), parts.avatar(chosen.title, pictures.get(chosen.title)),
                    dom.make("div", {}, heading, addresses === chosen.title ? "" : dom.text("p", addresses, {class: "muted"})));
                if (head.parentElement !== split.detail) split.detail.replaceChildren(head, bubbles);
                talkList.show(chosen.entries);
                const place = chosen.entries.findIndex(({index}) => index === chosenEntry);
                talkList.reveal(place < 0 ? chosen.entries.length - 1 : place, place < 0 ? "end" : "center");
                if (split.isNarrow()) heading.focus();
            }
        };
    },
};
