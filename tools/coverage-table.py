#!/usr/bin/env python3
"""Table of the lines of each room that the tests reach, from the JSON report of gcovr (tools/coverage.sh makes it).

Exits with 1 where a room is below its share. COVERAGE_LINES=1 lists the lines that were not reached.
"""
import json
import os
import re
import sys

LEAST = 90.0
LEAST_IN_WINDOWS = 75.0


def source_of(path):
    """Name below src; headers are found through the links build/.../roots/ROOM/ROOM. None for what the build makes."""
    linked = re.match(r"build/[^/]+/roots/[^/]+/(.*)", path)
    if linked:
        path = "src/" + linked.group(1)
    return path if path.startswith("src/") else None


def room_of(path):
    """src/clean/ui/X.cpp -> clean/ui, src/core/X.h -> core."""
    parts = path.split("/")
    return "/".join(parts[1:3]) if parts[2] == "ui" else parts[1]


def least_of(room):
    return LEAST_IN_WINDOWS if room == "app" or room.endswith("/ui") else LEAST


def ranges(numbers):
    texts = []
    for n in numbers:
        if texts and texts[-1][1] == n - 1:
            texts[-1][1] = n
        else:
            texts.append([n, n])
    return ", ".join(str(a) if a == b else f"{a}-{b}" for a, b in texts)


def main():
    with open(sys.argv[1], encoding="utf-8") as report:
        files = json.load(report)["files"]
    counts = {}  # of each source and line, the largest
    for entry in files:
        source = source_of(entry["file"])
        for line in entry["lines"] if source else ():
            if not line.get("gcovr/noncode"):
                lines = counts.setdefault(source, {})
                lines[line["line_number"]] = max(line["count"], lines.get(line["line_number"], 0))
    rooms, missed = {}, []
    for source, lines in sorted(counts.items()):
        room = rooms.setdefault(room_of(source), [0, 0])
        room[0] += sum(1 for count in lines.values() if count > 0)
        room[1] += len(lines)
        if 0 in lines.values():
            missed.append((source, sorted(line for line, count in lines.items() if count == 0)))
    if not rooms:
        sys.exit("coverage: the report has no file of src")

    if os.environ.get("COVERAGE_LINES"):
        for path, lines in missed:
            print(f"{path}: {ranges(lines)}")
    print("| room | lines | reached | at least |\n|---|---|---|---|")
    below = []
    for windows in (False, True):
        ours = {r: v for r, v in rooms.items() if (least_of(r) == LEAST_IN_WINDOWS) == windows}
        for room, (reached, total) in ours.items():
            share = 100.0 * reached / total
            print(f"| `{room}` | {total} | {share:.1f} % | {least_of(room):.0f} % |")
            if share < least_of(room):
                below.append(room)
        name = "windows (`app`, `*/ui`)" if windows else "everything else"
        reached, total = (sum(v[i] for v in ours.values()) for i in (0, 1))
        if total:
            print(f"| **{name}** | {total} | **{100.0 * reached / total:.1f} %** | |")
    if below:
        sys.exit("coverage: too few lines are reached in " + ", ".join(below))


if __name__ == "__main__":
    main()
