// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A block's text may be megabytes in one line or in many, so it is drawn a portion at a time.
const SEGMENT_CHARACTERS = 8000;
const PORTION_CHARACTERS = 400000;
const PORTION_LINES = 4000;
const CHUNK_LINES = 100;

/** The lines of a text; a very long one in segments, of which the first has the number. */
function* segments(text, firstLine) {
  let number = firstLine;
  for (let start = 0; start < text.length; number++) {
    const found = text.indexOf("\n", start);
    const end = found < 0 ? text.length : found;
    let from = start;
    do {
      const to = Math.min(end, from + SEGMENT_CHARACTERS);
      yield { number, text: text.slice(from, to), follows: from > start };
      from = to;
    } while (from < end);
    start = end + 1;
  }
}

/** Puts a text into a parent, what the pattern finds in it as marks. */
function appendMarked(parent, text, pattern) {
  let from = 0;
  for (const match of pattern ? text.matchAll(pattern) : []) {
    parent.append(text.slice(from, match.index), element("mark", {}, match[0]));
    from = match.index + match[0].length;
  }
  parent.append(text.slice(from));
}

/** One output of a block as numbered lines. */
class BlockText {
  constructor(text, firstLine, title) {
    this.text = text;
    this.firstLine = firstLine;
    this.pre = element("pre", { class: "output" });
    this.more = element("button", { type: "button", hidden: "" }, "Show more of this output");
    this.more.addEventListener("click", () => this.fill());
    this.node = element("div", { class: "part" },
      element("div", { class: "scroll", tabindex: "0", role: "group", "aria-label": title }, this.pre), this.more);
    this.restart(null);
  }

  restart(pattern) {
    this.pattern = pattern;
    this.left = segments(this.text, this.firstLine);
    this.next = this.left.next();
    this.chunk = null;
    this.pre.replaceChildren();
    this.shown = 0;
  }

  get complete() {
    return this.next.done;
  }

  /** Draws the next portion. */
  fill() {
    let characters = 0;
    let lines = 0;
    for (; !this.complete && characters < PORTION_CHARACTERS && lines < PORTION_LINES; lines++) {
      characters += this.next.value.text.length;
      this.draw(this.next.value);
      this.next = this.left.next();
    }
    this.more.hidden = this.complete;
  }

  draw(segment) {
    if (!this.chunk || this.chunk.childElementCount >= CHUNK_LINES) {
      this.chunk = element("span", { class: "chunk" });
      this.pre.append(this.chunk);
    }
    const line = segment.follows ? element("span", { class: "line" })
      : element("span", { class: "line", id: `L${segment.number}`, "data-number": segment.number });
    appendMarked(line, segment.text, this.pattern);
    this.chunk.append(line, "\n");
    this.shown = segment.number;
  }

  fillTo(line) {
    while (!this.complete && this.shown < line) this.fill();
  }

  /** Draws as much as before with other marks. */
  mark(pattern) {
    const { shown } = this;
    this.restart(pattern);
    this.fill();
    this.fillTo(shown);
  }
}
