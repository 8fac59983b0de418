// A list of any length of which only what is near the view is in the document.
//
// The items lie in blocks of equal count. A block near the view is filled, any other is as high as it was or as blocks
// are on the whole, and empty. Items may be of different heights and stand in columns.
//
// With `link` the items are reached like a single control: Tab enters the list at one of them, the arrow keys, Home,
// End and the page keys go to the others.
"use strict";

class WindowedList {
    // scroller: what scrolls; the list is put into it (or into `parent`, which stands in the scroller).
    // render(item, index): an element; with `keys` the one that gets the focus, an `a` or `button`.
    // label: what the list is called.
    constructor({scroller, parent = scroller, render, label, className = "", keys = true, perBlock = 40, height = 60}) {
        this.scroller = scroller;
        this.render = render;
        this.keys = keys;
        this.perBlock = perBlock;
        this.heightPerItem = height;
        this.isMeasured = false;
        this.items = [];
        this.blocks = [];
        this.current = 0;
        this.selected = undefined;
        this.element = dom.make("div", {class: "list " + className, role: "list", "aria-label": label});
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

    show(items, {keepPlace = false} = {}) {
        this.items = items;
        this.current = 0;
        this.selected = undefined;
        this.blocks = [];
        for (let first = 0; first < items.length; first += this.perBlock)
            this.blocks.push({first, count: Math.min(this.perBlock, items.length - first), isFilled: false,
                element: dom.make("div", {class: "block", role: "presentation"})});
        this.setHeights(this.blocks);
        this.element.replaceChildren(...this.blocks.map((block) => block.element));
        if (!keepPlace) this.scroller.scrollTop = 0;
        this.update();
    }

    // Fills what is in view and a view's height around it, and empties what is far.
    update() {
        const height = this.scroller.clientHeight;
        if (height === 0 || this.blocks.length === 0) return;
        const list = this.element.getBoundingClientRect();
        const origin = list.top - this.scroller.getBoundingClientRect().top;  // of the list, as seen from the view
        if (this.width !== list.width) {
            this.width = list.width;
            this.setHeights(this.blocks.filter((block) => !block.isFilled));
        }
        const top = -origin - height, end = -origin + 2 * height;
        const near = new Set();
        for (let i = this.blockAt(top); i < this.blocks.length && this.blocks[i].element.offsetTop < end; ++i) {
            this.fill(this.blocks[i]);
            near.add(this.blocks[i]);
        }
        for (const block of this.blocks)
            if (block.isFilled && !near.has(block) && !block.element.contains(document.activeElement)) this.empty(block);
        if (this.keys) this.setCurrent(this.elementOf(this.current) ? this.current : this.firstInView());
    }

    // Brings an item into the view.
    reveal(index, block = "nearest") {
        for (let pass = 0; pass < 2; ++pass) {  // what is filled around it moves it
            this.fill(this.blocks[Math.floor(index / this.perBlock)]);
            this.elementOf(index).scrollIntoView({block});
            this.update();
        }
        return this.elementOf(index);
    }

    focus(index = this.current) {
        if (this.items.length === 0) return;
        this.setCurrent(index);
        this.reveal(index);
        this.linkOf(index).focus({preventScroll: true});
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

    // The first block that ends below `y`, in the list's own coordinates.
    blockAt(y) {
        let low = 0, high = this.blocks.length - 1;
        while (low < high) {
            const middle = (low + high) >> 1;
            const element = this.blocks[middle].element;
            if (element.offsetTop + element.offsetHeight <= y) low = middle + 1;
            else high = middle;
        }
        return low;
    }

    fill(block) {
        if (block.isFilled) return;
        block.isFilled = true;
        block.element.style.height = "";
        const elements = [];
        for (let index = block.first; index < block.first + block.count; ++index) {
            const item = this.render(this.items[index], index);
            item.setAttribute("role", "listitem");
            item.setAttribute("aria-setsize", this.items.length);
            item.setAttribute("aria-posinset", index + 1);
            if (this.keys) (item.querySelector("a, button") ?? item).tabIndex = -1;
            if (index === this.selected) this.markSelected(item, true);
            elements.push(item);
        }
        block.element.replaceChildren(...elements);
        block.height = undefined;
        if (!this.isMeasured && block.element.offsetHeight > 0) {
            this.isMeasured = true;
            this.heightPerItem = block.element.offsetHeight / block.count;
            this.setHeights(this.blocks.filter((other) => !other.isFilled));
        }
    }

    empty(block) {
        block.height = block.element.offsetHeight;
        block.isFilled = false;
        block.element.replaceChildren();
        this.setHeights([block]);
    }

    setHeights(blocks) {
        for (const block of blocks)
            block.element.style.height = (block.height ?? Math.round(block.count * this.heightPerItem)) + "px";
    }

    elementOf(index) {
        const block = this.blocks[Math.floor(index / this.perBlock)];
        return block?.isFilled ? block.element.children[index - block.first] : undefined;
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
        for (const block of this.blocks)
            if (block.isFilled)
                for (let i = 0; i < block.count; ++i)
                    if (block.element.children[i].getBoundingClientRect().bottom > top) return block.first + i;
        return 0;
    }

    columns() {
        const items = this.elementOf(this.current).parentElement.children;
        let count = 1;
        while (count < items.length && items[count].offsetTop === items[0].offsetTop) ++count;
        return count;
    }

    onKey(event) {
        if (event.altKey || event.ctrlKey || event.metaKey || this.indexOf(event.target) === undefined) return;
        const columns = this.columns();
        const page = columns * Math.max(1, Math.floor(this.scroller.clientHeight / event.target.offsetHeight) - 1);
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
