// What is in the archive, as plots; each has its figures as a table beside it.
"use strict";

sections.statistics = {
    title: "Statistics",
    icon: "statistics",
    extra: ["messages", "contacts"],
    open(view, {messages, contacts}) {
        const page = dom.make("div", {class: "scroller page", role: "region", "aria-label": "Statistics", tabindex: "0"});
        view.append(page);
        page.append(parts.heading("Statistics"));
        const dark = window.matchMedia("(prefers-color-scheme: dark)");
        const drawn = [];

        // plot: {title, labels, shownLabels, series: [{name, values}], isHorizontal, unit}
        function add(plot) {
            const canvas = dom.make("canvas", {role: "img", "aria-label": plot.title + "; the figures stand in the table below"});
            const head = dom.make("tr", {}, dom.make("th", {scope: "col"}, plot.of), plot.series.map(({name}) => dom.make("th", {scope: "col"}, name)));
            const table = dom.make("details", {}, dom.make("summary", {}, "Figures"));
            table.addEventListener("toggle", () => table.append(dom.make("div", {class: "figures", tabindex: "0", role: "region", "aria-label": plot.title},
                dom.make("table", {}, dom.make("thead", {}, head), dom.make("tbody", {}, plot.labels.map((label, i) => dom.make("tr", {},
                    dom.text("th", label, {scope: "row"}), plot.series.map(({values}) => dom.make("td", {}, words.number(values[i]))))))))), {once: true});
            const frame = dom.make("div", {class: "plot" + (plot.isHorizontal ? " rows-" + Math.min(15, plot.labels.length) : "")}, canvas);
            page.append(dom.make("section", {class: "statistic"}, dom.make("h2", {}, plot.title), frame, table));
            drawn.push({plot, canvas});
        }
        function draw() {
            const style = getComputedStyle(document.documentElement);
            const colour = (name) => style.getPropertyValue(name).trim();
            Chart.defaults.color = colour("--muted");
            Chart.defaults.borderColor = colour("--line");
            Chart.defaults.font.family = getComputedStyle(document.body).fontFamily;
            Chart.defaults.animation = false;
            for (const one of drawn) {
                const {plot} = one;
                one.chart?.destroy();
                const counted = {beginAtZero: true, stacked: true, ticks: {precision: 0}};
                const named = {stacked: true, grid: {display: false}, ticks: {autoSkip: !plot.isHorizontal, maxRotation: 0}};
                one.chart = new Chart(one.canvas, {
                    type: "bar",
                    data: {
                        labels: plot.labels.map((label) => (label.length > 24 ? words.bare(label).slice(0, 23) + "…" : words.bare(label))),
                        datasets: plot.series.map(({name, values}, i) => ({label: name, data: values, maxBarThickness: 28, borderRadius: 3,
                            backgroundColor: colour(i === 0 ? "--plot-1" : "--plot-2")})),
                    },
                    options: {
                        indexAxis: plot.isHorizontal ? "y" : "x",
                        maintainAspectRatio: false,
                        plugins: {legend: {display: plot.series.length > 1, align: "end", labels: {boxWidth: 12, boxHeight: 12}}},
                        scales: plot.isHorizontal ? {x: counted, y: named} : {x: named, y: counted},
                    },
                });
            }
        }

        if (messages.length > 0) {
            add(messagesByMonth(messages));
            add(writtenToMost(messages));
            add(messagesByHour(messages));
        }
        if (contacts.length > 0) add(whatContactsHold(contacts));
        if (drawn.length === 0) page.append(parts.empty("Nothing to count", dom.make("p", {}, "The archive holds neither messages nor contacts.")));
        else {
            archive.loadLibrary("chart.min.js").then((isThere) => {
                if (!isThere || !window.Chart) {
                    for (const {canvas} of drawn) canvas.replaceWith(dom.make("p", {class: "muted"}, "The plot cannot be drawn: page/library is incomplete."));
                    return;
                }
                draw();
                dark.addEventListener("change", draw);
            });
        }
        return () => {};
    },
};

function twoSeries(count) {
    return [{name: "Received", values: Array(count).fill(0)}, {name: "Sent", values: Array(count).fill(0)}];
}

function messagesByMonth(messages) {
    const timed = messages.filter(({time}) => words.moment(time));
    const months = timed.map(({time}) => time.slice(0, 7)).sort();
    const number = (month) => Number(month.slice(0, 4)) * 12 + Number(month.slice(5)) - 1;
    // A clock that was never set may be decades off: then only months with messages are shown.
    const first = months.length > 0 ? number(months[0]) : 0, last = months.length > 0 ? number(months.at(-1)) : -1;
    const all = last - first < 600
        ? Array.from({length: last - first + 1}, (_, i) => String(Math.floor((first + i) / 12)).padStart(4, "0") + "-" + String((first + i) % 12 + 1).padStart(2, "0"))
        : [...new Set(months)];
    const places = new Map(all.map((month, i) => [month, i]));
    const series = twoSeries(all.length);
    for (const message of timed) ++series[conversations.isOutgoing(message) ? 1 : 0].values[places.get(message.time.slice(0, 7))];
    return {title: "Messages by month", of: "Month", labels: all.map((month) => words.month(month + "-01")), series};
}

function writtenToMost(messages) {
    const talks = conversations.of(messages).map((talk) => ({title: talk.title, received: talk.entries.filter(({message}) => !conversations.isOutgoing(message)).length, all: talk.entries.length}));
    talks.sort((a, b) => (b.all - b.received) - (a.all - a.received) || b.all - a.all);
    const most = talks.slice(0, 15);
    return {title: "People written to most", of: "With", isHorizontal: true, labels: most.map(({title}) => title),
        series: [{name: "Received", values: most.map(({received}) => received)}, {name: "Sent", values: most.map(({all, received}) => all - received)}]};
}

function messagesByHour(messages) {
    const series = twoSeries(24);
    for (const message of messages)
        if (words.moment(message.time)?.hasClock) ++series[conversations.isOutgoing(message) ? 1 : 0].values[Number(message.time.slice(11, 13)) % 24];
    return {title: "Messages by time of day", of: "Hour", labels: series[0].values.map((_, hour) => String(hour)), series};
}

function whatContactsHold(contacts) {
    const kinds = [
        ["Mobile number", /^mobile\d?$/], ["Other number", /^(phone|homePhone|workPhone|fax|pager)\d?$/], ["E-mail", /^email\d?$/],
        ["Address", /^(home|work)?(street|postcode|town|state|country)$/i], ["Birthday", /^birthday$/], ["Company", /^(company|jobTitle)$/],
        ["Picture", /^picture$/], ["Note", /^note\d?$/], ["Web page", /^web\d?$/],
    ];
    const counts = kinds.map(([, pattern]) => contacts.filter((contact) => Object.keys(contact).some((key) => pattern.test(key))).length);
    const order = [...kinds.keys()].sort((a, b) => counts[b] - counts[a]);
    return {title: "What contacts hold", of: "Kind", isHorizontal: true, labels: order.map((i) => kinds[i][0]),
        series: [{name: "Contacts", values: order.map((i) => counts[i])}]};
}
