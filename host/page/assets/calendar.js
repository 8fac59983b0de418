// The calendar: a month's sheet, a year as an agenda, and what is to do.
"use strict";

sections.calendar = {
    title: "Calendar",
    icon: "calendar",
    of: "calendar",
    what: "calendar entries",
    data: ["calendar"],
    count: (info) => info.sections?.calendar?.count,
    open(view, {calendar: entries}, info) {
        const {addDays, beginOf, card, title} = calendarEntries;
        const state = info.sections?.calendar;
        if (entries.length === 0) {
            view.append(parts.heading("Calendar"), parts.whyEmpty(state, "calendar entries"));
            return () => {};
        }
        const occurrences = new calendarEntries.Occurrences(entries);
        let days = new Map();  // of the month that is shown: what takes place on each day
        const toDos = entries.filter((entry) => entry.type === "to-do")
            .sort((a, b) => Number(a.done ?? false) - Number(b.done ?? false) || (a.due ?? "9").localeCompare(b.due ?? "9"));
        for (const entry of entries)
            entry.haystack = words.haystack([entry.summary, entry.location, entry.description, entry.calendar]);
        const calendars = [...new Set(entries.map((entry) => entry.calendar))];
        const colourOf = (entry) => calendars.indexOf(entry.calendar) % 6;

        const firstYear = Number(occurrences.firstMonth?.slice(0, 4) ?? new Date().getFullYear());
        const lastYear = Number(occurrences.lastMonth?.slice(0, 4) ?? firstYear);
        let month = calendarEntries.busiestMonth(entries) ?? occurrences.lastMonth ?? firstYear + "-01";
        let day;
        let mode = "month";

        const choice = parts.choice("View", [["month", "Month"], ["agenda", "Agenda"], ["to-dos", "To-dos"]], (value) => {
            mode = value;
            show();
        });
        const search = parts.search({label: "Search calendar", onQuery: find});
        const previous = dom.make("button", {class: "round", "aria-label": "Earlier", onclick: () => step(-1)}, dom.icon("back"));
        const next = dom.make("button", {class: "round", "aria-label": "Later", onclick: () => step(1)}, dom.icon("forward"));
        const monthSelect = parts.select("Month", (value) => goTo(month.slice(0, 5) + value));
        for (let i = 1; i <= 12; ++i) {
            const number = String(i).padStart(2, "0");
            monthSelect.append(dom.make("option", {value: number, lang: words.locale}, words.monthName("2000-" + number + "-01")));
        }
        const yearSelect = parts.select("Year", (value) => goTo(value + month.slice(4)));
        for (let year = firstYear; year <= lastYear; ++year)
            yearSelect.append(dom.make("option", {value: String(year).padStart(4, "0")}, String(year)));
        const when = dom.make("div", {class: "when"}, previous, monthSelect, yearSelect, next);
        const sheet = dom.make("div", {class: "sheet"});
        const dayPane = dom.make("div", {class: "day-entries scroller", role: "region", "aria-label": "The day’s entries", "aria-live": "polite", tabindex: "0"});
        const monthView = dom.make("div", {class: "month"}, sheet, dayPane);
        const listView = dom.make("div", {class: "scroller list-view", role: "region", "aria-label": "Entries", tabindex: "0"});
        view.append(parts.heading("Calendar", choice.element), parts.notice(state, "entries"),
            dom.make("div", {class: "tools"}, when, search.element), monthView, listView);
        const list = new WindowedList({scroller: listView, label: "Entries", className: "agenda", keys: false, height: 80, render: agendaRow});
        const found = new WindowedList({scroller: listView, label: "Entries found", className: "rows", height: 60, render: foundRow});

        let shown = [];
        function agendaRow(item, place) {
            const isFirst = item.day !== undefined && (place === 0 || shown[place - 1].day !== item.day);
            return dom.make("div", {class: "agenda-row" + (isFirst ? " first" : "")},
                dom.make("div", {class: "agenda-day"}, isFirst ? dom.time(item.day, words.dayLong(item.day)) : ""),
                card(item, colourOf(item.entry)));
        }
        function foundRow(entry) {
            const begin = beginOf(entry);
            return dom.make("div", {class: "row"}, dom.make("a", {href: "#calendar/" + (begin ? calendarEntries.dayOf(begin) : "to-dos"),
                onclick: () => {
                    search.input.value = "";
                    find("");
                    reveal(begin);
                }}, dom.make("span", {class: "row-text"}, dom.marked("span", title(entry), search.input.value, {class: "row-title"}),
                dom.make("span", {class: "row-more"}, begin ? dom.time(begin, words.dayAndClock(begin)) : "no date", " ",
                    dom.text("bdi", entry.location ?? "")), dom.gone(entry))));
        }

        function find(query) {
            if (query === "") {
                search.say();
                show();
                return;
            }
            const matches = words.matcher(query);
            shown = entries.filter((entry) => matches(entry.haystack));
            search.say(words.number(shown.length) + " of " + words.count(entries.length, "entry", "entries"));
            showPart("found");
            found.show(shown);
        }

        function showPart(part) {
            monthView.hidden = part !== "month";
            listView.hidden = part === "month";
            list.element.hidden = part === "found";
            found.element.hidden = part !== "found";
            when.hidden = part === "to-dos" || part === "found";
            monthSelect.hidden = part !== "month";
        }
        function show() {
            if (search.input.value.trim() !== "") return;
            choice.set(mode);
            showPart(mode);
            monthSelect.value = month.slice(5);
            yearSelect.value = month.slice(0, 4);
            if (mode === "month") {
                showMonth();
            } else if (mode === "agenda") {
                shown = occurrences.inYear(month.slice(0, 4));
                list.show(shown);
                const place = shown.findIndex((one) => one.day >= month);
                if (place > 0) list.reveal(place, "start");
                search.say(words.count(shown.length, "entry", "entries") + " in " + month.slice(0, 4));
            } else {
                shown = toDos.map((entry) => ({entry, start: entry.due, day: entry.due && calendarEntries.dayOf(entry.due)}));
                list.show(shown);
                search.say(words.count(toDos.length, "to-do", "to-dos"));
            }
        }

        function step(direction) {
            if (mode === "agenda") {
                goTo(String(Number(month.slice(0, 4)) + direction).padStart(4, "0") + month.slice(4));
                return;
            }
            const first = new Date(month + "-01T00:00:00Z");
            first.setUTCMonth(first.getUTCMonth() + direction);
            goTo(first.toISOString().slice(0, 7));
        }
        function goTo(wanted) {
            const year = Number(wanted.slice(0, 4));
            if (year < firstYear || year > lastYear) return;
            month = wanted;
            day = undefined;
            show();
        }
        function reveal(iso) {
            mode = iso ? "month" : "to-dos";
            if (iso) {
                month = iso.slice(0, 7);
                day = calendarEntries.dayOf(iso);
            }
            show();
        }

        function showMonth() {
            days = new Map();
            for (const one of occurrences.inMonth(month)) days.get(one.day)?.push(one) ?? days.set(one.day, [one]);
            const locale = new Intl.Locale(words.locale);
            const firstWeekday = ((locale.getWeekInfo?.() ?? locale.weekInfo)?.firstDay ?? 1) % 7;
            const first = month + "-01";
            const weekday = words.moment(first).date.getUTCDay();
            let one = addDays(first, -((weekday - firstWeekday + 7) % 7));
            const heads = Array.from({length: 7}, (_, i) => {
                const name = addDays(one, i);
                return dom.make("th", {scope: "col", lang: words.locale}, dom.make("abbr", {title: words.weekday(name, "long")}, words.weekday(name, "short")));
            });
            if (!day) day = days.keys().next().value ?? first;
            const rows = [];
            do {
                const cells = [];
                for (let i = 0; i < 7; ++i, one = addDays(one, 1)) cells.push(cell(one));
                rows.push(dom.make("tr", {}, cells));
            } while (one.startsWith(month));
            sheet.replaceChildren(dom.make("table", {class: "days", "aria-label": words.month(first), onkeydown: onKey},
                dom.make("thead", {}, dom.make("tr", {}, heads)), dom.make("tbody", {}, rows)));
            showDay();
        }
        function cell(date) {
            if (!date.startsWith(month)) return dom.make("td", {class: "other"});
            const all = days.get(date) ?? [];
            const most = 3;
            const lines = all.slice(0, all.length > most ? most - 1 : most).map((one) => dom.make("span", {class: "line colour-" + colourOf(one.entry) + (one.entry.done ? " done" : "")},
                one.goesOn || one.entry.type === "birthday" ? "" : dom.make("span", {class: "line-time"}, words.clock(one.start)), dom.text("bdi", title(one.entry))));
            if (all.length > most) lines.push(dom.make("span", {class: "line more"}, "+" + (all.length - most + 1) + " more"));
            return dom.make("td", {}, dom.make("button", {class: "day", "data-day": date, tabindex: date === day ? "0" : "-1",
                "aria-pressed": String(date === day), "aria-label": words.dayLong(date) + ", " + words.count(all.length, "entry", "entries"),
                onclick: () => choose(date)}, dom.make("span", {class: "day-number"}, String(Number(date.slice(8)))), lines));
        }
        function choose(date) {
            const before = sheet.querySelector("[aria-pressed=true]");
            day = date;
            const button = sheet.querySelector("[data-day='" + date + "']");
            for (const [element, value] of [[before, false], [button, true]]) {
                element?.setAttribute("aria-pressed", String(value));
                if (element) element.tabIndex = value ? 0 : -1;
            }
            showDay();
        }
        function showDay() {
            const all = days.get(day) ?? [];
            dayPane.replaceChildren(dom.make("h2", {}, dom.time(day, words.dayLong(day))),
                ...all.map((one) => card(one, colourOf(one.entry))), all.length === 0 ? dom.make("p", {class: "muted"}, "Nothing on this day.") : "");
            dayPane.scrollTop = 0;
        }
        function onKey(event) {
            const steps = {ArrowLeft: -1, ArrowRight: 1, ArrowUp: -7, ArrowDown: 7};
            let wanted;
            if (steps[event.key]) wanted = addDays(day, steps[event.key]);
            else if (event.key === "Home") wanted = month + "-01";
            else if (event.key === "End") wanted = addDays(addDays(month + "-01", 31).slice(0, 8) + "01", -1);
            else if (event.key === "PageUp" || event.key === "PageDown") {
                event.preventDefault();
                step(event.key === "PageUp" ? -1 : 1);
            } else return;
            event.preventDefault();
            if (wanted) {
                if (Number(wanted.slice(0, 4)) < firstYear || Number(wanted.slice(0, 4)) > lastYear) return;
                if (wanted.startsWith(month)) choose(wanted);
                else {
                    month = wanted.slice(0, 7);
                    day = wanted;
                    show();
                }
            }
            sheet.querySelector("[data-day='" + day + "']")?.focus();
        }

        show();
        return ([path]) => {
            if (path === "to-dos") reveal(undefined);
            else if (path && words.moment(path)) reveal(path);
            else (mode === "month" ? undefined : list.update());
        };
    },
};
