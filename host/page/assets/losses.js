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
        const isAllHere = Object.values(info.sections ?? {}).every(({state}) => state === "complete");
        if (isAllHere && !losses.some(({kind}) => kind === "unread"))
            page.append(dom.make("p", {}, "All that the phone named is in the archive. Some details of it have no place in the formats here, or the phone does not hand them over."));
        const groups = new Map();
        for (const loss of losses) {
            // "Mobile, E-mail: whether ...": what is lost is the same, whichever fields it is lost of.
            const [, fields, sentence] = (loss.kind === "lost" && /^([^:]+): (.+)$/s.exec(loss.what)) || [undefined, "", loss.what];
            const key = [loss.section, loss.kind, sentence].join("\n");
            if (!groups.has(key)) groups.set(key, {...loss, what: sentence, items: []});
            if (loss.item !== undefined) groups.get(key).items.push({name: loss.item, fields});
        }
        const kinds = {unread: ["Could not be read", "The phone has it, and it is not in this archive."],
            lost: ["Details without a place", "What they belong to is in the archive."]};
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
    const summary = [dom.make("span", {class: "badge"}, sections[section]?.title ?? words.bare(section ?? "")), " ", dom.text("span", (what ?? "").replace(/^./u, (letter) => letter.toUpperCase()))];
    if (items.length === 0) return dom.make("p", {class: "loss"}, summary);
    const box = dom.make("div", {class: "loss-items scroller", tabindex: "0", role: "region", "aria-label": "Items"});
    const details = dom.make("details", {class: "loss"}, dom.make("summary", {}, summary, " ", dom.make("span", {class: "count"}, words.number(items.length))), box);
    details.addEventListener("toggle", () => new WindowedList({scroller: box, label: "Items", keys: false, height: 24,
        render: ({name, fields}) => dom.make("div", {}, dom.text("bdi", name), fields && [" – ", dom.text("bdi", fields, {class: "muted"})])}).show(items), {once: true});
    return details;
}
