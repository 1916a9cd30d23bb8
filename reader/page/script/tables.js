// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

/**
 * A table with a caption, whose first column heads the rows. A column is {head, cell(row), kind}: kind "number" is aligned
 * at the right, kind "wide" may break.
 */
function table(caption, columns, rows, attributes = {}) {
  const head = columns.map((column) => element("th", { scope: "col", class: column.kind }, column.head));
  const body = rows.map((row) => element("tr", { class: attributes.rowClass ? attributes.rowClass(row) : null },
    columns.map((column, index) => index === 0
      ? element("th", { scope: "row", class: column.kind }, column.cell(row))
      : element("td", { class: column.kind }, column.cell(row)))));
  return scrolling(caption, element("table", { class: attributes.class },
    element("caption", { class: attributes.captionClass }, caption),
    element("thead", {}, element("tr", {}, head)), element("tbody", {}, body)));
}

const overflowing = new ResizeObserver((entries) => {
  for (const region of new Set(entries.map(({ target }) => target.closest(".scroll")))) {
    const needed = region.scrollWidth > region.clientWidth;
    // Only what scrolls is worth a stop of the Tab key.
    if (needed) filled(region, { tabindex: "0", role: "region", "aria-label": region.dataset.title }, []);
    else ["tabindex", "role", "aria-label"].forEach((name) => region.removeAttribute(name));
  }
});

/** Keeps what may be wider than the page in a region that scrolls by itself. */
function scrolling(title, ...children) {
  const region = element("div", { class: "scroll", "data-title": title }, ...children);
  [region, ...children].forEach((node) => overflowing.observe(node));
  return region;
}

const DASH = "–";

function orDash(text, make = reported) {
  return text === null || text === "" ? DASH : make(text);
}

function yesOrNo(value) {
  return value === null ? "unknown" : value ? "yes" : "no";
}

/** Pairs of a word and what it stands for; those without anything are left out. */
function definitions(pairs) {
  const shown = pairs.filter(([, value]) => value !== null && value !== "" && !(Array.isArray(value) && !value.length));
  return element("dl", {}, shown.map(([word, value]) =>
    element("div", {}, element("dt", {}, word), [value].flat().map((one) => element("dd", {}, one)))));
}

/** A definition's value with where it comes from. */
function sourced(content, line) {
  return element("span", {}, content, " ", lineLink(line));
}
