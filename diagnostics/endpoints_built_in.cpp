// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The endpoints of this build. To build for another deployment, copy this file, change the values
// and configure with -DHALVIK_ENDPOINTS=/path/to/the/copy.cpp; a role that is left out fails the
// build.

#include "diagnostics/endpoints.h"

namespace diagnostics {

namespace {

const Endpoints endpoints{
    .serviceDomain = "halvik.example",
    .submitUrl = "https://diagnostic.halvik.example/diagnosticsubmit",

    .serviceResolverA = "192.0.2.53",
    .serviceResolverB = "198.51.100.53",
    .thirdPartyResolver = "8.8.8.8",
    .rootServerAddress = "192.5.5.241",
    .anycastServerAddress = "1.1.1.1",

    .myIpQueryName = "myip.halvik.example",
    .debugQueryName = "debug.halvik.example",
    .akamaiWhoamiName = "whoami.akamai.net",
    .akamaiNameServer = "ns1-1.akamaitech.net",
    .ultraDnsWhoamiName = "whoami.ultradns.net",
    .ultraDnsNameServer = "pdns1.ultradns.net",

    .serviceApiHost = "api.halvik.example",
    .serviceMonitorHost = "monitor.halvik.example",
    .blockPageHost = "block.halvik.example",
    .categoryHitHost = "category-hit.halvik.example",
    .blockIdHost = "block-id.halvik.example",
    .serviceHttpAddress = "203.0.113.80",
    .serviceWebsiteHost = "www.halvik.example",

    .paloAltoRouter = "router.pao.halvik.example",
    .seattleRouter = "router.sea.halvik.example",
    .losAngelesRouter = "router.lax.halvik.example",
    .chicagoRouter = "router.chi.halvik.example",
    .newYorkRouter = "router.nyc.halvik.example",
    .ashburnRouter = "router.ash.halvik.example",
    .londonRouter = "router.lon.halvik.example",
    .miamiRouter = "router.mia.halvik.example",
    .singaporeRouter = "router.sin.halvik.example",
    .frankfurtRouter = "router.fra.halvik.example",
    .hongKongRouter = "router.hkg.halvik.example",
    .amsterdamRouter = "router.ams.halvik.example",
    .berlinRouter = "router.ber.halvik.example",
    .parisRouter = "router.par.halvik.example",
    .copenhagenRouter = "router.cph.halvik.example",
    .dallasRouter = "router.dfw.halvik.example",
    .bucharestRouter = "router.otp.halvik.example",
    .pragueRouter = "router.prg.halvik.example",
    .warsawRouter = "router.waw.halvik.example",
    .sydneyRouter = "router.syd.halvik.example",

    .blockedIpAddress = "203.0.113.66",
    .greyIpAddress = "203.0.113.77",
    .blockIpTestName = "blockip.test.halvik.example",
};

}  // namespace

const Endpoints& builtInEndpoints() {
  return endpoints;
}

}  // namespace diagnostics
