#!/usr/bin/env python3
"""Times the phases of runs of growing size, and fits lines to them; tools/growth.sh builds and calls it.

The times are those that the program tells of itself (--json). Each is the smallest of some repetitions, for other
programs only ever add to it. See load.py for the fits.
"""
import json
import os
import shutil
import sys

import load

ARRAY, BANDS, IFS, CHANNELS = "vlba", (4900, 5100), 8, 16
BASELINES = 45
RUN = ("run",)
GRID, TRANSFORM = ("run", "image", "grid"), ("run", "image", "transform")
WRITE = (("run", "image", "write"), ("run", "clean", "write"))
READ = (("run", "check"), ("run", "inspect"))
ITERATE = ("run", "clean", "iterate")


def seconds(phases, *paths):
    """Time of one or more phases together, each named from below the process on."""
    total = 0.0
    for path in paths:
        part = phases
        for name in path:
            part = next(p for p in part["parts"] if p["name"] == name)
        total += part["seconds"]
    return total


class Growth:
    def __init__(self, build, folder, repeats):
        self.cli = os.path.join(build, "src/cli/lumo-cli")
        self.folder, self.repeats = folder, repeats

    def path(self, name):
        return os.path.join(self.folder, name)

    def observe(self, visibilities):
        """Two files, as near to so many visibilities together as whole integrations allow, and their true number."""
        made = self.path("observed")
        shutil.rmtree(made, ignore_errors=True)
        hours = 8.0
        integrations = visibilities / (len(BANDS) * IFS * CHANNELS * BASELINES)
        load.run([self.cli, "simulate", "--sky", "demo/sky.json", "--array", ARRAY, "--bands", ",".join(map(str, BANDS)),
                  "--ifs", str(IFS), "--channels", str(CHANNELS), "--hours", str(hours), "--interval",
                  f"{hours * 3600 / integrations:.6f}", "--noise", "0.05", "--out", made])
        files = sorted(os.path.join(made, name) for name in os.listdir(made))
        told = json.loads(load.run([self.cli, "run", "--folder", self.path("maps"), "--iterations", "1", "--json", *files]).output)
        return files, sum(f["visibilities"] for f in told["preflight"]["files"])

    def image(self, files, size, terms, iterations, columns):
        """Seconds of each column (a tuple of phases), the smallest of the repetitions, and the largest memory, MB."""
        words = [self.cli, "run", "--folder", self.path("maps"), "--half-size", f"{size}", "--order", str(terms),
                 "--iterations", str(iterations), "--json", *files]
        runs = [load.run(words) for _ in range(self.repeats)]
        timings = [json.loads(r.output)["timing"] for r in runs]
        return [min(seconds(t, *column) for t in timings) for column in columns] + [max(r.anonymous for r in runs)]

    def show(self, title, size, per, heads, rows, scale=lambda n: n):
        """rows: (n, then a number for each head); scale: what of n the fit is linear in."""
        print(f"\n### {title}\n")
        load.table([size, *heads], rows)
        for i, head in enumerate(heads):
            name, unit = head.split(", ")
            print(load.growth(name, unit, per, [scale(r[0]) for r in rows], [r[1 + i] for r in rows]))
        sys.stdout.flush()

    def visibilities(self):
        rows = []
        for millions in (8, 16, 32, 48, 64):
            files, count = self.observe(millions * 1e6)
            rows.append((count / 1e6, *self.image(files, 512, 2, 1, [READ, [GRID], [TRANSFORM], [RUN]])))
        self.show("Visibilities: two bands of 8 IFs x 16 channels, 512 x 512 pixels, 2 terms", "million visibilities",
                  (1, "million"), ["reading before the run, s", "gridding, s", "transforms, s", "run, s", "allocated, MB"], rows)

    def iterations(self):
        files, _ = self.observe(1e6)
        rows = [(n, *self.image(files, 512, 2, n, [[ITERATE]])) for n in (2000, 4000, 8000, 12000, 16000)]
        self.show("Iterations: 512 x 512 pixels, 2 terms", "iterations", (1000, "1000 iterations"),
                  ["CLEAN, s", "allocated, MB"], rows)

    def pixels(self):
        files, _ = self.observe(1e6)
        sizes = ((256, 256), (512, 256), (512, 512), (1024, 512), (1024, 1024))
        rows = [(x * y / 1e6, *self.image(files, f"{x},{y}", 2, 1000, [[ITERATE], [TRANSFORM], WRITE])) for x, y in sizes]
        self.show("Pixels: 2 terms, 1000 iterations", "million pixels", (1, "million"),
                  ["CLEAN, s", "transforms, s", "writing, s", "allocated, MB"], rows)

    def terms(self):
        files, _ = self.observe(1e6)
        measured = [(n, *self.image(files, 512, n, 1000, [[ITERATE], [TRANSFORM], WRITE])) for n in (1, 2, 3, 4)]
        self.show("Terms N: 512 x 512 pixels, 1000 iterations; fits over N^2", "N", (1, "N^2"), ["CLEAN, s"],
                  [row[:2] for row in measured], lambda n: n * n)
        self.show("Terms N: fits over the 3 N - 1 maps and beams", "N", (1, "map"),
                  ["transforms, s", "writing, s", "allocated, MB"], [(r[0], *r[2:]) for r in measured], lambda n: 3 * n - 1)


if __name__ == "__main__":
    load.run_parts("growth", Growth, {"visibilities": Growth.visibilities, "iterations": Growth.iterations,
                                      "pixels": Growth.pixels, "terms": Growth.terms}, 5)
