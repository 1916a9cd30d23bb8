# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the window shows at one moment, and where its controls are."""

ORANGE = (255, 165, 0)
DARK = (0x16, 0x16, 0x16)
WHITE = (255, 255, 255)


class Box:
    def __init__(self, left, top, right, bottom):
        self.left, self.top, self.right, self.bottom = left, top, right, bottom

    @property
    def middle(self):
        return (self.left + self.right) // 2, (self.top + self.bottom) // 2


class Picture:
    """What a window shows at one moment, and where its controls are."""

    def __init__(self, rows):
        self.rows = rows
        self.background = rows[1][3:6]

    def box(self, colour, run=1):
        """The smallest box around what has one colour over at least `run` pixels side by side, or None."""
        pixel = bytes(reversed(colour))
        found = [(y, x) for y, row in enumerate(self.rows) if pixel * run in row for x in self._outermost(row, pixel)]
        if not found:
            return None
        columns = [x for _, x in found]
        return Box(min(columns), found[0][0], max(columns), found[-1][0])

    @staticmethod
    def _outermost(row, pixel):
        first = row.find(pixel)
        while first >= 0 and first % 3:
            first = row.find(pixel, first + 1)
        if first < 0:
            return []
        last = row.rfind(pixel)
        while last % 3:
            last = row.rfind(pixel, 0, last + 2)
        return [first // 3, last // 3]

    def bands(self, first=0):
        """Where rows of controls are: each box reaches from one empty line to the next, over the whole width."""
        empty = self.background * (len(self.rows[0]) // 3)
        used = [y for y in range(first, len(self.rows)) if self.rows[y] != empty]
        return [Box(0, top, len(self.rows[0]) // 3, bottom) for top, bottom in self._runs(used)]

    def pieces(self, band):
        """What stands beside each other in a band, parted by empty columns."""
        used = [x for x in range(band.right)
                if any(self.rows[y][3 * x:3 * x + 3] != self.background for y in range(band.top, band.bottom + 1))]
        return [Box(left, band.top, right, band.bottom) for left, right in self._runs(used)]

    @staticmethod
    def _runs(numbers):
        runs = []
        for number in numbers:
            if runs and runs[-1][1] == number - 1:
                runs[-1][1] = number
            else:
                runs.append([number, number])
        return runs

    @property
    def results(self):
        """The dark view with the results, or None. Letters hold that colour too, but none is as wide."""
        return self.box(DARK, run=100)

    @property
    def link(self):
        return self.box(ORANGE) if self.results else None

    @property
    def text(self):
        """Whether the results hold text that is no link."""
        results = self.results
        pixel = bytes(reversed(WHITE))
        return bool(results) and any(pixel in row[3 * results.left + 6:3 * results.right - 6]
                                     for row in self.rows[results.top + 2:results.bottom - 1])

    @property
    def start_button(self):
        """Before the first run only, when nothing stands below."""
        return self.pieces(self.bands()[-1])[-1]

    def reaches_below(self, box):
        return self.bands()[-1].bottom > box.bottom

    @property
    def link_buttons(self):
        """The copy and the open button, below the results."""
        return self.pieces(self.bands(first=self.results.bottom + 3)[0])[-2:]
