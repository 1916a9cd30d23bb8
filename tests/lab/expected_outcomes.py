# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""How a run of the program ends in each scenario."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Outcome:
    status: int
    is_submitted: bool  # whether the report reaches the receiver


DELIVERED = Outcome(0, is_submitted=True)
NOT_SENT = Outcome(1, is_submitted=False)
NOT_CONFIRMED = Outcome(1, is_submitted=True)

OUTCOMES = {
    "clear": DELIVERED,
    "resolver-down": NOT_SENT,
    "resolver-b-down": DELIVERED,
    "router-resolver-down": NOT_SENT,
    "port-53-blocked": DELIVERED,
    "dns-ports-blocked": DELIVERED,
    "dns-hijacked": DELIVERED,
    "loss-and-delay": DELIVERED,
    "loss-beyond-provider": DELIVERED,
    "high-delay": DELIVERED,
    "uneven-delay": DELIVERED,
    "slow-city": DELIVERED,
    "silent-city": DELIVERED,
    "small-mtu": DELIVERED,
    "gateway-silent": NOT_SENT,
    "line-down": NOT_SENT,
    "no-default-route": NOT_SENT,
    "no-address": NOT_SENT,
    "routing-loop": DELIVERED,
    "path-ends-early": DELIVERED,
    "vpn": DELIVERED,
    "other-resolver": DELIVERED,
    "router-asks-provider": DELIVERED,
    "clock-wrong": DELIVERED,
    "captive-portal": NOT_SENT,
    "block-page": DELIVERED,
    "no-block-page": DELIVERED,
    "block-page-down": DELIVERED,
    "web-down": DELIVERED,
    "answer-differs": DELIVERED,
    "domain-missing": DELIVERED,
    "domain-private": DELIVERED,
    "skivra-silent": NOT_SENT,
    "skivra-no-state": DELIVERED,
    "skivra-bypassed": DELIVERED,
    "submission-500": NOT_CONFIRMED,
    "submission-two-halves": DELIVERED,
    "submission-closes": NOT_CONFIRMED,
    "submission-stalls": NOT_CONFIRMED,
    "certificate-expired": NOT_SENT,
    "certificate-self-signed": NOT_SENT,
    "certificate-wrong-name": NOT_SENT,
    "disk-full": NOT_CONFIRMED,
}
