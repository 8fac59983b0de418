// When the calendar's entries take place, and how they read.
"use strict";

const calendarEntries = (() => {
    const dayMs = 24 * 60 * 60 * 1000;
    const longest = 366;  // days that one entry is shown on

    const dayOf = (iso) => iso.slice(0, 10);
    const at = (iso) => words.moment(iso)?.date.getTime();
    const dayText = (ms) => new Date(ms).toISOString().slice(0, 10);
    const addDays = (day, count) => dayText(at(day) + count * dayMs);
    const beginOf = (entry) => entry.start ?? entry.due;

    // How many days it goes on after its first. What ends at midnight does not go on into the new day.
    function furtherDays(entry) {
        const start = at(entry.start), end = at(entry.end);
        if (start === undefined || end === undefined || end <= start) return 0;
        return Math.min(longest, Math.floor((end - 1 - at(dayOf(entry.start))) / dayMs));
    }

    const isDate = (iso) => /^\d{4}-\d\d-\d\d/.test(iso);
    const inOrder = (a, b) => (a.day < b.day ? -1 : a.day > b.day ? 1 : a.start < b.start ? -1 : a.start > b.start ? 1 : 0);

    // What takes place when, by month. An occurrence is {entry, start, day}, with "goesOn" on the further days of one that
    // takes several. A phone may have hundreds of thousands: they are put in order when a month is looked at.
    class Occurrences {
        constructor(entries) {
            this.months = new Map();
            this.sorted = new Set();
            for (const entry of entries) {
                const further = furtherDays(entry);
                for (const start of entry.occurrences ?? [beginOf(entry)]) {
                    if (!isDate(start)) continue;
                    const day = dayOf(start);
                    this.add({entry, start, day});
                    for (let i = 1; i <= further; ++i) this.add({entry, start, day: addDays(day, i), goesOn: true});
                }
            }
            const months = [...this.months.keys()].sort();
            this.firstMonth = months[0];
            this.lastMonth = months.at(-1);
        }

        add(occurrence) {
            const month = occurrence.day.slice(0, 7);
            const known = this.months.get(month);
            if (known) known.push(occurrence);
            else this.months.set(month, [occurrence]);
        }

        // In order.
        inMonth(month) {
            const all = this.months.get(month) ?? [];
            if (!this.sorted.has(month)) all.sort(inOrder);
            this.sorted.add(month);
            return all;
        }
        inYear(year) {
            return Array.from({length: 12}, (_, i) => this.inMonth(year + "-" + String(i + 1).padStart(2, "0"))).flat().filter(({goesOn}) => !goesOn);
        }
    }

    // The month in which most entries begin that do not repeat, of several the last: "2008-07".
    function busiestMonth(entries) {
        const counts = new Map();
        for (const entry of entries) {
            const begin = beginOf(entry);
            if (begin && !entry.rule && words.moment(begin)) counts.set(begin.slice(0, 7), (counts.get(begin.slice(0, 7)) ?? 0) + 1);
        }
        const most = Math.max(...counts.values());
        return [...counts].filter(([, count]) => count === most).map(([month]) => month).sort().at(-1);
    }

    function timesOf({entry, start, goesOn}) {
        if (entry.type === "to-do") return [entry.done ? "done" : "to do"];
        if (entry.type === "birthday") return ["birthday"];
        if (goesOn) return ["goes on"];
        const from = words.clock(start);
        if (from === "") return ["all day"];
        const to = entry.end && entry.end !== entry.start ? words.clock(entry.end) : "";
        return [dom.time(start, from), to ? "–" : "", dom.time(entry.end, to)];
    }

    // "W2 MO TH 20081231": "every 2 weeks until 31 Dec 2008".
    function repeats(rule) {
        const [, unit, step, rest] = /^([DWMY])[A-Z]*(\d*)(.*)$/.exec(rule) ?? [];
        if (!unit) return "repeats";
        const name = {D: "day", W: "week", M: "month", Y: "year"}[unit];
        const until = /\b(\d{4})(\d\d)(\d\d)\b/.exec(rest);
        return "every " + (Number(step) > 1 ? step + " " + name + "s" : name) +
            (until ? " until " + words.day(until.slice(1).join("-")) : "");
    }

    // "alarm 10 minutes before".
    function alarmOf(entry) {
        const begin = at(beginOf(entry)), alarm = at(entry.alarm);
        if (begin === undefined || alarm === undefined) return undefined;
        const minutes = (begin - alarm) / 60000;
        if (minutes === 0) return "alarm when it begins";
        const [unit, of] = minutes % 1440 === 0 ? ["day", 1440] : minutes % 60 === 0 ? ["hour", 60] : ["minute", 1];
        if (minutes > 0 && (of > 1 || minutes < 120)) return "alarm " + words.count(minutes / of, unit, unit + "s") + " before";
        return ["alarm ", entry.rule ? dom.time(entry.alarm, words.clock(entry.alarm)) : dom.time(entry.alarm, words.dayAndClock(entry.alarm))];
    }

    function ageOf({entry, day}) {
        const age = entry.type === "birthday" && entry.birthYear ? Number(day.slice(0, 4)) - entry.birthYear : 0;
        return age > 0 ? " (" + age + ")" : "";
    }

    return {
        Occurrences, dayOf, addDays, beginOf, busiestMonth,
        title: (entry) => entry.summary || "(no title)",
        // All of an entry, as it takes place on a day.
        card(occurrence, colour) {
            const {entry} = occurrence;
            const priority = {1: "high priority", 3: "low priority"}[entry.priority];
            const further = [entry.calendar && dom.text("bdi", entry.calendar), entry.rule && entry.type !== "birthday" && repeats(entry.rule),
                priority, alarmOf(entry)].filter((part) => part);
            return dom.make("article", {class: "entry colour-" + colour + (entry.done ? " done" : "")},
                dom.make("p", {class: "entry-time"}, timesOf(occurrence)),
                dom.make("h3", {}, dom.text("bdi", calendarEntries.title(entry)), ageOf(occurrence)),
                entry.location ? dom.text("p", entry.location, {class: "entry-place"}) : "",
                entry.description ? dom.text("p", entry.description, {class: "prose"}) : "",
                dom.make("p", {class: "entry-more"}, further.map((part, i) => [i > 0 ? " · " : "", part])),
                dom.gone(entry));
        },
    };
})();
