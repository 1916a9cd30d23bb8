// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

/** The end of a scale that holds the value: a digit with zeros, and easy to halve. */
function scaleEnd(value) {
  const power = 10 ** Math.floor(Math.log10(Math.max(value, 1)));
  return [1, 2, 3, 4, 5, 6, 8, 10].map((factor) => factor * power).find((end) => end >= value);
}

const percent = (part, whole) => `${((100 * part) / whole).toFixed(2)}%`;

function gridLines() {
  return [25, 50, 75, 100].map((x) => drawing("line", { x1: `${x}%`, x2: `${x}%`, y1: "0", y2: "100%", class: "grid" }));
}

/** The scale above the drawings of a column. */
function axis(end) {
  const label = (x, anchor, text) => drawing("text", { x: `${x}%`, y: "11", "text-anchor": anchor }, text);
  return drawing("svg", { class: "track axis", "aria-hidden": "true" }, label(0, "start", "0"),
    label(50, "middle", String(end / 2)), label(100, "end", `${end} ms`));
}

/** Round trips on a scale: a bar from the shortest to the longest, a line each, a dot for the middle. */
function trackOf(times, middle, end) {
  const least = Math.min(...times);
  const most = Math.max(...times);
  return drawing("svg", { class: "track", "aria-hidden": "true" }, gridLines(),
    drawing("rect", { x: percent(least, end), width: percent(most - least, end), y: "35%", height: "30%", rx: "2", class: "range" }),
    times.slice(0, 100).map((time) =>
      drawing("line", { x1: percent(time, end), x2: percent(time, end), y1: "20%", y2: "80%", class: "one" })),
    drawing("circle", { cx: percent(middle, end), cy: "50%", r: "4", class: "middle" }));
}

function cityTrack(city, end) {
  if (city.medianMs === null) return element("span", { class: "bad" }, city.error ? reported(city.error, 120) : "no answer");
  const times = [city.minMs, ...city.timesMs, city.maxMs];
  return trackOf(times, city.medianMs, end);
}

function lossCell(city) {
  if (city.lossPercent === null) return DASH;
  const text = `${Math.round(city.lossPercent)}\u00a0%`;
  if (!city.lossPercent) return text;
  return [drawing("svg", { class: "loss", "aria-hidden": "true" },
    drawing("rect", { width: "100%", height: "100%", rx: "2", class: "whole" }),
    drawing("rect", { width: `${Math.min(100, city.lossPercent)}%`, height: "100%", rx: "2", class: "part" })),
  element("span", { class: "bad" }, text)];
}

function citiesSection({ facts: { cities } }) {
  const end = scaleEnd(Math.max(1, ...cities.map((city) => city.maxMs ?? 0)));
  const columns = [
    { head: "Towards", cell: (city) => element("span", { class: city.kind },
      city.kind === "website" ? "Web site" : reported(city.name.replace(/ dc$/, " DC"), 60)) },
    { head: [element("span", { class: "hidden" }, "Drawing"), axis(end)], cell: (city) => cityTrack(city, end), kind: "chart" },
    { head: "Shortest", cell: (city) => milliseconds(city.minMs), kind: "number" },
    { head: "Median", cell: (city) => element("strong", {}, milliseconds(city.medianMs)), kind: "number" },
    { head: "Longest", cell: (city) => milliseconds(city.maxMs), kind: "number" },
    { head: "Lost", cell: lossCell, kind: "number" },
    { head: "Host", cell: (city) => code(city.host, 120) }, LINE];
  return section("cities", "Round trips", element("div", { class: "card" },
    table(`Round trips to the service: from the shortest to the longest, the median a dot, all on a scale to ${end} ms`,
      columns, cities, { class: "charted", captionClass: "quiet" })));
}
