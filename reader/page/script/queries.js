// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

function answerCell(query) {
  if (query.error !== null) return element("span", { class: "bad" }, reported(query.error));
  const shown = query.answers.slice(0, 20).map((answer) => element("div", {}, code(`${answer.type} ${answer.data}`, 200)));
  const left = query.answers.length - shown.length;
  return left > 0 ? [...shown, element("div", { class: "muted" }, `and ${left} more`)] : shown.length ? shown : DASH;
}

function queriesSection({ facts: { queries } }) {
  const failed = (query) => query.error !== null || (query.status !== null && query.status !== "NOERROR");
  return section("queries", "Queries", element("div", { class: "card" }, table("Names that were asked for", [
    { head: "Name", cell: (query) => code(query.name, 120), kind: "wide" },
    { head: "Type", cell: (query) => reported(query.type, 20) },
    { head: "Asked", cell: (query) => [query.server === null ? "its own resolver" : code(query.server, 80),
      query.port === 53 ? "" : ` port ${query.port}`] },
    { head: "Status", cell: (query) => (query.status === null ? DASH
      : element("span", { class: failed(query) ? "bad" : null }, reported(query.status, 20))) },
    { head: "Answer", cell: answerCell, kind: "wide" },
    { head: "Time", cell: (query) => milliseconds(query.timeMs), kind: "number" },
    { head: "Answered by", cell: (query) => orDash(query.answeredBy, (text) => code(text, 80)) }, LINE],
  queries, { captionClass: "quiet", rowClass: (query) => (failed(query) ? "failed" : null) })));
}
