// What the sections of the page share.
"use strict";

// By name, in the order of the navigation. A section has
//   title, icon (a symbol of index.html)
//   of: what of the archive it shows, a member of "sections" of "archive"; what: that in words
//   data: the data files it cannot do without; extra: those it can
//   count(info): what the navigation shows beside the title
//   open(view, data, info): builds the section, once; gives a function that is called with each path in it, the
//   parts of the address after the section's name. `data` has a member for each data file, `info` is "archive".
const sections = {};

const parts = {
    heading: (title, ...beside) => dom.make("div", {class: "heading"}, dom.make("h1", {tabindex: "-1"}, title), beside),

    // A field to search with; `onQuery` is called with what stands in it. `say` tells how much was found.
    search({label, onQuery}) {
        const input = dom.make("input", {type: "search", placeholder: label, "aria-label": label, autocomplete: "off",
            spellcheck: "false", oninput: () => onQuery(input.value.trim())});
        input.addEventListener("keydown", (event) => {
            if (event.key !== "Escape" || input.value === "") return;
            event.preventDefault();
            input.value = "";
            onQuery("");
        });
        const found = dom.make("p", {class: "found", role: "status"});
        return {
            element: dom.make("div", {class: "search"}, dom.make("div", {class: "field"}, dom.icon("search"), input), found),
            input,
            say: (...what) => found.replaceChildren(...what),
        };
    },

    // A list beside what is chosen in it; on a small screen one at a time.
    split(view, detailLabel) {
        const list = dom.make("div", {class: "pane-list"});
        const scroller = dom.make("div", {class: "scroller"});
        const detail = dom.make("div", {class: "pane-detail scroller", role: "region", "aria-label": detailLabel, tabindex: "0"});
        const split = dom.make("div", {class: "split"}, list, detail);
        view.append(split);
        return {
            list, scroller, detail,
            isNarrow: () => getComputedStyle(list).display === "none" || getComputedStyle(detail).display === "none",
            open(isOpen) {
                split.classList.toggle("open", isOpen);
            },
        };
    },
    backLink: (href, text) => dom.make("a", {class: "back", href}, dom.icon("back"), text),

    empty: (title, ...more) => dom.make("div", {class: "empty"}, dom.make("h2", {}, title), more),

    // Why a section holds nothing.
    whyEmpty(state, what) {
        const plural = what.charAt(0).toUpperCase() + what.slice(1);
        const reason = state?.reason ? dom.text("p", state.reason) : "";
        switch (state?.state) {
            case "left out":
                return parts.empty(plural + " were left out", dom.make("p", {}, "This archive was made without them (--only)."));
            case "failed":
                return parts.empty(plural + " could not be read", reason);
            case "not supported":
                return parts.empty("The phone does not hand out " + what, reason);
            case "partial":
                return parts.empty("Nothing of the phone’s " + what + " could be read", reason);
            default:
                return parts.empty("No " + what, dom.make("p", {}, "There were none on the phone."));
        }
    },
    // The same for a section whose data file could not be loaded.
    whyMissing: (state, what, error) => (["left out", "failed", "not supported"].includes(state?.state)
        ? parts.whyEmpty(state, what) : parts.empty("This part cannot be shown", dom.make("p", {}, error.message))),
    // A line above a section of which something is missing.
    notice(state, what) {
        const isWhole = !state || state.state === "complete" || state.state === "left out" || state.count === 0;
        if (isWhole) return "";
        const missing = (state.listed ?? 0) - (state.count - (state.gone ?? 0));
        const text = missing > 0 ? words.number(missing) + " of " + words.number(state.listed) + " " + what + " are missing."
                                 : "Not all " + what + " could be read.";
        return dom.make("p", {class: "notice"}, dom.make("strong", {}, text), " ",
            state.reason ? dom.text("span", state.reason) : "", " ", dom.make("a", {href: "#losses"}, "What is missing"));
    },

    // A row of choices of which one holds: radio buttons that look like tabs.
    choice(label, options, onChange) {
        const name = "choice-" + label.toLowerCase().replace(/\W+/g, "-");
        const inputs = options.map(([value]) => dom.make("input", {type: "radio", name, value, id: name + "-" + value,
            onchange: () => onChange(value)}));
        const element = dom.make("fieldset", {class: "choice"}, dom.make("legend", {class: "unseen"}, label),
            options.map(([value, text], i) => [inputs[i], dom.make("label", {for: name + "-" + value}, text)]));
        return {
            element,
            set: (value) => inputs.forEach((input) => { input.checked = input.value === value; }),
        };
    },

    select: (label, onChange) => dom.make("select", {"aria-label": label, onchange: (event) => onChange(event.target.value)}),

    // The picture of a person, or the first letters of the name.
    avatar(name, picture) {
        const url = picture && archive.url(picture);
        const letters = name.split(/\s+/).map((word) => /[\p{L}\p{N}]/u.exec(word)?.[0] ?? "").filter((letter) => letter);
        const initials = [letters[0], letters.length > 1 ? letters.at(-1) : ""].join("").toUpperCase();
        let hue = 0;
        for (const letter of name) hue = (hue * 31 + letter.codePointAt(0)) % 6;
        const element = dom.make("span", {class: "avatar hue-" + hue, "aria-hidden": "true"}, initials || "·");
        if (url) {
            const image = dom.make("img", {src: url, alt: "", loading: "lazy", decoding: "async"});
            image.addEventListener("error", () => image.remove());
            element.append(image);
        }
        return element;
    },
};
