// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

const isSilent = (hop) => hop.name === null && hop.address === null && !hop.timesMs.length && !hop.note;

/** Hops as rows, those in a row that did not answer as one. */
function hopRows(path) {
  const rows = [];
  for (const hop of path.hops) {
    const last = rows[rows.length - 1];
    if (isSilent(hop) && last?.silent) last.to = hop.number;
    else rows.push({ hop, silent: isSilent(hop), from: hop.number, to: hop.number });
  }
  return rows.map((row, index) => ({ ...row, first: index === 0, last: index === rows.length - 1,
    end: row.hop.number === path.end, slowest: row.hop.number === path.slowestStep?.hop }));
}

/** The stretch of the way at a hop: a line through a station, an open one where nobody answered. */
function rail(row, path) {
  const line = (y1, y2, dashed) => drawing("line", { x1: "12", x2: "12", y1, y2, class: dashed ? "way silent" : "way" });
  const arrived = row.end && path.reached === true;
  const station = row.silent ? "station silent" : arrived ? "station arrived" : "station";
  return drawing("svg", { class: "rail", "aria-hidden": "true" },
    row.first ? null : line("0", "50%", row.silent), row.last ? null : line("50%", "100%", row.silent),
    drawing("circle", { cx: "12", cy: "50%", r: arrived ? "6" : "4.5", class: station }));
}

function hopName(row, path) {
  const { hop } = row;
  if (row.silent) return element("span", { class: "muted" }, "no answer");
  return [hop.name === null || hop.name === hop.address ? null : [reported(hop.name, 120), " "], hop.address ? code(hop.address) : null,
    row.slowest ? [" ", element("span", { class: "chip slow" }, `slowest step, +${milliseconds(path.slowestStep.ms)}`)] : null,
    hop.note ? [" ", element("span", { class: "chip slow" }, hop.note)] : null,
    row.end ? [" ", element("span", { class: path.reached === false ? "chip stop" : "chip" },
      { true: "reached", false: "ends here" }[path.reached] ?? "last answer")] : null].flat(2);
}

function middleOf(numbers) {
  const sorted = [...numbers].sort((one, other) => one - other);
  const half = Math.floor(sorted.length / 2);
  return sorted.length % 2 ? sorted[half] : (sorted[half - 1] + sorted[half]) / 2;
}

function pathText(path) {
  const ending = { true: "reaches its end", false: path.end === null ? "nobody answers" : `ends at hop ${path.end}` }[path.reached]
    ?? "whether it reaches its end is unknown";
  const slowest = path.slowestStep ? `; slowest step at hop ${path.slowestStep.hop}, ${milliseconds(path.slowestStep.ms)} more` : "";
  return `${count(path.end ?? path.hops.length, "hop")}, ${ending}${slowest}.`;
}

function pathCard(path) {
  const end = scaleEnd(Math.max(1, ...path.hops.flatMap((hop) => hop.timesMs)));
  const columns = [
    { head: "Hop", cell: (row) => [rail(row, path), row.from === row.to ? row.from : `${row.from}–${row.to}`], kind: "hop" },
    { head: "Who answered", cell: (row) => hopName(row, path) },
    { head: [element("span", { class: "hidden" }, "Drawing of the round trips"), axis(end)], kind: "chart",
      cell: ({ hop }) => (hop.timesMs.length ? trackOf(hop.timesMs, middleOf(hop.timesMs), end) : "") },
    { head: "Median", cell: ({ hop }) => (hop.timesMs.length ? milliseconds(middleOf(hop.timesMs)) : DASH), kind: "number" },
    { head: "Lost", kind: "number",
      cell: ({ hop, silent }) => (silent ? "all" : hop.lost ? element("span", { class: "bad" }, hop.lost) : "0") },
    { head: "Source", cell: ({ hop }) => lineLink(hop.line) }];
  const same = path.address === null || path.address === path.host;
  return element("div", { class: "card path" },
    element("h3", {}, "To ", reported(path.host, 120), same ? "" : [" ", code(path.address)]),
    element("p", { class: "muted" }, path.error ? [reported(path.error), " "] : "",
      path.hops.length ? `${pathText(path)} ` : "", lineLink(path.line)),
    path.hops.length ? table(`Hops to ${shortened(path.host, 120)}`, columns, hopRows(path),
      { class: "charted", captionClass: "hidden", rowClass: (row) => (row.slowest ? "slowest" : null) }) : null);
}

function pathsSection({ facts: { paths } }) {
  return section("paths", "Paths", element("div", { class: "tables" }, paths.map(pathCard)));
}
