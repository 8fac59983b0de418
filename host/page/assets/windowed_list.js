// A list of any length of which only what is near the view is in the document.
//
// The items lie in blocks of equal count. The blocks near the view are in the document, between two fillers as high as
// those before and after them: as high as they were when they were seen, or as blocks are on the whole. Items may be of
// different heights and stand in columns.
//
// With `keys` the items are reached like a single control: Tab enters the list at one of them, the arrow keys, Home, End
// and the page keys go to the others.
"use strict";

class WindowedList {
    // scroller: what scrolls; the list is put into it (or into `parent`, which stands in the scroller).
    // render(item, index): an element; with `keys` its first link or button gets the focus.
    // label: what the list is called. height: about as high is an item, in pixels.
    constructor({scroller, parent = scroller, render, label, className = "", keys = true, perBlock = 20, height = 60}) {
        this.scroller = scroller;
        this.render = render;
        this.keys = keys;
        this.perBlock = perBlock;
        this.heightPerItem = height;
        this.items = [];
        this.blocks = new Map();  // those in the document, by number
        this.heights = [];        // of each block that was seen
        this.current = 0;
        this.selected = undefined;
        this.before = dom.make("div", {role: "presentation"});
        this.after = dom.make("div", {role: "presentation"});
        this.element = dom.make("div", {class: "list " + className, role: "list", "aria-label": label, tabindex: "-1"});
        parent.append(this.element);
        const later = () => {
            this.isAsked ||= requestAnimationFrame(() => {
                this.isAsked = 0;
                this.update();
            });
        };
        scroller.addEventListener("scroll", later, {passive: true});
        new ResizeObserver(later).observe(scroller);
        if (keys) {
            this.element.addEventListener("keydown", (event) => this.onKey(event));
            this.element.addEventListener("focusin", (event) => {
                const index = this.indexOf(event.target);
                if (index !== undefined) this.setCurrent(index);
            });
        }
    }

    show(items) {
        this.items = items;
        this.current = 0;
        this.selected = undefined;
        this.heights = Array(Math.ceil(items.length / this.perBlock));
        this.blocks.clear();
        this.element.replaceChildren(this.before, this.after);
        this.setFillers();
        this.scroller.scrollTop = 0;
        this.update();
    }

    // Puts what is in view and a view's height around it into the document, and takes out what is far.
    update() {
        const height = this.scroller.clientHeight;
        if (height === 0 || this.items.length === 0 || this.element.hidden) return;
        const list = this.element.getBoundingClientRect();
        if (this.width !== list.width) {
            this.width = list.width;
            this.heights.fill(undefined);
            for (const [number, element] of this.blocks) this.measure(number, element);
        }
        // What is put in may turn out higher or lower than it was taken for.
        for (let pass = 0, isStable = false; pass < 5 && !isStable; ++pass) {
            const top = this.scroller.getBoundingClientRect().top - this.element.getBoundingClientRect().top;
            isStable = !this.putIn(this.blockAt(top - height / 2), this.blockAt(top + 1.5 * height));
        }
        if (this.keys) this.setCurrent(this.elementOf(this.current) ? this.current : this.firstInView());
    }

    // The blocks from one to another are those in the document; true when that was not so.
    putIn(first, last) {
        let isChanged = false;
        for (const [number, element] of this.blocks)
            if (number < first || number > last) {
                const hadFocus = element.contains(document.activeElement);
                this.measure(number, element);
                element.remove();
                this.blocks.delete(number);
                if (hadFocus) this.element.focus({preventScroll: true});
                isChanged = true;
            }
        const added = [];
        for (let number = last, next = this.after; number >= first; --number) {
            if (!this.blocks.has(number)) {
                this.blocks.set(number, this.filled(number));
                next.before(this.blocks.get(number));
                added.push(number);
            }
            next = this.blocks.get(number);
        }
        for (const number of added) this.measure(number, this.blocks.get(number));
        if (isChanged || added.length > 0) this.setFillers();
        return isChanged || added.length > 0;
    }

    filled(number) {
        const block = dom.make("div", {class: "block", role: "presentation"});
        const first = number * this.perBlock;
        for (let index = first; index < Math.min(first + this.perBlock, this.items.length); ++index) {
            const item = this.render(this.items[index], index);
            item.setAttribute("role", "listitem");
            item.setAttribute("aria-setsize", this.items.length);
            item.setAttribute("aria-posinset", index + 1);
            if (this.keys) (item.querySelector("a, button") ?? item).tabIndex = -1;
            if (index === this.selected) this.markSelected(item, true);
            block.append(item);
        }
        return block;
    }

