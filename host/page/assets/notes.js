// The phone's notes.
"use strict";

sections.notes = {
    title: "Notes",
    icon: "notes",
    of: "notes",
    what: "notes",
    data: ["notes"],
    count: (info) => info.sections?.notes?.count,
    open(view, {notes}, info) {
        const state = info.sections?.notes;
        if (notes.length === 0) {
            view.append(parts.heading("Notes"), parts.whyEmpty(state, "notes"));
            return () => {};
        }
        const haystacks = notes.map((note) => words.haystack([note.text]));
        const search = parts.search({label: "Search notes", onQuery: find});
        const scroller = dom.make("div", {class: "scroller", role: "region", "aria-label": "Notes", tabindex: "0"});
        view.append(parts.heading("Notes"), parts.notice(state, "notes"), search.element, scroller);
        let query = "";
        const list = new WindowedList({scroller, label: "Notes", className: "cards", keys: false, perBlock: 30, height: 100,
            render: (note) => dom.make("div", {class: "note"},
                note.text.trim() === "" ? dom.make("p", {class: "muted"}, "(empty)") : dom.marked("p", note.text, query, {class: "prose"}), dom.gone(note))});
        function find(text) {
            query = text;
            const matches = words.matcher(text);
            const shown = notes.filter((_, i) => matches(haystacks[i]));
            search.say(text === "" ? words.count(notes.length, "note", "notes")
                : words.number(shown.length) + " of " + words.count(notes.length, "note", "notes"));
            list.show(shown);
        }
        find("");
        return () => list.update();
    },
};
