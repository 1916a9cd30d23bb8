# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The output expected in each scenario, as patterns that no other scenario matches all, except those of "clear".

From "submission-500" on, only what the program prints differs from "clear", as the plan does not test that endpoint.
"""

from output_patterns import STDERR, STDOUT, in_every, in_none, in_one, in_some

DEBUG_AT_A = "/usr/bin/dig @192.0.2.53 +time=10 debug.halvik.example txt"
DEBUG_AT_A_443 = "/usr/bin/dig @192.0.2.53 -p 443 +time=10 debug.halvik.example txt"
DEBUG_AT_A_5353 = "/usr/bin/dig @192.0.2.53 -p 5353 +time=10 debug.halvik.example txt"
DEBUG = "/usr/bin/dig +time=10 debug.halvik.example txt"
MYIP = "/usr/bin/dig +time=10 myip.halvik.example"
SHOP_AT_A = "/usr/bin/dig +time=10 shop.example @192.0.2.53"
MONITOR = "/usr/bin/curl -Ls -c /dev/null monitor.halvik.example/monitor/"
BLOCK_PAGE_MONITOR = "/usr/bin/curl -s block.halvik.example/monitor.php"
TRACEROUTE_TO_A = "/usr/sbin/traceroute -I -w 2 192.0.2.53"
TRACEROUTE_TO_API = "/usr/sbin/traceroute -I -w 2 api.halvik.example"
PING_LONDON = "/sbin/ping -c 5 router.lon.halvik.example (london router)"
PING_FRANKFURT = "/sbin/ping -c 5 router.fra.halvik.example (frankfurt router)"
SKIVRA_STATE = "/bin/cat /Library/Application Support/Halvik Skivra/skv_state.plist"
IFCONFIG = "/sbin/ifconfig -a"
NETSTAT = "/usr/sbin/netstat -rn"
SCUTIL = "/usr/sbin/scutil --dns"
PING = "/sbin/ping"

PATTERNS = {
    "clear": [
        in_one(STDOUT, r"^url=https://diagnostic\.halvik\.example/results/[0-9]+$"),
        in_every(PING, " 0% packet loss"),
        in_one(DEBUG_AT_A, r'"server resolver-a\.halvik\.example"'),
        in_one(DEBUG_AT_A, r'"source 198\.18\.7\.20"'),
        in_one(MONITOR, "^monitor: ok$"),
    ],
    "resolver-down": [
        in_one(DEBUG_AT_A, r"192\.0\.2\.53#53: connection refused"),
        in_one(DEBUG_AT_A_443, r"192\.0\.2\.53#443: connection refused"),
        in_one(TRACEROUTE_TO_A, r"^ *[0-9]+ .*\(192\.0\.2\.53\)"),
        in_every(PING, "Temporary failure in name resolution"),
        in_one(STDERR, r"Could not resolve host: diagnostic\.halvik\.example"),
    ],
    "resolver-b-down": [
        in_one("/usr/bin/dig +time=10 shop.example @198.51.100.53", r"198\.51\.100\.53#53: connection refused"),
    ],
    "router-resolver-down": [
        in_one(MYIP, r"192\.168\.1\.1#53: connection refused"),
    ],
    "port-53-blocked": [
        in_every("/usr/bin/nslookup", "no servers could be reached"),
        in_one(DEBUG_AT_A, r"192\.0\.2\.53#53: timed out"),
        in_one(DEBUG_AT_A, "no servers could be reached"),
        in_one(DEBUG_AT_A_443, r'"server resolver-a\.halvik\.example"'),
    ],
    "dns-ports-blocked": [
        in_one(DEBUG_AT_A_5353, r"192\.0\.2\.53#5353: host unreachable"),
        in_every(PING, " 0% packet loss"),
    ],
    "dns-hijacked": [
        in_one(DEBUG_AT_A, '"no resolver of Halvik was asked"'),
        in_one(DEBUG_AT_A_443, r'"server resolver-a\.halvik\.example"'),
        in_every("/usr/bin/nslookup", r'"resolver\.isp\.example"'),
    ],
    "loss-and-delay": [
        in_some(PING, " [1-9][0-9]?% packet loss"),  # some, not all
        in_none(PING, "time=[12]?[0-9]?[0-9][. ]"),  # a time below 300 ms
    ],
    "loss-beyond-provider": [
        in_some(PING, " [1-9][0-9]?% packet loss"),  # some, not all
        in_some(PING, "time=[12]?[0-9]?[0-9][. ]"),  # a time below 300 ms
        in_some("/usr/sbin/traceroute", r"^ *[3-9] .*\*"),
    ],
    "high-delay": [
        in_every(PING, " 0% packet loss"),
        in_none(PING, "time=[1-5]?[0-9]?[0-9][. ]"),  # a time below 600 ms
    ],
    "uneven-delay": [
        in_every(PING, r"/[1-9][0-9]+\.[0-9]+ ms$"),  # a deviation of 10 ms
        in_some(PING, "time=[4-9][0-9]{2}[. ]"),  # a time of 400 ms
        in_some(PING, "time=[1-3]?[0-9]?[0-9][. ]"),  # a time below 400 ms
        in_every(PING, " 0% packet loss"),
    ],
    "slow-city": [
        in_one(PING_LONDON, "time=[12]?[0-9]?[0-9][. ]"),
        in_one(PING_FRANKFURT, " 0% packet loss"),
        in_none(PING_FRANKFURT, "time=[1-6]?[0-9]?[0-9][. ]"),
    ],
    "silent-city": [
        in_one(PING_FRANKFURT, " 100% packet loss"),
        in_one(PING_LONDON, " 0% packet loss"),
        in_none(PING, " [1-9][0-9]?% packet loss"),  # some, not all
    ],
    "small-mtu": [
        in_one(IFCONFIG, "^eth0: .* mtu 1000$"),
    ],
    "gateway-silent": [
        in_one(NETSTAT, r"^0\.0\.0\.0"),
        in_one(TRACEROUTE_TO_A, r"192\.168\.1\.20 .* !H"),
    ],
    "line-down": [
        in_one(TRACEROUTE_TO_A, r"^ *1  .*192\.168\.1\.1"),
        in_one(TRACEROUTE_TO_A, "Network is unreachable"),
    ],
    "no-default-route": [
        in_every(PING, "connect: Network is unreachable"),
        in_none(NETSTAT, r"^0\.0\.0\.0"),
        in_one(STDERR, "(Couldn't|Could not) connect to server"),
    ],
    "no-address": [
        in_none(IFCONFIG, r"192\.168\.1\.20"),
    ],
    "routing-loop": [
        in_one(TRACEROUTE_TO_API, r"^[12][0-9] .*gateway\.isp\.example"),
    ],
    "path-ends-early": [
        in_one(TRACEROUTE_TO_API, r"^ *2  gateway\.isp\.example"),
        in_one(TRACEROUTE_TO_API, r"^30  \* \* \*$"),
        in_none(TRACEROUTE_TO_API, r"exchange\.example"),
    ],
    "vpn": [
        in_one(IFCONFIG, "^vpn0: .*POINTOPOINT"),
        in_one(NETSTAT, r"^128\.0\.0\.0 .* vpn0$"),
    ],
    "other-resolver": [
        in_one(SCUTIL, r"nameserver\[0\] : 8\.8\.8\.8"),
        in_one(DEBUG, '"no resolver of Halvik was asked"'),
    ],
    "router-asks-provider": [
        in_one(SCUTIL, r"nameserver\[0\] : 192\.168\.1\.1"),
        in_one(DEBUG, '"no resolver of Halvik was asked"'),
        in_one(DEBUG_AT_A, r'"server resolver-a\.halvik\.example"'),
    ],
    "clock-wrong": [
        in_one(MYIP, "^;; WHEN: .* 199[0-9]$"),
    ],
    "captive-portal": [
        in_every("/usr/bin/curl -Ls", "<title>Hotel network</title>"),
        in_one("/usr/bin/curl -LIs -c /dev/null block-id.halvik.example/", r"^Location: http://192\.168\.1\.1/login"),
        in_one(STDERR, "self-signed certificate"),
    ],
    "block-page": [
        in_one(MONITOR, r"monitor\.halvik\.example is blocked by the Halvik filter"),
        in_one("/sbin/ping -c 5 www.halvik.example (www.halvik.example)",
               r"^PING www\.halvik\.example \(203\.0\.113\.20\)"),
    ],
    "no-block-page": [
        in_one("/bin/sh -c /usr/bin/curl -v -m 2 203.0.113.77/malware.htm (Blocked page from grey IP)",
               "Download this program"),
    ],
    "block-page-down": [
        in_none(BLOCK_PAGE_MONITOR, "."),
        in_one(MONITOR, "^monitor: ok$"),
    ],
    "web-down": [
        in_one(BLOCK_PAGE_MONITOR, "^block page: ok$"),
        in_none(MONITOR, "."),
    ],
    "answer-differs": [
        in_one(SHOP_AT_A, r"198\.18\.40\.79$"),
    ],
    "domain-missing": [
        in_one(SHOP_AT_A, "status: NXDOMAIN"),
    ],
    "domain-private": [
        in_one(SHOP_AT_A, r"192\.168\.1\.80$"),
    ],
    "skivra-silent": [
        in_one("/usr/bin/dig @127.0.0.1 debug.halvik.example. txt", r"127\.0\.0\.1#53: connection refused"),
    ],
    "skivra-no-state": [
        in_one("/bin/ls /Library/Application Support/Halvik Skivra", "^beacon-logs$"),
        in_one(SKIVRA_STATE, "No such file"),
    ],
    "skivra-bypassed": [
        in_one(SKIVRA_STATE, "<key>state</key>"),
        in_one(SCUTIL, r"nameserver\[0\] : 192\.168\.1\.1"),
    ],
    "submission-500": [
        in_one(STDERR, "server replied: 500 Internal Server Error"),
        in_none(STDERR, r"could not save diagnostic_results\.txt"),
    ],
    "submission-two-halves": [
        in_one(STDOUT, r"^url=lvik\.example/results/[0-9]+$"),
    ],
    "submission-closes": [
        in_one(STDERR, "(transfer closed|end of response) with [0-9]+ bytes (remaining to read|missing)"),
    ],
    "submission-stalls": [
        in_one(STDERR, "nothing has moved for too long"),
    ],
    "certificate-expired": [
        in_one(STDERR, "certificate has expired"),
    ],
    "certificate-self-signed": [
        in_one(STDERR, "self-signed certificate"),
        in_none("/usr/bin/curl -Ls", "<title>Hotel network</title>"),
    ],
    "certificate-wrong-name": [
        in_one(STDERR, "no alternative certificate subject name matches target host name"),
        in_none("/usr/bin/curl", "Hotel network"),
    ],
    "disk-full": [
        in_one(STDERR, "server replied: 500 Internal Server Error"),
        in_one(STDERR, r"could not save diagnostic_results\.txt"),
    ],
}
