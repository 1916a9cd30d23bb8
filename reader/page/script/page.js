// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Puts the page together when it is loaded. The functions that it calls are in the other files of this folder, which are
// one script in the page.

const fileName = (report) => (report.file === "-" ? null : report.file.slice(report.file.lastIndexOf("/") + 1));

function headLine(report) {
  const { head: { account, ticket }, facts: { domain } } = report;
  const fact = (word, value) => (value === null ? null : element("span", {}, `${word} `, element("strong", {}, reported(value, 120))));
  return [element("strong", { class: "product" }, "Diagnostic report"),
    fact("File", fileName(report)), fact("Account", account), fact("Ticket", ticket),
    fact("Tested domain", domain)];
}

function contents(sections) {
  const item = (node) => {
    const title = node.querySelector("h2");
    return element("li", {}, element("a", { href: `#${node.id}` }, title.textContent));
  };
  return element("ul", {}, sections.filter((node) => node.querySelector("h2")).map(item));
}

function sectionsOf(report, blocks) {
  const { cities, paths, queries } = report.facts;
  return [verdictSection(report), findingsSection(report), factsSection(report), cities.length ? citiesSection(report) : null,
    paths.length ? pathsSection(report) : null, queries.length ? queriesSection(report) : null,
    blocksSection(report, blocks)].filter(Boolean);
}

/** Goes to the line or block that an address of this page names. */
function goTo(hash, blocks) {
  const line = /^#L(\d+)$/.exec(hash);
  const block = line ? blocks.findLast((one) => one.line <= Number(line[1])) : blocks.find((one) => `#${one.node.id}` === hash);
  if (!block) return false;
  if (block.node.hidden) document.dispatchEvent(new Event("line-hidden"));
  block.node.hidden = false;
  const place = line ? block.reveal(Number(line[1])) : (block.open(), block.node.querySelector("summary"));
  document.querySelector(".target")?.classList.remove("target");
  place.classList.add("target");
  if (place.tagName !== "SUMMARY") place.tabIndex = -1;
  place.scrollIntoView({ block: "center" });
  place.focus({ preventScroll: true });
  return true;
}

function followLinks(blocks) {
  document.addEventListener("click", (event) => {
    const link = event.target.closest("a.line-link");
    // The second click on a link changes no address, but leads there, too.
    if (link && link.hash === location.hash) goTo(link.hash, blocks);
  });
  addEventListener("hashchange", () => goTo(location.hash, blocks));
  if (location.hash) goTo(location.hash, blocks);
}

function drawPage() {
  const report = JSON.parse(document.getElementById("data").textContent);
  const blocks = blocksOf(report);
  const sections = sectionsOf(report, blocks);
  document.title = visible(`${SEVERITIES[worstOf(report.verdict)]}: ${shortened(fileName(report) ?? "diagnostic report", 120)}`);
  filled(document.getElementById("head"), {}, headLine(report));
  filled(document.getElementById("contents"), {}, [contents(sections)]);
  filled(document.getElementById("main"), {}, sections);
  followLinks(blocks);
}

drawPage();
