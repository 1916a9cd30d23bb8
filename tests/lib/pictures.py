# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the window shows at one moment, and where its controls are."""

import itertools

import PIL.Image
import PIL.ImageChops

ORANGE = (255, 165, 0)
DARK = (0x16, 0x16, 0x16)
WHITE = (255, 255, 255)

RUN = 50  # the width of a stretch of one colour that is wider than any letter
SET = 255  # in a mask


class Box:
    """A part of a picture, with its last row and column."""

    def __init__(self, left, top, right, bottom):
        self.left, self.top, self.right, self.bottom = left, top, right, bottom


class Picture:
    """What a window shows at one moment, and where its controls are."""

    def __init__(self, image):
        self.image = image
        self.background = image.getpixel((1, 1))

    def differs_from(self, colour):
        """A mask of the pixels that have another colour."""
        difference = PIL.ImageChops.difference(self.image, PIL.Image.new("RGB", self.image.size, colour))
        red, green, blue = (band.point(lambda value: SET if value else 0) for band in difference.split())
        return PIL.ImageChops.lighter(PIL.ImageChops.lighter(red, green), blue)

    def mask(self, colour):
        """A mask of the pixels that have this colour."""
        return PIL.ImageChops.invert(self.differs_from(colour))

    def box(self, colour):
        """The smallest box around what has one colour, or None."""
        return _box(self.mask(colour).getbbox())

    def rows(self):
        """Where rows of controls are: each box reaches from one empty line to the next, over the whole width."""
        _, lines = self.differs_from(self.background).getprojection()
        return [Box(0, top, self.image.width, bottom) for top, bottom in _runs(lines)]

    @property
    def results(self):
        """The dark view with the results, or None. Letters hold that colour too, but none is as wide."""
        mask = self.mask(DARK)
        width, height = mask.size
        # A pixel of the reduced mask is set only where all RUN pixels beside each other are.
        stretches = mask.reduce((RUN, 1), box=(0, 0, width - width % RUN, height))
        rows = stretches.point(lambda value: SET if value == SET else 0).getbbox()
        if rows is None:
            return None
        _, top, _, bottom = rows
        left, _, right, _ = mask.crop((0, top, width, bottom)).getbbox()
        return _box((left, top, right, bottom))

    @property
    def link(self):
        return self.box(ORANGE) if self.results else None

    @property
    def text(self):
        """Whether the results hold text that is no link."""
        results = self.results
        if results is None:
            return False
        inside = (results.left + 2, results.top + 2, results.right - 1, results.bottom - 1)
        return self.mask(WHITE).crop(inside).getbbox() is not None

    @property
    def is_painted(self):
        """Whether a purpose, three fields and a button can be seen."""
        return len(self.rows()) > 4


def _box(bounds):
    """The box of bounds as the imaging library gives them, whose right and bottom are the first ones outside."""
    if bounds is None:
        return None
    left, top, right, bottom = bounds
    return Box(left, top, right - 1, bottom - 1)


def _runs(values):
    """The first and last places of the runs of values that are not zero."""
    places = enumerate(values)
    for is_set, run in itertools.groupby(places, key=lambda place: bool(place[1])):
        if is_set:
            run = list(run)
            yield run[0][0], run[-1][0]
