// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The hosts and addresses that a run asks. Their values are fixed for a build:
// endpoints_built_in.cpp, or the file that HALVIK_ENDPOINTS names when the build is configured.

#pragma once

#include <string>

namespace diagnostics {

/// One value for every role that a remote host, a DNS name or an address plays in the plan.
struct Endpoints {
  /// The service's own domain name, shown as an example in the usage text.
  std::string serviceDomain;
  /// Where reports are uploaded to; https, its path is "/diagnosticsubmit".
  std::string submitUrl;

  // IPv4 addresses of resolvers and name servers.
  std::string serviceResolverA;
  std::string serviceResolverB;
  std::string thirdPartyResolver;
  std::string rootServerAddress;
  std::string anycastServerAddress;

  // DNS names that answer with facts about the asker, and the servers of other operators that
  // answer them.
  std::string myIpQueryName;
  std::string debugQueryName;
  std::string akamaiWhoamiName;
  std::string akamaiNameServer;
  std::string ultraDnsWhoamiName;
  std::string ultraDnsNameServer;

  // The service's hosts.
  std::string serviceApiHost;
  std::string serviceMonitorHost;
  std::string blockPageHost;
  std::string categoryHitHost;
  std::string blockIdHost;
  std::string serviceHttpAddress;
  std::string serviceWebsiteHost;

  // The service's routers.
  std::string paloAltoRouter;
  std::string seattleRouter;
  std::string losAngelesRouter;
  std::string chicagoRouter;
  std::string newYorkRouter;
  std::string ashburnRouter;
  std::string londonRouter;
  std::string miamiRouter;
  std::string singaporeRouter;
  std::string frankfurtRouter;
  std::string hongKongRouter;
  std::string amsterdamRouter;
  std::string berlinRouter;
  std::string parisRouter;
  std::string copenhagenRouter;
  std::string dallasRouter;
  std::string bucharestRouter;
  std::string pragueRouter;
  std::string warsawRouter;
  std::string sydneyRouter;

  // Test servers of the filtering, and the name that leads to the grey one.
  std::string blockedIpAddress;
  std::string greyIpAddress;
  std::string blockIpTestName;
};

/// The endpoints of this build.
const Endpoints& builtInEndpoints();

}  // namespace diagnostics
