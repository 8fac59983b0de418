// Building the page. A text from the phone is text whatever it contains: nothing here takes markup, and every such
// text stands in an element of its own, whose direction is the text's own and ends with it.
"use strict";

const dom = (() => {
    // An element with attributes (functions listen: "onclick") and children; texts become text nodes.
    function make(tag, attributes = {}, ...children) {
        const element = document.createElement(tag);
        for (const [name, value] of Object.entries(attributes)) {
            if (value === undefined || value === false) continue;
            if (typeof value === "function") element.addEventListener(name.slice(2), value);
            else element.setAttribute(name, value === true ? "" : value);
        }
        element.append(...children.flat(Infinity).filter((child) => child !== undefined && child !== ""));
        return element;
    }

    return {
        make,
        // A text from the phone.
        text: (tag, text, attributes = {}) => make(tag, {...attributes, dir: "auto"}, String(text)),
        // The same, with the words of a query marked where they stand as they are written.
        marked(tag, text, query, attributes = {}) {
            const element = make(tag, {...attributes, dir: "auto"});
            const lower = text.toLowerCase();
            const wanted = query.toLowerCase().split(/\s+/).filter((word) => word);
            let from = 0;
            while (lower.length === text.length && from < text.length) {
                let next;
                for (const word of wanted) {
                    const place = lower.indexOf(word, from);
                    if (place >= 0 && (!next || place < next.place)) next = {place, length: word.length};
                }
                if (!next) break;
                element.append(text.slice(from, next.place));
                element.append(make("mark", {}, text.slice(next.place, next.place + next.length)));
                from = next.place + next.length;
            }
            element.append(text.slice(from));
            return element;
        },
        // A date or time in the reader's own form, which may be another language than the page's.
        time: (iso, shown) => (shown ? make("time", {datetime: iso, lang: words.locale}, shown) : ""),
        icon(name) {
            const space = "http://www.w3.org/2000/svg";
            const icon = document.createElementNS(space, "svg");
            icon.setAttribute("class", "icon");
            icon.setAttribute("aria-hidden", "true");
            const use = document.createElementNS(space, "use");
            use.setAttribute("href", "#icon-" + name);
            icon.append(use);
            return icon;
        },
        // What marks an item that the phone no longer has.
        gone(item) {
            if (item.onPhone !== false) return "";
            if (!item.goneSince) return make("span", {class: "gone"}, "no longer on the phone");
            return make("span", {class: "gone"}, "no longer on the phone since ",
                dom.time(item.goneSince, words.day(item.goneSince)));
        },
    };
})();
