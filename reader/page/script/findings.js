// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

function worstOf(verdict) {
  if (verdict.problems) return "problem";
  if (verdict.warnings) return "warning";
  return verdict.notes ? "note" : "clear";
}

/** What matters most, and how much there is besides. */
function verdictSection({ verdict, findings }) {
  const worst = worstOf(verdict);
  return element("section", { id: "verdict", class: `verdict ${worst}`, "aria-labelledby": "verdict-title" },
    severityBadge(worst),
    element("h1", { id: "verdict-title" }, element("bdi", {}, findings.length ? findings[0].text : verdict.text)),
    findings.length ? element("p", {}, element("bdi", {}, verdict.text)) : null);
}

function evidenceItem(evidence, blocks) {
  const block = blocks[evidence.block];
  return element("li", {}, lineLink(evidence.line), " ", code(evidence.text),
    block ? element("span", { class: "from" }, "in ", reported(block.name, 160)) : null);
}

function findingArticle(finding, index, blocks) {
  const title = `finding-${index}-title`;
  return element("article", { class: `finding ${finding.severity}`, id: `finding-${index}`, "aria-labelledby": title },
    element("h3", { id: title }, severityBadge(finding.severity), " ", element("bdi", {}, finding.text)),
    element("div", { class: "finding-body" },
      definitions([["What it means", finding.meaning], ["Ask or try next", finding.advice]]),
      element("div", { class: "evidence" },
        element("p", { class: "label" }, "Evidence"),
        element("ul", {}, finding.evidence.map((evidence) => evidenceItem(evidence, blocks))))));
}

function findingsSection(report) {
  const articles = report.findings.map((finding, index) => findingArticle(finding, index, report.blocks));
  return section("findings", "Findings", ...(articles.length ? articles
    : [element("p", { class: "apart" }, "Nothing in the blocks that could be read is wrong.")]));
}
