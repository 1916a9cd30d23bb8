// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

const MATCHES_MAX = 100000;
const SLICE_MS = 12;

function patternOf(query) {
  return query.trim() ? new RegExp(query.trim().replace(/[.*+?^${}()|[\]\\]/g, "\\$&"), "gi") : null;
}

function countIn(text, pattern) {
  let number = 0;
  pattern.lastIndex = 0;
  while (number < MATCHES_MAX && pattern.test(text)) number++;
  return number;
}

function countInBlock(block, pattern) {
  return block.outputs.reduce((sum, output) => sum + countIn(output.text, pattern), countIn(block.name, pattern));
}

function searchTools() {
  const button = (text) => element("button", { type: "button" }, text);
  const tools = {
    input: element("input", { type: "search", id: "search", autocomplete: "off", spellcheck: "false", "aria-keyshortcuts": "/",
      "aria-describedby": "found" }),
    status: element("p", { id: "found", role: "status" }),
    previous: button("Previous"), next: button("Next"), unfold: button("Open all"), fold: button("Close all"),
    wrap: element("input", { type: "checkbox", id: "wrap" }),
  };
  tools.node = element("div", { class: "search", role: "search" },
    element("label", { for: "search" }, "Search the blocks ", element("kbd", { "aria-hidden": "true" }, "/")), tools.input,
    element("div", { class: "buttons" }, tools.previous, tools.next, tools.unfold, tools.fold,
      element("label", { for: "wrap" }, tools.wrap, " Wrap long lines")), tools.status);
  return tools;
}

/** Filters the blocks by what is typed, marks and counts it, and goes from one match to the next. */
class Search {
  constructor(blocks, tools) {
    Object.assign(this, { blocks, tools, run: 0, found: [], at: -1, total: 0 });
    tools.input.addEventListener("input", () => this.start());
    tools.input.addEventListener("keydown", (event) => this.key(event));
    tools.next.addEventListener("click", () => this.step(1));
    tools.previous.addEventListener("click", () => this.step(-1));
    tools.unfold.addEventListener("click", () => this.openAll());
    tools.fold.addEventListener("click", () => blocks.forEach((block) => { block.node.open = false; }));
    tools.wrap.addEventListener("change", () => document.body.classList.toggle("wrapped", tools.wrap.checked));
    document.addEventListener("keydown", (event) => this.shortcut(event));
    document.addEventListener("line-hidden", () => this.clear());
    this.showStatus(`${count(blocks.length, "block")}.`);
  }

  showStatus(text) {
    this.tools.status.textContent = text;
    this.tools.next.disabled = this.tools.previous.disabled = !this.total;
  }

  shortcut(event) {
    const typing = event.target.closest?.("input:not([type=checkbox]), textarea, select");
    if (event.key !== "/" || typing || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    this.tools.input.focus();
    this.tools.input.select();
  }

  key(event) {
    if (event.key === "Escape") {
      event.preventDefault();
      this.clear();
    } else if (event.key === "Enter") {
      event.preventDefault();
      this.step(event.shiftKey ? -1 : 1);
    }
  }

  clear() {
    this.tools.input.value = "";
    this.start();
  }

  /** Searches a few milliseconds at a time, so that the next key is never kept waiting. */
  async start() {
    const run = ++this.run;
    const pattern = patternOf(this.tools.input.value);
    Object.assign(this, { found: [], at: -1, total: 0 });
    document.getElementById("blocks").setAttribute("aria-busy", "true");
    let until = performance.now() + SLICE_MS;
    for (const block of this.blocks) {
      const matches = pattern ? countInBlock(block, pattern) : null;
      block.show(pattern, matches);
      if (matches) this.found.push({ block, first: this.total, matches });
      this.total += matches ?? 0;
      if (performance.now() < until) continue;
      await new Promise((resolve) => { setTimeout(resolve); });
      if (run !== this.run) return;
      until = performance.now() + SLICE_MS;
    }
    document.getElementById("blocks").removeAttribute("aria-busy");
    this.showStatus(pattern ? this.summary() : `${count(this.blocks.length, "block")}.`);
  }

  summary() {
    if (!this.total) return `No match in ${count(this.blocks.length, "block")}.`;
    return `${count(this.total, "match", "matches")} in ${this.found.length.toLocaleString("en")} of ${count(this.blocks.length, "block")}.`;
  }

  step(by) {
    if (!this.total) return;
    this.at = this.at < 0 && by < 0 ? this.total - 1 : (this.at + by + this.total) % this.total;
    const place = this.found.find(({ first, matches }) => this.at < first + matches);
    const mark = place.block.markAt(this.at - place.first);
    document.querySelector("mark.current")?.classList.remove("current");
    mark?.classList.add("current");
    (mark ?? place.block.node).scrollIntoView({ block: "center" });
    const [at, total] = [this.at + 1, this.total].map((number) => number.toLocaleString("en"));
    this.showStatus(`Match ${at} of ${total}, in ${shortened(place.block.name, 100)}.`);
  }

  openAll() {
    let characters = 0;
    for (const block of this.blocks.filter(({ node }) => !node.hidden)) {
      characters += block.outputs.reduce((sum, { text }) => sum + Math.min(text.length, PORTION_CHARACTERS), 0);
      if (characters > 10 * PORTION_CHARACTERS) {
        this.showStatus("Too much to open all of it; the first blocks are open.");
        return;
      }
      block.open();
    }
  }
}
