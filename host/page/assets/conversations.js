// Messages by whom they are with.
"use strict";

const conversations = (() => {
    // What those with the same people have in common, where the data does not say it.
    function keyOf(message) {
        if (message.conversation !== undefined) return String(message.conversation);
        const addresses = message.addresses ?? [];
        const people = addresses.map((address, i) => message.names?.[i] || address.replace(/[\s()/.-]/g, "").replace(/^00/, "+"));
        return people.sort().join("\n");
    }

    function titleOf(message) {
        const people = (message.addresses ?? []).map((address, i) => message.names?.[i] || address);
        return people.join(", ") || message.names?.join(", ") || "(nobody)";
    }

    return {
        isNamed: (message) => (message.names ?? []).some((name) => name),
        isOutgoing: (message) => ["sent", "waiting", "draft"].includes(message.direction),

        // The one with the latest message first; in each the oldest message first, those without a time before all
        // others.
        of(messages) {
            const all = new Map();
            messages.forEach((message, index) => {
                const key = keyOf(message);
                if (!all.has(key)) all.set(key, {entries: []});
                all.get(key).entries.push({message, index});
            });
            const time = ({message}) => message.time ?? "";
            const before = (a, b) => (a < b ? -1 : a > b ? 1 : 0);
            const list = [...all.values()];
            for (const one of list) {
                one.entries.sort((a, b) => before(time(a), time(b)) || a.index - b.index);
                one.last = one.entries.at(-1);
                const named = one.entries.findLast(({message}) => conversations.isNamed(message)) ?? one.last;
                one.title = titleOf(named.message);
                one.addresses = [...new Set(one.entries.flatMap(({message}) => message.addresses ?? []))];
            }
            list.sort((a, b) => before(time(b.last), time(a.last)));
            list.forEach((one, index) => {
                one.index = index;
                for (const entry of one.entries) entry.conversation = one;
            });
            return list;
        },
    };
})();
