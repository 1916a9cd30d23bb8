// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

const MARKS = {
  empty: "printed nothing", trimmed: "shortened before it was sent", cut: "cut", unread: "not understood",
  doubtful: "its beginning is in doubt",
};

/** A block, folded; its text is drawn when it is opened first. */
class Block {
  constructor({ id, name, line, outputs, marks }) {
    this.name = visible(name);
    this.line = line;
    this.outputs = outputs.filter(({ text }) => text !== null).map((output) => ({ ...output, text: visible(output.text) }));
    this.texts = null;
    this.pattern = null;
    this.title = element("span", { class: "name" });
    this.matches = element("span", { class: "matches" });
    const chips = marks.map((mark) => element("span", { class: `chip ${mark}` }, MARKS[mark] ?? mark));
    this.node = element("details", { id, class: "block" }, element("summary", {}, this.title, " ", chips,
      this.matches, element("span", { class: "where" }, `line\u00a0${line}`)));
    this.node.addEventListener("toggle", () => this.node.open && this.draw());
    this.markTitle();
  }

  markTitle() {
    this.title.replaceChildren();
    appendMarked(this.title, this.name.slice(0, SEGMENT_CHARACTERS), this.pattern);
  }

  draw() {
    if (!this.texts) {
      this.texts = this.outputs.map(({ text, line, title }) => new BlockText(text, line, `${title} of ${shortened(this.name, 80)}`));
      const body = this.texts.map((text, index) => [
        this.outputs[index].title === "Output" ? null : element("p", { class: "label" }, this.outputs[index].title), text.node]);
      this.node.append(element("div", { class: "body" }, body.length ? body : element("p", { class: "muted" }, "It printed nothing.")));
      this.drawn = undefined;
    }
    if (this.drawn !== this.pattern) this.texts.forEach((text) => text.mark(this.pattern));
    this.drawn = this.pattern;
  }

  /** Shows what a search found in it; null: there is no search. */
  show(pattern, matches) {
    this.pattern = matches ? pattern : null;
    this.node.hidden = matches === 0;
    this.matches.textContent = matches ? count(matches, "match", "matches") : "";
    this.markTitle();
    if (this.node.open) this.draw();
  }

  open() {
    this.node.open = true;
    this.draw();
  }

  /** The element of a line, the summary's if the line is none of an output. */
  reveal(line) {
    this.open();
    this.texts.forEach((text) => line >= text.firstLine && text.fillTo(line));
    return document.getElementById(`L${line}`) ?? this.node.querySelector("summary");
  }

  /** The mark of a number, after as many portions as that takes. */
  markAt(number) {
    this.open();
    for (;;) {
      const found = this.node.getElementsByTagName("mark")[number];
      const unfinished = this.texts.find((text) => !text.complete);
      if (found || !unfinished) return found;
      unfinished.fill();
    }
  }
}

function blocksOf(report) {
  const blocks = report.blocks.map((block) => new Block({
    id: `B${Number(block.index)}`, name: block.name, line: block.line, marks: block.marks,
    outputs: [{ title: "Output", text: block.stdout, line: block.stdoutLine },
      { title: "Error output", text: block.stderr, line: block.stderrLine }] }));
  const unread = report.unread.map((part, index) => new Block({
    id: `U${index}`, name: `In no block: ${part.why}`, line: part.line, marks: [],
    outputs: [{ title: "Text", text: part.text, line: part.line }] }));
  return [...blocks, ...unread].sort((one, other) => one.line - other.line);
}

function missingNote(missing) {
  if (!missing.length) return null;
  return element("details", { class: "block apart" },
    element("summary", {}, `${count(missing.length, "block")} of the plan ${missing.length === 1 ? "is" : "are"} not in this report`),
    element("ul", {}, missing.map((name) => element("li", {}, code(name, 200)))));
}

function blocksSection(report, blocks) {
  const tools = searchTools();
  const made = section("blocks", "All blocks", tools.node, missingNote(report.missing),
    element("div", { id: "block-list" }, blocks.map((block) => block.node)));
  new Search(blocks, tools);
  return made;
}
