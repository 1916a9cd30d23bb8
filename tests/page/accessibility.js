// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Looks at the page as it is shown, and returns a sentence for whatever keeps somebody from reading it.

const wrong = [];
const all = (selector) => Array.from(document.querySelectorAll(selector));
const shown = (node) => node.checkVisibility({ visibilityProperty: true });
const say = (node, what) => wrong.push(`${what}: ${node.outerHTML.slice(0, 120)}`);

function channels(color) {
  const [r, g, b, a = 1] = color.match(/[\d.]+/g).map(Number);
  return { rgb: [r, g, b], a };
}

function luminance({ rgb }) {
  const [r, g, b] = rgb.map((one) => one / 255).map((one) => (one <= 0.04045 ? one / 12.92 : ((one + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

function background(node) {
  for (let one = node; one; one = one.parentElement) {
    const color = channels(getComputedStyle(one).backgroundColor);
    if (color.a === 1) return color;
    if (color.a) say(one, "half transparent background");
  }
  return { rgb: [255, 255, 255] };
}

function checkContrast(node) {
  const style = getComputedStyle(node);
  const text = channels(node instanceof SVGElement ? style.fill : style.color);
  const [light, dark] = [luminance(text), luminance(background(node))].sort((one, other) => other - one);
  const contrast = (light + 0.05) / (dark + 0.05);
  if (contrast < 4.5) say(node, `contrast ${contrast.toFixed(2)}`);
}

function checkHeadings() {
  const levels = all("h1, h2, h3, h4, h5, h6").filter(shown).map((node) => Number(node.tagName[1]));
  if (levels[0] !== 1 || levels.filter((level) => level === 1).length !== 1) wrong.push(`headings ${levels}`);
  levels.forEach((level, index) => { if (level > (levels[index - 1] ?? 0) + 1) wrong.push(`heading ${index} leaves out a level`); });
}

function checkTables() {
  for (const table of all("table")) {
    if (!table.caption?.textContent.trim()) say(table, "table without a caption");
    for (const head of table.querySelectorAll("th")) {
      if (!["col", "row"].includes(head.scope) || !head.textContent.trim()) say(head, "head without scope or text");
    }
    if (table.querySelector("tbody tr > td:first-child")) say(table, "row without a head");
  }
}

function checkNames() {
  for (const node of all("a, button, summary")) if (!node.textContent.trim()) say(node, "without a name");
  for (const node of all("input")) if (!node.labels.length) say(node, "without a label");
  for (const node of all("svg")) if (node.getAttribute("aria-hidden") !== "true") say(node, "drawing that is read");
  const ids = all("[id]").map((node) => node.id);
  for (const id of ids.filter((one, index) => ids.indexOf(one) !== index)) wrong.push(`two elements are ${id}`);
  for (const node of all("[aria-labelledby], [aria-describedby]")) {
    const named = node.getAttribute("aria-labelledby") ?? node.getAttribute("aria-describedby");
    if (!document.getElementById(named)) say(node, "named by nothing");
  }
  for (const name of ["header", "nav", "main"]) if (all(name).length !== 1) wrong.push(`${all(name).length} times ${name}`);
}

function checkRegions() {
  for (const node of all(".scroll").filter(shown)) {
    if (node.scrollWidth > node.clientWidth && !(node.tabIndex === 0 && node.role && node.ariaLabel)) {
      say(node, "scrolls, but not by keyboard");
    }
  }
}

checkHeadings();
checkTables();
checkNames();
checkRegions();
const ownText = (node) => Array.from(node.childNodes).some((child) => child.nodeType === Node.TEXT_NODE && child.data.trim());
all("body *").filter((node) => ownText(node) && !["SCRIPT", "NOSCRIPT"].includes(node.tagName) && shown(node) && !node.disabled)
  .forEach(checkContrast);
return wrong;
