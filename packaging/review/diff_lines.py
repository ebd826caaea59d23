"""The lines of a new file that a diff shows: services take comments on these lines only."""

import re

HUNK = re.compile(r"@@ -(\d+)(?:,(\d+))? \+(\d+)(?:,(\d+))? @@")


class Place:
    """A line of the new file in a diff. `old_line` is None for an added line."""

    def __init__(self, hunk, old_line):
        self.hunk, self.old_line = hunk, old_line


def lines_of(patch):
    """The place of each line, by its number, from 1. Empty for a file without a patch, which the service does not show."""
    places = {}
    old = new = old_end = new_end = hunk = 0
    for line in (patch or "").split("\n"):
        if old >= old_end and new >= new_end:  # between hunks
            if match := HUNK.match(line):
                old, old_count, new, new_count = (1 if group is None else int(group) for group in match.groups())
                old_end, new_end, hunk = old + old_count, new + new_count, hunk + 1
            continue
        if line.startswith("\\"):
            continue
        if not line.startswith("-"):
            places[new] = Place(hunk, None if line.startswith("+") else old)
            new += 1
        if not line.startswith("+"):
            old += 1
    return places


def is_shown(places, first, last):
    """Whether the diff shows these lines in one piece."""
    if last not in places or last - first >= len(places):
        return False
    return all(i in places and places[i].hunk == places[last].hunk for i in range(first, last + 1))
