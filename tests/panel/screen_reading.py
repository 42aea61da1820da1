"""What is where on a display, found out from its pictures alone."""

import dataclasses

_MARGIN = 24  # of borders, round corners and shadows
_TEXT_HEIGHT = 5  # the least; lines and borders are lower
_TEXT_COLORS = 6  # the least in a pixel row of text with smoothed edges


@dataclasses.dataclass(frozen=True)
class Box:
    """Pixels from `left` and `top` on, `right` and `bottom` left out."""
    left: int
    top: int
    right: int
    bottom: int

    @property
    def width(self):
        return self.right - self.left

    @property
    def center(self):
        return (self.left + self.right) // 2, (self.top + self.bottom) // 2


class Picture:
    """A picture of the display: `pixels` are its rows, one after the other."""

    def __init__(self, pixels, width):
        self._rows = [pixels[start:start + width] for start in range(0, len(pixels), width)]

    def changes(self, other, left=0, top=0):
        """The box of all that is different from another picture, from `left` and `top` on; None
        when nothing is."""
        lines = [y for y in range(top, len(self._rows))
                 if self._rows[y][left:] != other._rows[y][left:]]
        if not lines:
            return None
        columns = {x for y in lines for x in range(left, len(self._rows[y]))
                   if self._rows[y][x] != other._rows[y][x]}
        return Box(min(columns), lines[0], max(columns) + 1, lines[-1] + 1)

    def pixels(self, box):
        return [color for row in self._rows[box.top:box.bottom]
                for color in row[box.left:box.right]]

    def text_lines(self, box):
        """The middles of the lines of text in a box, from top to bottom."""
        bands = []
        for y in range(box.top, box.bottom):
            colors = set(self._rows[y][box.left + _MARGIN:box.right - _MARGIN])
            if len(colors) < _TEXT_COLORS:
                continue
            if bands and y - bands[-1][1] <= 3:  # the gap in an i, or under it
                bands[-1][1] = y
            else:
                bands.append([y, y])
        return [(first + last) // 2 for first, last in bands if last - first >= _TEXT_HEIGHT]
