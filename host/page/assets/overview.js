// The phone, what of it is in the archive, and when that was made.
"use strict";

sections.overview = {
    title: "Overview",
    icon: "overview",
    open(view, data, info) {
        const phone = info.phone ?? {};
        const runs = info.runs ?? [];
        const states = info.sections ?? {};
        const page = dom.make("div", {class: "scroller page", role: "region", "aria-label": "Overview", tabindex: "0"});
        view.append(page);

        const last = runs.at(-1);
        page.append(dom.make("div", {class: "hero"}, dom.make("div", {class: "hero-icon"}, dom.icon("overview")), dom.make("div", {},
            dom.text("h1", phone.name || phone.model || "A phone’s archive"),
            last ? dom.make("p", {class: "muted"}, "Archived ", dom.time(last.started, words.dayAndClock(last.started)),
                last.finished ? "" : " – interrupted, not all of it is here") : "")));

        const kinds = {contacts: ["contact", "contacts"], calendar: ["entry", "entries"], messages: ["message", "messages"],
            notes: ["note", "notes"], files: ["file", "files"]};
        page.append(dom.make("ul", {class: "tiles"}, Object.entries(kinds).map(([name, [one, many]]) => {
            const state = states[name];
            if (!state) return [];
            const remarks = {"left out": "left out", failed: "could not be read", "not supported": "not on this phone", partial: "not all could be read"};
            return dom.make("li", {}, dom.make("a", {class: "tile", href: "#" + name}, dom.icon(sections[name].icon),
                dom.make("span", {class: "tile-number"}, words.number(state.count ?? 0)),
                dom.make("span", {class: "tile-name"}, state.count === 1 ? one : many),
                remarks[state.state] ? dom.make("span", {class: "tile-remark " + (state.state === "left out" ? "" : "warn")}, remarks[state.state]) : "",
                state.gone ? dom.make("span", {class: "tile-remark"}, words.number(state.gone) + " no longer on the phone") : ""));
        })));

        page.append(dom.make("h2", {}, "The phone"));
        const texts = (object, except) => Object.entries(object)
            .filter(([key, value]) => !except.includes(key) && ["string", "number"].includes(typeof value) && value !== "");
        page.append(dom.make("dl", {class: "fields"}, texts(phone, []).map(([key, value]) =>
            [dom.make("dt", {}, words.label(key)), dom.text("dd", value)])));

        if (runs.length > 0) {
            page.append(dom.make("h2", {}, runs.length === 1 ? "The archive" : "The archive’s runs"));
            page.append(dom.make("ul", {class: "runs"}, runs.toReversed().map((run) => dom.make("li", {},
                dom.time(run.started, words.dayAndClock(run.started)),
                run.finished ? "" : dom.make("span", {class: "badge warn"}, "interrupted"),
                texts(run, ["started", "finished", ...(run.finished ? [] : ["result"])]).map(([key, value]) => [" · ", words.label(key), " ", dom.text("bdi", value)])))));
        }
        page.append(dom.make("p", {class: "muted"}, "All that is shown here lies beside this page in open formats: contacts as " +
            "vCard, calendars as iCalendar, messages and notes as text and JSON, files as they are. ",
            dom.make("code", {}, "sha256sum -c SHA256SUMS"), " tells whether anything has changed since."));
        return () => {};
    },
};
