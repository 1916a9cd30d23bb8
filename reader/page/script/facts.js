// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

const LINE = { head: "Source", cell: (row) => lineLink(row.line) };

function card(title, ...children) {
  const content = children.filter((child) => child && child.childElementCount);
  return content.length ? element("div", { class: "card" }, element("h3", {}, title), ...content) : null;
}

function machineCard({ system }) {
  const value = (text) => (text === null ? null : reported(text));
  return card("Machine", definitions([
    ["System", value(system.version)], ["Kernel", value(system.kernel)], ["Computer", value(system.computer)],
    ["User", value(system.user)], ["Time since boot", value(system.timeSinceBoot)], ["Its clock", value(system.clock)],
    ["A web server’s clock", value(system.serverClock)], ["Source", lineLink(system.line)]]));
}

/** Each address once, with the servers that saw it. */
function addressList(seen) {
  const addresses = [...new Set(seen.map((one) => one.address))];
  return addresses.map((address) => {
    const same = seen.filter((one) => one.address === address);
    const by = [...new Set(same.map((one) => one.by))].slice(0, 10).map((name) => shortened(name, 80));
    return element("span", {}, code(address), same.slice(0, 20).map((one) => [" ", lineLink(one.line)]),
      element("span", { class: "from" }, "by ", reported(by.join(", "), 900)));
  });
}

function networkCard(facts) {
  const server = (one) => sourced([code(one.address), one.interface ? ` on ${shortened(one.interface, 40)}` : "",
    one.domain ? ` for ${shortened(one.domain, 80)}` : ""], one.line);
  const route = (one) => sourced([one.gateway ? code(one.gateway) : "no gateway",
    one.interface ? ` on ${shortened(one.interface, 40)}` : "", one.family === "ipv6" ? " (IPv6)" : ""], one.line);
  return card("Network", definitions([
    ["Tested domain", facts.domain === null ? null : code(facts.domain)],
    ["Public address", addressList(facts.publicAddresses)],
    ["Its resolver asks from", addressList(facts.resolverAddresses)],
    ["Name servers", facts.nameServers.map(server)],
    ["Default route", facts.routes.filter((one) => one.default).map(route)]]));
}

function skivraCard({ skivra }) {
  const state = { present: "present", missing: "missing", unknown: "unknown" }[skivra.stateFile];
  const text = (value) => (value === null ? null : reported(value));
  return card("Skivra", definitions([
    ["Installed", yesOrNo(skivra.installed)], ["State file", state], ["State", text(skivra.state)],
    ["Organization", text(skivra.organization)], ["Its resolver answers", yesOrNo(skivra.resolverAnswers)],
    ["In use", yesOrNo(skivra.inUse)],
    ["Original name servers", skivra.originalNameServers.map((one) => code(one))],
    ["Local domains", skivra.localDomains.map((one) => code(one))],
    ["Logs", skivra.logs.map(logText)], ["Source", lineLink(skivra.line)]]));
}

function logText(log) {
  const times = log.oldest === null ? "" : `, ${shortened(log.oldest, 40)} to ${shortened(log.newest, 40)}`;
  return element("span", {}, `${log.folder}: ${log.number}, ${bytes(log.bytes)}`, times, " ",
    element("a", { href: `#B${Number(log.firstBlock)}`, class: "line-link" }, "first"));
}

function resolverTable({ resolvers }) {
  return table("Who answered the service’s debug name", [
    { head: "Asked", cell: (row) => (row.asked === null ? "its own resolver" : code(`${row.asked} port ${row.port}`)) },
    { head: "Answered by", cell: (row) => orDash(row.answeredBy, code) },
    { head: "The service", cell: (row) => (row.service === null ? row.error ? reported(row.error) : DASH : yesOrNo(row.service)) },
    { head: "Server", cell: (row) => orDash(row.server, code) },
    { head: "Data centre", cell: (row) => orDash(row.dataCentre) },
    { head: "Organization", cell: (row) => orDash(row.organization) },
    { head: "Asked from", cell: (row) => orDash(row.source, code) },
    { head: "Time", cell: (row) => milliseconds(row.timeMs), kind: "number" }, LINE],
  resolvers, { rowClass: (row) => (row.error ? "failed" : null) });
}

function webTable({ webChecks }) {
  return table("What the web checks returned", [
    { head: "Address asked", cell: (row) => code(row.url), kind: "wide" },
    { head: "Answer", cell: (row) => row.answer },
    { head: "Status", cell: (row) => orDash(row.status), kind: "number" },
    { head: "Redirected to", kind: "wide",
      cell: (row) => (row.redirects.length ? row.redirects.map((one) => element("div", {}, code(one, 160))) : DASH) },
    { head: "Title or text", kind: "wide",
      cell: (row) => orDash(row.error ?? row.title ?? row.text, (text) => reported(text, 160)) },
    LINE], webChecks, { rowClass: (row) => (row.error || row.answer === "none" ? "failed" : null) });
}

function interfaceTable({ interfaces }) {
  return table("Interfaces", [
    { head: "Name", cell: (row) => code(row.name) }, { head: "Kind", cell: (row) => row.kind },
    { head: "Up", cell: (row) => yesOrNo(row.up) }, { head: "MTU", cell: (row) => orDash(row.mtu), kind: "number" },
    { head: "Addresses", cell: (row) => (row.addresses.length ? row.addresses.map((one) => element("div", {}, code(one))) : DASH) },
    LINE], interfaces);
}

function serverNameTable({ serverNames }) {
  return table("What servers call themselves", [
    { head: "Server", cell: (row) => code(row.server) },
    { head: "Name", cell: (row) => (row.error === null ? orDash(row.name, code) : reported(row.error)), kind: "wide" },
    LINE], serverNames, { rowClass: (row) => (row.error ? "failed" : null) });
}

function factsSection({ facts }) {
  const tables = [
    [facts.resolvers, resolverTable], [facts.webChecks, webTable], [facts.interfaces, interfaceTable],
    [facts.serverNames, serverNameTable],
  ].filter(([rows]) => rows.length).map(([, make]) => element("div", { class: "card" }, make(facts)));
  return section("facts", "Facts",
    element("div", { class: "cards" }, machineCard(facts), networkCard(facts), skivraCard(facts)),
    element("div", { class: "tables" }, tables));
}
