// What the phone had and the archive has not, by name.
"use strict";

sections.losses = {
    title: "What is missing",
    icon: "losses",
    data: ["losses"],
    open(view, {losses}, info) {
        const page = dom.make("div", {class: "scroller page", role: "region", "aria-label": "What is missing", tabindex: "0"});
        view.append(page);
        page.append(parts.heading("What is missing"));
        const leftOut = Object.entries(info.sections ?? {}).filter(([, state]) => state.state === "left out").map(([name]) => name);
        if (leftOut.length > 0)
            page.append(dom.make("p", {class: "notice"}, dom.make("strong", {}, "Left out on request (--only): "), leftOut.join(", ") + "."));
        if (losses.length === 0) {
            page.append(parts.empty("Nothing is missing", dom.make("p", {}, leftOut.length > 0 ? "What was asked for is here, whole." : "All that the phone handed out is here.")));
            return () => {};
        }
        const groups = new Map();
        for (const loss of losses) {
            const key = [loss.section, loss.kind, loss.what].join("\n");
            if (!groups.has(key)) groups.set(key, {...loss, items: []});
            if (loss.item !== undefined) groups.get(key).items.push(loss.item);
        }
        const kinds = {unread: ["Could not be read", "The phone has it, and it is not in this archive."],
            lost: ["Has no place in the files", "The phone had more than the files here can hold."]};
        for (const [kind, [title, explanation]] of Object.entries(kinds)) {
            const ofKind = [...groups.values()].filter((group) => group.kind === kind);
            if (ofKind.length === 0) continue;
            page.append(dom.make("h2", {}, title), dom.make("p", {class: "muted"}, explanation), ...ofKind.map(lossGroup));
        }
        const others = [...groups.values()].filter((group) => !Object.hasOwn(kinds, group.kind));
        page.append(...others.map(lossGroup));
        return () => {};
    },
};

function lossGroup({section, what, items}) {
    const summary = [dom.make("span", {class: "badge"}, sections[section]?.title ?? words.bare(section ?? "")), " ", dom.text("span", what ?? "")];
    if (items.length === 0) return dom.make("p", {class: "loss"}, summary);
    const box = dom.make("div", {class: "loss-items scroller", tabindex: "0", role: "region", "aria-label": "Items"});
    const details = dom.make("details", {class: "loss"}, dom.make("summary", {}, summary, " ", dom.make("span", {class: "count"}, words.number(items.length))), box);
    details.addEventListener("toggle", () => new WindowedList({scroller: box, label: "Items", keys: false, height: 24,
        render: (item) => dom.text("div", item)}).show(items), {once: true});
    return details;
}
