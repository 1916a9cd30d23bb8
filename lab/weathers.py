# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The weathers: what each changes in a network that is otherwise in order."""

import dataclasses

# How the submission endpoint may behave.
ANSWERS, FAILS, TWO_PIECES, CLOSES, STALLS = "answers", "fails", "two-pieces", "closes", "stalls"


@dataclasses.dataclass(frozen=True)
class Weather:
    summary: str
    silent_servers: tuple = ()  # their programs do not run, by the name of their settings
    firewall: str = ""  # a file of rules for the home router
    delay_ms: float = 0  # what the customer's line adds to every ping
    loss: float = 0  # the share of packets that get lost on the way to the customer
    default_route: bool = True  # of the user's machine
    policy: str = ""  # a file of names that the filter leads elsewhere
    submission: str = ANSWERS
    certificate: str = "good"
    disk_full: bool = False  # the user's


WEATHERS = {
    "clear": Weather("everything is in order"),
    "resolver-down": Weather("the service's resolver A does not run", silent_servers=("resolver-a",)),
    "port-53-blocked": Weather("the local network lets nobody ask on port 53", firewall="port-53-blocked.nft"),
    "dns-hijacked": Weather("the provider's resolver answers for all others", firewall="dns-hijacked.nft"),
    "loss-and-delay": Weather("30 % loss and 300 ms more on the customer's line", delay_ms=300, loss=0.3),
    "no-default-route": Weather("the user's machine knows no way out", default_route=False),
    "captive-portal": Weather("a hotel's portal answers every web request", firewall="captive-portal.nft"),
    "block-page": Weather("the filter leads harmless names to the block page", policy="block-page.conf"),
    "submission-500": Weather("the submission endpoint fails with status 500", submission=FAILS),
    "submission-two-pieces": Weather("it answers in two pieces", submission=TWO_PIECES),
    "submission-closes": Weather("it closes in the middle of its answer", submission=CLOSES),
    "submission-stalls": Weather("it never answers", submission=STALLS),
    "certificate-expired": Weather("its certificate has expired", certificate="expired"),
    "certificate-self-signed": Weather("its certificate is vouched for by nobody", certificate="self-signed"),
    "certificate-wrong-name": Weather("its certificate is another host's", certificate="wrong-name"),
    "disk-full": Weather("submission fails, and the user's disk is full", submission=FAILS, disk_full=True),
}
