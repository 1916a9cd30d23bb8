# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The lab's long-distance lines: a process that carries packets between pairs of tunnels, with a delay and with losses.

It does what the kernel's netem does, and also works where the kernel has none; it ends with its standard input.

usage: line.py NAME:DESCRIPTOR:DESCRIPTOR:DELAY...     the delay is one way, in seconds

"NAME DELAY JITTER LOSS" on standard input adds to a line's delay, adds up to the jitter at random, drops this share of
the packets from its first end, and is answered by a line.
"""

import heapq
import itertools
import os
import random
import select
import sys
import time

LONGEST_PACKET = 65536


class Direction:
    """One way of a line."""

    def __init__(self, source, target, delay):
        self.source = source
        self.target = target
        self.delay = delay
        self.extra_delay = 0.0
        self.jitter = 0.0
        self.loss = 0.0


class Carrier:
    def __init__(self, directions, random_source):
        self._directions = {direction.source: direction for direction in directions}
        self._random = random_source
        self._waiting = []  # a heap of (due time, number, target, packet)
        self._numbers = itertools.count()

    def receive(self, source, now):
        """Reads all packets that wait at one end."""
        direction = self._directions[source]
        while True:
            try:
                packet = os.read(source, LONGEST_PACKET)
            except BlockingIOError:
                return
            if self._random.random() >= direction.loss:
                due = now + direction.delay + direction.extra_delay + direction.jitter * self._random.random()
                heapq.heappush(self._waiting, (due, next(self._numbers), direction.target, packet))

    def deliver(self, now):
        """Writes what is due. Returns the seconds until more is due, None if nothing waits."""
        while self._waiting and self._waiting[0][0] <= now:
            *_, target, packet = heapq.heappop(self._waiting)
            try:
                os.write(target, packet)
            except OSError:
                pass  # a full queue or a device that is down: the packet is lost, as on any line
        return self._waiting[0][0] - now if self._waiting else None


def main(arguments):
    lines, directions = {}, []
    for argument in arguments:
        name, first, second, delay = argument.split(":")
        lines[name] = (Direction(int(first), int(second), float(delay)),
                       Direction(int(second), int(first), float(delay)))
        directions += lines[name]
    carrier = Carrier(directions, random.Random(1))
    poll = select.epoll()
    for descriptor in [sys.stdin.fileno(), *(direction.source for direction in directions)]:
        poll.register(descriptor, select.EPOLLIN)
    pause = None
    while True:
        for descriptor, _ in poll.poll(pause):
            if descriptor != sys.stdin.fileno():
                carrier.receive(descriptor, time.monotonic())
            elif not change(lines, os.read(descriptor, LONGEST_PACKET)):
                return
        pause = carrier.deliver(time.monotonic())


def change(lines, request):
    """Carries out one request and confirms it."""
    if request:
        name, delay, jitter, loss = request.decode().split()
        from_first, from_second = lines[name]
        from_first.extra_delay = from_second.extra_delay = float(delay)
        from_first.jitter = from_second.jitter = float(jitter)
        from_first.loss = float(loss)
        print("done", flush=True)
    return request


if __name__ == "__main__":
    main(sys.argv[1:])
