// The pictures among the phone's files, the latest first.
"use strict";

sections.photos = {
    title: "Photos",
    icon: "photos",
    of: "files",
    what: "files",
    data: ["files"],
    open(view, {files}, info) {
        const state = info.sections?.files;
        const photos = files.filter((file) => file.kind === "file" && archive.url(file.file) && /\.(jpe?g|png|gif|bmp|webp)$/i.test(file.name));
        if (photos.length === 0) {
            view.append(parts.heading("Photos"), files.length > 0
                ? parts.empty("No pictures", dom.make("p", {}, "None of the phone’s files is a picture that a browser can show."))
                : parts.whyEmpty(state, "files"));
            return () => {};
        }
        photos.sort((a, b) => ((a.changed ?? "") < (b.changed ?? "") ? 1 : (a.changed ?? "") > (b.changed ?? "") ? -1 : words.compare(a.path, b.path)));
        const haystacks = new Map(photos.map((photo) => [photo, words.haystack([photo.path])]));
        const search = parts.search({label: "Search photos", onQuery: find});
        const scroller = dom.make("div", {class: "scroller"});
        view.append(parts.heading("Photos"), parts.notice(state, "files"), search.element, scroller);
        let shown = photos;
        const list = new WindowedList({scroller, label: "Photos", className: "gallery", perBlock: 60, height: 40, render: tile});

        function tile(photo, index) {
            const image = dom.make("img", {src: archive.url(photo.file), alt: "", loading: "lazy", decoding: "async"});
            image.addEventListener("error", () => image.replaceWith(dom.make("span", {class: "no-image"}, dom.icon("photos"))));
            return dom.make("div", {class: "photo" + (photo.onPhone === false ? " not-there" : "")},
                dom.make("button", {"aria-label": words.bare(photo.name) + (photo.changed ? ", " + words.day(photo.changed) : ""), onclick: () => showLarge(index)}, image),
                photo.onPhone === false ? dom.make("span", {class: "badge"}, "gone") : "");
        }
        function find(query) {
            const matches = words.matcher(query);
            shown = photos.filter((photo) => matches(haystacks.get(photo)));
            search.say(query === "" ? words.count(photos.length, "photo", "photos")
                : words.number(shown.length) + " of " + words.count(photos.length, "photo", "photos"));
            list.show(shown);
        }

        const picture = dom.make("img", {class: "large", alt: ""});
        const caption = dom.make("div", {class: "caption", "aria-live": "polite"});
        const button = (label, icon, onclick) => dom.make("button", {class: "round " + icon, "aria-label": label, onclick}, dom.icon(icon));
        const dialog = dom.make("dialog", {class: "light-box", "aria-label": "Photo"}, picture, caption,
            button("Previous photo", "back", () => showLarge(place - 1)), button("Next photo", "forward", () => showLarge(place + 1)),
            button("Close", "close", () => dialog.close()));
        view.append(dialog);
        let place = 0;
        function showLarge(index) {
            place = Math.min(shown.length - 1, Math.max(0, index));
            const photo = shown[place];
            picture.src = archive.url(photo.file);
            picture.alt = words.bare(photo.name);
            caption.replaceChildren(dom.text("strong", photo.name), dom.make("span", {},
                photo.changed ? [dom.time(photo.changed, words.dayAndClock(photo.changed)), " · "] : "", words.size(photo.size ?? 0), " · ",
                words.number(place + 1), " of ", words.number(shown.length)),
                dom.text("span", photo.path, {class: "path"}), dom.gone(photo),
                dom.make("a", {href: archive.url(photo.file), target: "_blank", rel: "noreferrer"}, "Open the file"));
            dialog.querySelector(".back").disabled = place === 0;
            dialog.querySelector(".forward").disabled = place === shown.length - 1;
            if (!dialog.open) dialog.showModal();
        }
        dialog.addEventListener("keydown", (event) => {
            const wanted = {ArrowLeft: place - 1, ArrowRight: place + 1, Home: 0, End: shown.length - 1}[event.key];
            if (wanted === undefined) return;
            event.preventDefault();
            showLarge(wanted);
        });
        dialog.addEventListener("click", (event) => {
            if (event.target === dialog) dialog.close();
        });
        dialog.addEventListener("close", () => list.focus(place));

        find("");
        return () => list.update();
    },
};
