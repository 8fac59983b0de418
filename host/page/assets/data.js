// The archive's data and files. A data file is a script that calls `archiveData`: a page that was opened from disk may
// load those, but read nothing else.
"use strict";

const archive = (() => {
    const arrived = new Map();
    const asked = new Map();

    const ownScript = /^page\/(data\/[a-z]+|library\/[a-z.]+)\.js$/;
    const policy = {
        createScriptURL(url) {
            if (!ownScript.test(url)) throw new TypeError("no script of the page: " + url);
            return url;
        },
    };
    const scripts = window.trustedTypes ? window.trustedTypes.createPolicy("archive-scripts", policy) : policy;

    // Resolves with whether the file was there.
    function loadScript(url) {
        return new Promise((done) => {
            const script = document.createElement("script");
            script.src = scripts.createScriptURL(url);
            script.addEventListener("load", () => done(true));
            script.addEventListener("error", () => done(false));
            document.head.append(script);
        });
    }

    return {
        receive: (name, value) => arrived.set(name, value),

        // What a data file holds; fails with a sentence for people.
        load(name) {
            if (!asked.has(name)) {
                const path = "page/data/" + name + ".js";
                asked.set(name, loadScript(path).then((isThere) => {
                    if (!isThere) throw new Error("The archive has no file “" + path + "”.");
                    if (!arrived.has(name)) throw new Error("The file “" + path + "” is damaged.");
                    return arrived.get(name);
                }));
            }
            return asked.get(name);
        },
        // The same; an empty array where it is missing.
        loadOptional: (name) => archive.load(name).catch(() => []),
        loadLibrary(file) {
            const path = "page/library/" + file;
            if (!asked.has(path)) asked.set(path, loadScript(path));
            return asked.get(path);
        },

        // Where a file of the archive is, none for a path that would lead out of it.
        url(path) {
            const parts = typeof path === "string" ? path.split("/") : [""];
            if (parts.some((part) => part === "" || part === "." || part === "..")) return undefined;
            return parts.map((part) => encodeURIComponent(part.replace(/\p{Cs}/gu, "\ufffd"))).join("/");
        },
    };
})();

function archiveData(name, value) {
    archive.receive(name, value);
}
