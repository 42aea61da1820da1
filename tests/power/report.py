"""The outcome of all cuts, as people and CI read it."""

CANNOT_TRY = 77


class Report:
    """Takes what was found out, disk by disk, and tells it in the end."""

    def __init__(self, moments):
        """`moments`: the names of the cuts that have a column each; the others are random."""
        self._moments = moments
        self._rows = []
        self._broken = []
        self._open = []

    def add(self, filesystem, file_format, verdicts, complaint=None):
        """`verdicts`: one for each cut, by the name of its moment."""
        disk = f"{filesystem}, {file_format.upper()}"
        cells = [_cell(verdicts[name]) for name in self._moments]
        others = [one for name, one in verdicts.items() if name not in self._moments]
        worst = _cell(max(others, key=lambda one: one.lost))
        self._rows.append(f"| {' | '.join([*disk.split(', '), *cells, worst])} |")
        if complaint:
            self._broken.append(f"{disk}: {complaint}")
        for name, one in verdicts.items():
            if one.problem:
                lines = self._broken if one.judged else self._open
                lines.append(f"{disk}, {name}: {one.problem}")

    def add_untried(self, filesystem, reason):
        self._open.append(f"{filesystem}: {reason}")

    def status(self):
        """The program's exit status."""
        return 1 if self._broken else CANNOT_TRY if self._open else 0

    def __str__(self):
        columns = ["filesystem", "file", *self._moments, "random moments, at most"]
        lines = ["Seconds that a cut cost:", "", f"| {' | '.join(columns)} |",
                 f"|---|---|{'---:|' * (len(columns) - 2)}", *self._rows]
        for heading, found in (("Not as promised:", self._broken), ("Not judged:", self._open)):
            if found:
                lines += ["", heading, *(f"  {line}" for line in found)]
        return "\n".join(lines)


def _cell(one):
    return f"{one.lost:.1f}" if one.judged else f"({one.lost:.1f})"
