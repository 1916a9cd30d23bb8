// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

"use strict";

// Every element of the page is made here, and every text of it passes through visible(): what a report says becomes text,
// never markup and never the address of a link.

// Characters that are not seen, or that change the order or the look of other text; a tab and the end of a line are meant.
const UNSEEN = /[\0-\x08\x0b-\x1f\x7f-\x9f\p{Cf}\p{Cs}\p{Zl}\p{Zp}\p{DI}]/gu;

function visible(text) {
  return String(text).replace(UNSEEN, (character) => {
    const code = character.codePointAt(0);
    if (code < 0x20) return String.fromCodePoint(0x2400 + code);
    if (code === 0x7f) return "\u2421";
    if (code >= 0xd800 && code <= 0xdfff) return "\ufffd";
    return `\\u{${code.toString(16)}}`;
  });
}

function shortened(text, charactersMax = 400) {
  const all = Array.from(String(text).slice(0, 2 * charactersMax + 2));
  return all.length > charactersMax ? all.slice(0, charactersMax).join("") + " …" : all.join("");
}

function filled(node, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value !== null && value !== undefined && value !== false) node.setAttribute(name, visible(value));
  }
  for (const child of children.flat(Infinity)) {
    if (child === null || child === undefined || child === "") continue;
    node.append(child instanceof Node ? child : document.createTextNode(visible(child)));
  }
  return node;
}

function element(name, attributes = {}, ...children) {
  return filled(document.createElement(name), attributes, children);
}

function drawing(name, attributes = {}, ...children) {
  return filled(document.createElementNS("http://www.w3.org/2000/svg", name), attributes, children);
}

/** Text from the report, whose direction stays its own. */
function reported(text, charactersMax) {
  return element("bdi", {}, shortened(text, charactersMax));
}

function code(text, charactersMax) {
  return element("code", {}, reported(text, charactersMax));
}

/** Leads to a line of the report, whose block opens. */
function lineLink(line) {
  return Number.isInteger(line) ? element("a", { href: `#L${line}`, class: "line-link" }, `line\u00a0${line}`) : "";
}

function section(id, title, ...children) {
  return element("section", { id, "aria-labelledby": `${id}-title` },
    element("h2", { id: `${id}-title` }, title), ...children);
}

function count(number, word, words = `${word}s`) {
  return `${number.toLocaleString("en")} ${number === 1 ? word : words}`;
}

function milliseconds(value) {
  return value === null ? "–" : `${value.toFixed(value < 100 ? 1 : 0)}\u00a0ms`;
}

function bytes(number) {
  const units = ["B", "KiB", "MiB", "GiB"];
  const power = Math.min(units.length - 1, Math.floor(Math.log2(Math.max(1, number)) / 10));
  return `${(number / 1024 ** power).toFixed(power ? 1 : 0)}\u00a0${units[power]}`;
}

const SIGNS = {
  problem: "M5 1h6l4 4v6l-4 4H5l-4-4V5z M5.5 5.5l5 5 M10.5 5.5l-5 5",
  warning: "M8 1.5 15 14.5H1z M8 6v4 M8 12v.6",
  note: "M8 1a7 7 0 1 0 .01 0z M8 7v4.5 M8 4.4v.6",
  clear: "M8 1a7 7 0 1 0 .01 0z M4.8 8.2l2.3 2.3 4.2-4.6",
};
const SEVERITIES = { problem: "Problem", warning: "Warning", note: "Note", clear: "Nothing wrong" };

/** A severity's sign and word. */
function severityBadge(severity) {
  return element("span", { class: `badge ${severity}` },
    drawing("svg", { viewBox: "0 0 16 16", "aria-hidden": "true" }, drawing("path", { d: SIGNS[severity] })),
    SEVERITIES[severity]);
}
