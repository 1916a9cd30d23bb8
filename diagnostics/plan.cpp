// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/plan.h"

#include <algorithm>
#include <tuple>

namespace diagnostics {

namespace {

constexpr const char* cat = "/bin/cat";
constexpr const char* curl = "/usr/bin/curl";
constexpr const char* dig = "/usr/bin/dig";

std::string at(const std::string& server) {
  return '@' + server;
}

std::string inSkivraFolder(const std::string& name) {
  return std::string(skivraFolder) + '/' + name;
}

// A name without a dot is no domain: its tests are left out.
bool hasDot(const std::string& domain) {
  return domain.find('.') != std::string::npos;
}

void startShell(CommandStarter& starter, const std::string& commandLine,
                const std::optional<std::string>& comment = std::nullopt) {
  starter.startTest("/bin/sh", {"-c", commandLine}, comment);
}

void startDomainTests(CommandStarter& starter, const Endpoints& endpoints,
                      const std::string& domain) {
  starter.named("path-domain").startTraceroute(domain);
  starter.named("domain").startTest(dig, {"+time=10", domain});
  starter.named("domain-a").startTest(dig, {"+time=10", domain, at(endpoints.serviceResolverA)});
  starter.named("domain-b").startTest(dig, {"+time=10", domain, at(endpoints.serviceResolverB)});
  starter.named("domain-third-party")
      .startTest(dig, {"+time=10", domain, at(endpoints.thirdPartyResolver)});
}

void startRouteTests(CommandStarter& starter, const Endpoints& endpoints) {
  starter.named("path-resolver-a").startTraceroute(endpoints.serviceResolverA);
  starter.named("path-resolver-b").startTraceroute(endpoints.serviceResolverB);
  starter.named("path-api").startTraceroute(endpoints.serviceApiHost);
  starter.named("path-monitor").startTraceroute(endpoints.serviceMonitorHost);
  starter.named("path-block-page").startTraceroute(endpoints.blockPageHost);
  starter.named("path-category-hit").startTraceroute(endpoints.categoryHitHost);
}

void startResolverTests(CommandStarter& starter, const Endpoints& endpoints) {
  const std::string resolver = at(endpoints.serviceResolverA);
  const std::string& debug = endpoints.debugQueryName;
  starter.named("debug-53").startTest(dig, {resolver, "+time=10", debug, "txt"});
  starter.named("debug-443").startTest(dig, {resolver, "-p", "443", "+time=10", debug, "txt"});
  starter.named("debug-5353").startTest(dig, {resolver, "-p", "5353", "+time=10", debug, "txt"});
  starter.named("debug").startTest(dig, {"+time=10", debug, "txt"});
  starter.named("akamai-whoami").startTest(dig, {"+time=10", endpoints.akamaiWhoamiName});
  starter.named("ultradns-whoami").startTest(dig, {"+time=10", endpoints.ultraDnsWhoamiName});
  starter.named("myip-a").startTest(dig, {resolver, "+time=10", endpoints.myIpQueryName});
  starter.named("akamai-direct")
      .startTest(dig, {at(endpoints.akamaiNameServer), "+time=10", endpoints.akamaiWhoamiName});
  starter.named("ultradns-direct")
      .startTest(dig, {at(endpoints.ultraDnsNameServer), "+time=10", endpoints.ultraDnsWhoamiName});
}

void startServerNameTest(CommandStarter& starter, const std::string& server) {
  starter.startTest("/usr/bin/nslookup",
                    {"-timeout=10", "-class=chaos", "-type=txt", "hostname.bind.", server});
}

void startPings(CommandStarter& starter, const Endpoints& endpoints) {
  starter.named("ping-website")
      .startPing(endpoints.serviceWebsiteHost, '(' + endpoints.serviceWebsiteHost + ')');
  starter.startPing(endpoints.paloAltoRouter, "(palo alto router)");
  starter.startPing(endpoints.seattleRouter, "(seattle router)");
  starter.startPing(endpoints.losAngelesRouter, "(los angeles router)");
  starter.startPing(endpoints.chicagoRouter, "(chicago router)");
  starter.startPing(endpoints.newYorkRouter, "(new york router)");
  starter.startPing(endpoints.ashburnRouter, "(ashburn router)");
  starter.startPing(endpoints.londonRouter, "(london router)");
  starter.startPing(endpoints.miamiRouter, "(miami router)");
  starter.startPing(endpoints.singaporeRouter, "(singapore router)");
  starter.startPing(endpoints.frankfurtRouter, "(frankfurt router)");
  starter.startPing(endpoints.hongKongRouter, "(hong kong router)");
  starter.startPing(endpoints.amsterdamRouter, "(amsterdam router)");
  starter.startPing(endpoints.berlinRouter, "(berlin router)");
  starter.startPing(endpoints.parisRouter, "(paris router)");
  starter.startPing(endpoints.copenhagenRouter, "(copenhagen router)");
  starter.startPing(endpoints.dallasRouter, "(dallas router)");
  starter.startPing(endpoints.bucharestRouter, "(bucharest router)");
  starter.startPing(endpoints.pragueRouter, "(prague router)");
  // Washington DC has no router of its own: Ashburn's, next door, is asked a second time.
  starter.startPing(endpoints.ashburnRouter, "(washington dc router)");
  starter.startPing(endpoints.warsawRouter, "(warsaw router)");
  starter.startPing(endpoints.sydneyRouter, "(sydney router)");
}

void startWebTests(CommandStarter& starter, const Endpoints& endpoints) {
  // Without a scheme, so that curl asks over plain HTTP, which is what a block page or a captive
  // portal answers.
  starter.named("web-block-id").startTest(curl, {"-Ls", endpoints.blockIdHost + "/monitor.php"});
  starter.named("web-monitor")
      .startTest(curl, {"-Ls", "-c", "/dev/null", endpoints.serviceMonitorHost + "/monitor/"});
  starter.named("web-block-id-head")
      .startTest(curl, {"-LIs", "-c", "/dev/null", endpoints.blockIdHost + "/"});
  starter.named("web-block-page").startTest(curl, {"-s", endpoints.blockPageHost + "/monitor.php"});
  starter.named("web-by-number").startTest(curl, {"-s", endpoints.serviceHttpAddress});
}

}  // namespace

CommandStarter& CommandStarter::named(std::string_view /*name*/) {
  return *this;
}

void CommandStarter::startPing(const std::string& host, const std::string& comment) {
  startTest("/sbin/ping", {"-c", "5", host}, comment);
}

void CommandStarter::startTraceroute(const std::string& host) {
  // The option and its value in one argument, blank included: support staff know the report's line
  // in this form.
  startTest("/usr/sbin/traceroute", {"-I", "-w 2", host}, std::nullopt);
}

TestDomain makeTestDomain(const std::optional<std::string>& option,
                          const std::optional<std::string>& field) {
  TestDomain domain = option && !option->empty() ? option : field;
  if (domain) {
    std::erase(*domain, ' ');
  }
  return domain;
}

void startGeneralTests(CommandStarter& starter, const Endpoints& endpoints,
                       const TestDomain& domain) {
  starter.named("myip").startTest(dig, {"+time=10", endpoints.myIpQueryName});
  if (domain && hasDot(*domain)) {
    startDomainTests(starter, endpoints, *domain);
  }
  startRouteTests(starter, endpoints);
  // Read even without the Skivra: the error about the missing file is a result too.
  starter.named("skivra-state").startTest(cat, {inSkivraFolder("skv_state.plist")});
  startResolverTests(starter, endpoints);
  startServerNameTest(starter.named("server-name-third-party"), endpoints.thirdPartyResolver);
  startServerNameTest(starter.named("server-name-root"), endpoints.rootServerAddress);
  startServerNameTest(starter.named("server-name-anycast"), endpoints.anycastServerAddress);
  startPings(starter, endpoints);
  starter.named("processes").startTest("/bin/ps", {"wwaux"});
  starter.named("interfaces").startTest("/sbin/ifconfig", {"-a"});
  starter.named("name-servers").startTest("/usr/sbin/scutil", {"--dns"});
  starter.named("routes").startTest("/usr/sbin/netstat", {"-rn"});
  startWebTests(starter, endpoints);
  starter.named("system").startTest("/usr/sbin/system_profiler", {"SPSoftwareDataType"});
}

void startSkivraTests(CommandStarter& starter, const Endpoints& endpoints,
                      const TestDomain& domain) {
  if (!domain) {
    // Nobody could name a domain: the query keeps its place in the report but has no arguments, not
    // even the server.
    starter.named("skivra-domain").startTest(dig, {});
  } else if (hasDot(*domain)) {
    starter.named("skivra-domain").startTest(dig, {*domain, "@127.0.0.1"});
  }
  starter.named("skivra-debug")
      .startTest(dig, {"@127.0.0.1", endpoints.debugQueryName + '.', "txt"});
  starter.named("skivra-folder").startTest("/bin/ls", {skivraFolder});
  starter.named("skivra-resolv-orig").startTest(cat, {inSkivraFolder("resolv_orig.conf")});
  startShell(starter.named("skivra-folder-again"), std::string("/bin/ls '") + skivraFolder + '\'');
  startShell(starter.named("skivra-local-domains"),
             "/bin/cat '" + inSkivraFolder("localdomains") + '\'');
}

void startSystemLogAndBlockingTests(CommandStarter& starter, const Endpoints& endpoints,
                                    std::int32_t tailSize) {
  startShell(starter.named("system-log"), "/usr/bin/tail -n " + std::to_string(tailSize) +
                                              " /var/log/system.log | /usr/bin/egrep -i "
                                              "\"kernel|launchd|vpn|dns|configd|racoon|brontel\"");
  const std::string& blocked = endpoints.blockedIpAddress;
  startShell(starter.named("blocked-ping"), "/sbin/ping -c 1 -t 1 " + blocked, "(Blocked IP)");
  startShell(starter.named("blocked-route"), "/sbin/route -n get " + blocked, "(Blocked IP)");
  const std::string getPage = "/usr/bin/curl -v -m 2 ";
  startShell(starter.named("web-blocked-ip"), getPage + blocked + "/some/page",
             "(Page from Blocked IP)");
  const std::string& grey = endpoints.greyIpAddress;
  startShell(starter.named("grey-route"), "/sbin/route -n get " + grey,
             '(' + endpoints.blockIpTestName + ')');
  startShell(starter.named("web-grey-allowed"), getPage + grey + "/favicon.ico",
             "(Allowed page from grey IP)");
  startShell(starter.named("web-grey-allowed-8081"), getPage + grey + ":8081/favicon.ico",
             "(Allowed page from grey IP)");
  startShell(starter.named("web-grey-blocked"), getPage + grey + "/malware.htm",
             "(Blocked page from grey IP)");
  startShell(starter.named("web-grey-blocked-8081"), getPage + grey + ":8081/malware.htm",
             "(Blocked page from grey IP)");
}

std::vector<std::string> beaconLogFolders() {
  const std::string logs = std::string(skivraFolder) + "/beacon-logs/";
  return {logs + "ipblock/", logs + "probe/", logs + "service/"};
}

std::vector<std::string> orderByCreation(const std::string& folder,
                                         std::vector<platform::FolderEntry> entries) {
  std::ranges::sort(entries, {},
                    [](const auto& each) { return std::tie(each.createdNs, each.name); });
  std::vector<std::string> paths;
  paths.reserve(entries.size());
  for (const platform::FolderEntry& entry : entries) {
    paths.push_back(folder + entry.name);
  }
  return paths;
}

std::string readerCommandLine(const std::string& path) {
  return "cat \"" + path + '"';
}

}  // namespace diagnostics
