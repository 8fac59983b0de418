// The phone's files, folder by folder.
"use strict";

sections.files = {
    title: "Files",
    icon: "files",
    of: "files",
    what: "files",
    data: ["files"],
    count: (info) => info.sections?.files?.count,
    open(view, {files}, info) {
        const state = info.sections?.files;
        if (files.length === 0) {
            view.append(parts.heading("Files"), parts.whyEmpty(state, "files"));
            return () => {};
        }
        // Kinds that a browser would run, not show.
        const active = /\.(x?html?|shtml?|mht(ml)?|svgz?|xml|xsl|swf|js)$/i;

        const folders = new Map([["", {path: "", name: "Phone", kind: "folder", entries: []}]]);
        function folderAt(path) {
            if (folders.has(path)) return folders.get(path);
            const cut = path.lastIndexOf("/");
            const folder = {path, name: path.slice(cut + 1), kind: "folder", entries: []};
            folders.set(path, folder);
            folderAt(cut < 0 ? "" : path.slice(0, cut)).entries.push(folder);
            return folder;
        }
        const plain = [];
        for (const entry of files) {
            if (entry.kind === "folder" || entry.kind === "drive") {
                Object.assign(folderAt(entry.path), entry);
            } else {
                const cut = entry.path.lastIndexOf("/");
                folderAt(cut < 0 ? "" : entry.path.slice(0, cut)).entries.push(entry);
                plain.push(entry);
            }
        }
        const isFolder = (entry) => entry.kind !== "file" && entry.entries !== undefined;
        for (const folder of folders.values())
            folder.entries.sort((a, b) => Number(isFolder(b)) - Number(isFolder(a)) || words.compare(a.name, b.name));
        for (const entry of plain) entry.haystack = words.fold(entry.path);

        const search = parts.search({label: "Search files", onQuery: find});
        const trail = dom.make("nav", {class: "trail", "aria-label": "Folder"});
        const scroller = dom.make("div", {class: "scroller"});
        view.append(parts.heading("Files"), parts.notice(state, "files"), search.element, trail, scroller);
        const list = new WindowedList({scroller, label: "Files", className: "rows files", height: 48, render: row});
        let folder = folders.get("");
        let query = "";

        const address = (path) => "#files" + (path === "" ? "" : "/" + path.split("/").map((part) => encodeURIComponent(part.replace(/\p{Cs}/gu, "\ufffd"))).join("/"));
        const titleOf = (entry) => entry.name + (entry.label ? " (" + entry.label + ")" : "");
        function row(entry) {
            if (isFolder(entry)) {
                return dom.make("div", {class: "row"}, dom.make("a", {href: address(entry.path)}, dom.icon("files"), dom.text("span", titleOf(entry), {class: "row-title"}),
                    dom.make("span", {class: "file-size"}, words.count(entry.entries.length, "item", "items")), dom.gone(entry)));
            }
            const url = entry.file && archive.url(entry.file);
            const remark = entry.reason ?? (!url ? "not in the archive" : active.test(entry.name) ? "in the archive as " + entry.file : "");
            const link = url && !active.test(entry.name) ? {href: url, target: "_blank", rel: "noreferrer"} : {class: "no-link"};
            return dom.make("div", {class: "row"}, dom.make("a", link, dom.icon("file"),
                dom.make("span", {class: "row-text"}, dom.marked("span", query === "" ? entry.name : entry.path, query, {class: "row-title"}),
                    remark ? dom.text("span", remark, {class: "row-more" + (url && !entry.reason ? "" : " warn")}) : "", dom.gone(entry)),
                dom.make("span", {class: "file-date"}, dom.time(entry.changed, words.day(entry.changed))),
                dom.make("span", {class: "file-size"}, words.size(entry.size ?? 0))),
            (entry.replaced ?? []).map((old) => dom.make("a", {class: "earlier", href: archive.url(old.file), target: "_blank", rel: "noreferrer"},
                "earlier version ", dom.time(old.changed, words.dayAndClock(old.changed)))));
        }
        function find(text) {
            query = text;
            trail.hidden = text !== "";
            if (text === "") {
                showFolder();
                return;
            }
            const matches = words.matcher(text);
            const shown = plain.filter((entry) => matches(entry.haystack));
            search.say(words.number(shown.length) + " of " + words.count(plain.length, "file", "files"));
            list.show(shown);
        }
        function showFolder() {
            const names = folder.path === "" ? [] : folder.path.split("/");
            trail.replaceChildren(dom.make("ol", {}, [folders.get(""), ...names.map((_, i) => folders.get(names.slice(0, i + 1).join("/")))]
                .map((one) => dom.make("li", {}, dom.text("a", titleOf(one), {href: address(one.path), "aria-current": one === folder ? "page" : undefined})))));
            const bytes = folder.entries.reduce((sum, entry) => sum + (entry.size ?? 0), 0);
            search.say(words.count(folder.entries.length, "item", "items"), bytes > 0 ? ", " + words.size(bytes) : "");
            list.show(folder.entries);
        }
        find("");
        return (path) => {
            const wanted = folders.get(path.join("/")) ?? folders.get("");
            if (wanted === folder && query === "") {
                list.update();
                return;
            }
            const hadFocus = scroller.contains(document.activeElement);
            folder = wanted;
            search.input.value = "";
            find("");
            if (hadFocus || document.activeElement === document.body) list.focus(0);
        };
    },
};