    measure(number, element) {
        const height = element.offsetHeight;
        if (height === 0) return;
        if (this.heights.every((known) => known === undefined)) this.heightPerItem = height / element.children.length;
        this.heights[number] = height;
    }

    heightOf(number) {
        return this.heights[number] ?? this.perBlock * this.heightPerItem;
    }

    // How high all blocks are before one.
    offsetOf(number) {
        let sum = 0;
        for (let i = 0; i < number; ++i) sum += this.heightOf(i);
        return sum;
    }

    // The block at a height in the list, or that next to it.
    blockAt(y) {
        let number = 0;
        for (let sum = this.heightOf(0); sum <= y && number + 1 < this.heights.length; sum += this.heightOf(number)) ++number;
        return number;
    }

    setFillers() {
        const numbers = [...this.blocks.keys()];
        const count = this.heights.length;
        const first = numbers.length > 0 ? Math.min(...numbers) : count, last = numbers.length > 0 ? Math.max(...numbers) : count;
        this.before.style.height = this.offsetOf(first) + "px";
        this.after.style.height = this.offsetOf(count) - this.offsetOf(Math.min(count, last + 1)) + "px";
    }

    // Brings an item into the view.
    reveal(index, place = "nearest") {
        if (!this.elementOf(index)) {
            const list = this.element.getBoundingClientRect().top - this.scroller.getBoundingClientRect().top + this.scroller.scrollTop;
            this.scroller.scrollTop = list + this.offsetOf(Math.floor(index / this.perBlock));
            this.update();
        }
        for (let pass = 0; pass < 2; ++pass) {  // what is put in around it moves it
            this.elementOf(index)?.scrollIntoView({block: place});
            this.update();
        }
    }

    focus(index = this.current) {
        if (this.items.length === 0) return;
        this.setCurrent(index);
        this.reveal(index);
        this.linkOf(index)?.focus({preventScroll: true});
    }

    // Marks one item as the one that is shown beside the list.
    select(index) {
        const mark = (value) => {
            const element = this.selected !== undefined && this.elementOf(this.selected);
            if (element) this.markSelected(element, value);
        };
        mark(false);
        this.selected = index;
        mark(true);
    }

    markSelected(element, value) {
        element.classList.toggle("selected", value);
        const link = element.querySelector("a, button") ?? element;
        if (value) link.setAttribute("aria-current", "true");
        else link.removeAttribute("aria-current");
    }

    elementOf(index) {
        return this.blocks.get(Math.floor(index / this.perBlock))?.children[index % this.perBlock];
    }

    linkOf(index) {
        return this.elementOf(index)?.querySelector("a, button");
    }

    indexOf(element) {
        const item = element.closest("[role=listitem]");
        return item && this.element.contains(item) ? Number(item.getAttribute("aria-posinset")) - 1 : undefined;
    }

    // The one that Tab enters at.
    setCurrent(index) {
        const before = this.linkOf(this.current);
        if (before) before.tabIndex = -1;
        this.current = index;
        const link = this.linkOf(index);
        if (link) link.tabIndex = 0;
    }

    firstInView() {
        const top = this.scroller.getBoundingClientRect().top;
        const inView = [...this.blocks.keys()].sort((a, b) => a - b).flatMap((number) => [...this.blocks.get(number).children])
            .find((item) => item.getBoundingClientRect().bottom > top);
        return inView ? this.indexOf(inView) : 0;
    }

    columns() {
        const items = this.blocks.values().next().value.children;
        let count = 1;
        while (count < items.length && items[count].offsetTop === items[0].offsetTop) ++count;
        return count;
    }

    onKey(event) {
        const isInList = event.target === this.element || this.indexOf(event.target) !== undefined;
        if (event.altKey || event.ctrlKey || event.metaKey || !isInList || this.items.length === 0) return;
        const columns = this.columns();
        const rows = Math.floor(this.scroller.clientHeight / (this.heightPerItem * columns));
        const page = columns * Math.max(1, rows - 1);
        const last = this.items.length - 1;
        const steps = {
            ArrowDown: columns, ArrowUp: -columns, PageDown: page, PageUp: -page,
            Home: -this.current, End: last - this.current,
            ...(columns > 1 ? {ArrowRight: 1, ArrowLeft: -1} : {}),
        };
        const step = steps[event.key];
        if (step === undefined) return;
        event.preventDefault();
        this.focus(Math.min(last, Math.max(0, this.current + step)));
    }
}
