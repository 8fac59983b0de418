// Words, numbers and dates for people, and looking for words.
"use strict";

const words = (() => {
    const locale = new Intl.DateTimeFormat().resolvedOptions().locale;
    const whole = new Intl.NumberFormat();
    const collator = new Intl.Collator(undefined, {numeric: true, sensitivity: "base"});

    // A moment as the data files write it, for Intl. What has no zone is the phone's own clock, which is shown
    // as it stands: both are reckoned in UTC, so that no change of clocks in the reader's zone moves it.
    function moment(iso) {
        const parts = /^(-?\d{4,6})-(\d\d)-(\d\d)(?:T(\d\d):(\d\d)(?::(\d\d))?(Z)?)?/.exec(iso ?? "");
        if (!parts) return undefined;
        const [, year, month, day, hour, minute, second, zone] = parts;
        const date = new Date(0);
        date.setUTCFullYear(Number(year), Number(month) - 1, Number(day));
        date.setUTCHours(Number(hour ?? 0), Number(minute ?? 0), Number(second ?? 0));
        return Number.isNaN(date.getTime()) ? undefined : {date, hasClock: hour !== undefined, isUtc: zone === "Z"};
    }

    const formats = new Map();
    function formatted(when, options) {
        const zone = when.isUtc ? "local" : "as it stands";
        const key = zone + JSON.stringify(options);
        if (!formats.has(key))
            formats.set(key, new Intl.DateTimeFormat(undefined, when.isUtc ? options : {...options, timeZone: "UTC"}));
        return formats.get(key).format(when.date);
    }
    function shown(iso, options) {
        const when = moment(iso);
        return when ? formatted(when, options) : (iso ?? "");
    }

    const dayLong = {weekday: "long", day: "numeric", month: "long", year: "numeric"};
    const day = {day: "numeric", month: "short", year: "numeric"};
    const clock = {hour: "numeric", minute: "2-digit"};

    const combining = /\p{M}+/gu;
    // Letter case, accents and the ways to write a letter do not count.
    function fold(text) {
        return text.normalize("NFKD").replace(combining, "").toLowerCase().replaceAll("ß", "ss");
    }

    return {
        locale,
        compare: collator.compare,
        moment,
        day: (iso) => shown(iso, day),
        dayLong: (iso) => shown(iso, dayLong),
        clock: (iso) => (moment(iso)?.hasClock ? shown(iso, clock) : ""),
        dayAndClock: (iso) => shown(iso, moment(iso)?.hasClock ? {...day, ...clock} : day),
        month: (iso) => shown(iso, {month: "long", year: "numeric"}),
        monthName: (iso) => shown(iso, {month: "long"}),
        weekday: (iso, length) => shown(iso, {weekday: length}),

        count: (number, one, many) => whole.format(number) + " " + (number === 1 ? one : many),
        number: (number) => whole.format(number),
        size(bytes) {
            const units = ["bytes", "KB", "MB", "GB", "TB"];
            let unit = 0;
            for (; bytes >= 1000 && unit + 1 < units.length; ++unit) bytes /= 1000;
            const digits = unit > 0 && bytes < 10 ? 1 : 0;
            return bytes.toLocaleString(undefined, {maximumFractionDigits: digits}) + " " + units[unit];
        },
        // "homePhone2": "Home phone 2".
        label(key) {
            const text = key.replace(/([a-z])([A-Z0-9])/g, "$1 $2").toLowerCase().replace(/^email/, "e-mail");
            return text.charAt(0).toUpperCase() + text.slice(1);
        },
        // For places that hold a bare text (titles, labels, plots): without marks that would turn what follows.
        bare: (text) => String(text).replace(/[\u0000-\u001f\u007f-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]+/g, " "),

        fold,
        // What a search looks in.
        haystack: (texts) => fold(texts.filter((text) => text).join("\n")),
        // A search through items that a query and its longer forms go through again and again: a letter more only looks
        // through what was found before.
        finder(items, haystackOf) {
            let before = "", found = items;
            return (query) => {
                const from = before !== "" && query.startsWith(before) ? found : items;
                const matches = words.matcher(query);
                before = query;
                found = from.filter((item) => matches(haystackOf(item)));
                return found;
            };
        },
        // True for a haystack that holds every word of the query.
        matcher(query) {
            const wanted = fold(query).split(/\s+/).filter((word) => word);
            return (haystack) => wanted.every((word) => haystack.includes(word));
        },
    };
})();
