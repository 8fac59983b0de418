// The sections and the address: "#contacts/12" is the section "contacts" with the path "12".
"use strict";

(() => {
    const main = document.getElementById("main");
    const opened = new Map();  // by section: its view, and a promise of its function for paths
    const links = new Map();
    let phoneName = "A phone’s archive";

    function addressParts() {
        const text = location.hash.slice(1);
        const parts = text.split("/").map((part) => {
            try {
                return decodeURIComponent(part);
            } catch {
                return part;
            }
        });
        return Object.hasOwn(sections, parts[0]) ? parts : ["overview"];
    }

    function open(name, info) {
        const section = sections[name];
        const view = dom.make("section", {class: "view view-" + name, "data-section": name, "aria-label": section.title});
        const waiting = dom.make("p", {class: "waiting", role: "status"}, "Loading …");
        view.append(waiting);
        main.append(view);
        const load = async () => {
            const data = {};
            for (const file of section.data ?? []) data[file] = await archive.load(file);
            for (const file of section.extra ?? []) data[file] = await archive.loadOptional(file);
            waiting.remove();
            return section.open(view, data, info);
        };
        const go = load().catch((error) => {
            view.replaceChildren(parts.heading(section.title), parts.whyMissing(info.sections?.[section.of], section.what, error));
            return () => {};
        });
        opened.set(name, {view, go});
    }

    async function show(info) {
        const [name, ...path] = addressParts();
        if (!opened.has(name)) open(name, info);
        for (const [other, {view}] of opened) view.hidden = other !== name;
        for (const [other, link] of links)
            if (other === name) link.setAttribute("aria-current", "page");
            else link.removeAttribute("aria-current");
        links.get(name).scrollIntoView({block: "nearest", inline: "center"});
        document.title = sections[name].title + " – " + words.bare(phoneName);
        const go = await opened.get(name).go;
        if (addressParts()[0] === name) go(path);
        main.dataset.shown = name;
        performance.mark("shown " + name);
    }

    function addLinks(info) {
        const list = document.getElementById("sections");
        for (const [name, section] of Object.entries(sections)) {
            const count = section.count?.(info);
            const link = dom.make("a", {href: "#" + name}, dom.icon(section.icon), dom.make("span", {}, section.title),
                count ? dom.make("span", {class: "count"}, words.number(count)) : "");
            links.set(name, link);
            list.append(dom.make("li", {}, link));
        }
    }

    async function start() {
        let info = {};
        try {
            info = await archive.load("archive");
        } catch (error) {
            main.append(parts.empty("This archive cannot be shown", dom.make("p", {}, error.message),
                dom.make("p", {}, "“ovphone verify” names what is missing or changed in an archive.")));
            return;
        }
        phoneName = info.phone?.name || info.phone?.model || phoneName;
        const fill = (id, text) => document.getElementById(id).replaceChildren(dom.text("bdi", text));
        fill("phone-name", phoneName);
        if (info.phone?.model && info.phone.model !== phoneName) fill("phone-model", info.phone.model);
        addLinks(info);
        window.addEventListener("hashchange", () => show(info));
        await show(info);
    }

    document.getElementById("skip").addEventListener("click", (event) => {
        event.preventDefault();
        main.focus();
    });
    start();
})();
