#!/usr/bin/env python3
"""Runs programs on inputs of growing size and fits how time and memory grow; tools/load.sh builds and calls it.

A time is the smallest of some repetitions, for other programs only ever add to it; the large files are run once. Memory is
sampled every 5 ms: what the program allocated, and what it held of mapped files at the same time. A fit is by least
squares: y = a + b n with the standard deviation of b, and, to see whether a straight line is enough, the quadratic term
of y = a + b n + c n^2 at the largest n as a share of y there.
"""
import glob
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time


class Measured:
    def __init__(self, seconds, anonymous, mapped, output):
        self.seconds, self.anonymous, self.mapped, self.output = seconds, anonymous, mapped, output


def memory_of(pid):
    """Allocated and file-backed resident memory of a process, MB."""
    values = {"RssAnon": 0.0, "RssFile": 0.0}
    try:
        with open(f"/proc/{pid}/status", encoding="ascii", errors="replace") as status:
            for line in status:
                name, _, rest = line.partition(":")
                if name in values:
                    values[name] = int(rest.split()[0]) / 1024
    except (FileNotFoundError, ProcessLookupError):
        pass
    return values["RssAnon"], values["RssFile"]


def run(words, check=True):
    """Runs a program to its end."""
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        began = time.perf_counter()
        process = subprocess.Popen(words, stdout=out, stderr=err)
        anonymous = mapped = 0.0
        while process.poll() is None:
            now = memory_of(process.pid)
            anonymous, mapped = max(anonymous, now[0]), max(mapped, now[1])
            time.sleep(0.005)
        seconds = time.perf_counter() - began
        out.seek(0)
        err.seek(0)
        if check and process.returncode != 0:
            sys.exit(f"load: {' '.join(words)[:300]} ended with {process.returncode}: {err.read().decode()[-500:]}")
        return Measured(seconds, anonymous, mapped, out.read().decode())


def best(words, repeats, before=None):
    """The quickest of some runs, with the largest memory of all."""
    runs = []
    for _ in range(repeats):
        if before:
            before()
        runs.append(run(words))
    quickest = min(runs, key=lambda r: r.seconds)
    return Measured(quickest.seconds, max(r.anonymous for r in runs), max(r.mapped for r in runs), quickest.output)


def solve(matrix, right):
    """Gauss with pivots; small systems."""
    n = len(right)
    rows = [list(matrix[i]) + [right[i]] for i in range(n)]
    for c in range(n):
        p = max(range(c, n), key=lambda r: abs(rows[r][c]))
        rows[c], rows[p] = rows[p], rows[c]
        for r in range(n):
            if r != c:
                f = rows[r][c] / rows[c][c]
                rows[r] = [a - f * b for a, b in zip(rows[r], rows[c])]
    return [rows[i][n] / rows[i][i] for i in range(n)]


def fit(xs, ys, degree):
    """Coefficients of the least-squares polynomial in x / max(xs), and their standard deviations."""
    scaled = [x / max(xs) for x in xs]
    size = degree + 1
    normal = [[sum(x ** (i + j) for x in scaled) for j in range(size)] for i in range(size)]
    found = solve(normal, [sum(y * x**i for x, y in zip(scaled, ys)) for i in range(size)])
    left = [y - sum(c * x**i for i, c in enumerate(found)) for x, y in zip(scaled, ys)]
    freedom = len(xs) - size
    variance = sum(e * e for e in left) / freedom if freedom > 0 else float("nan")
    errors = [(variance * solve(normal, [float(i == k) for i in range(size)])[k]) ** 0.5 for k in range(size)]
    return found, errors


def growth(what, unit, per, xs, ys):
    """One line about how ys grow; per: how many of n the slope is told for, and their name."""
    count, name = per
    line, line_error = fit(xs, ys, 1)
    curve, curve_error = fit(xs, ys, 2)
    scale = count / max(xs)
    share, share_error = (100 * v / ys[-1] for v in (curve[2], curve_error[2]))
    return (f"- {what}: {line[0]:.3g} {unit} + {line[1] * scale:.3g} ± {line_error[1] * scale:.1g} {unit} for each {name}; "
            f"quadratic term at the largest {share:+.0f} ± {share_error:.0f} %")


def table(head, rows):
    print("| " + " | ".join(head) + " |")
    print("|" + "---|" * len(head))
    for row in rows:
        print("| " + " | ".join(f"{c:.3g}" if isinstance(c, float) else str(c) for c in row) + " |")
    print()


def print_machine():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        print(next(line for line in info if line.startswith("model name")).partition(":")[2].strip(), os.cpu_count(), "cores")


class Load:
    def __init__(self, build, folder, repeats):
        self.cli = os.path.join(build, "src/cli/lumo-cli")
        self.make = os.path.join(build, "bench/load/lumo_load_files")
        self.list = os.path.join(build, "bench/load/lumo_load_list")
        self.folder, self.repeats = folder, repeats

    def path(self, name):
        return os.path.join(self.folder, name)

    def image(self, files, repeats=None, more=()):
        words = [self.cli, "run", "--folder", self.path("maps"), "--iterations", "100", *more, *files]
        return best(words, repeats or self.repeats)

    def show(self, title, size, per, columns, rows):
        """rows: (n, then a number for each column); columns: (head, unit to fit in or None)."""
        print(f"\n### {title}\n")
        table([size] + [head for head, _ in columns], rows)
        for i, (head, unit) in enumerate(columns):
            if unit:
                print(growth(head.split(",")[0], unit, per, [r[0] for r in rows], [r[1 + i] for r in rows]))
        sys.stdout.flush()

    def files(self):
        rows = []
        for n in (250, 500, 1000, 1500, 2000):
            made = self.path(f"many-{n}")
            run([self.make, "many", made, str(n)])
            took = self.image(sorted(glob.glob(made + "/*.uvx")))
            rows.append((n, took.seconds, took.anonymous, took.mapped))
            shutil.rmtree(made)
        self.show("A run on many files", "files", (1000, "1000 files"),
                  [("time, s", "s"), ("allocated, MB", "MB"), ("mapped, MB", None)], rows)

    def window(self, title, inputs):
        rows = []
        for made in inputs:
            took = best([self.list, made], self.repeats)
            told = json.loads(took.output)
            rows.append((told["rows"], told["files"], told["add"], told["check"], told["close"], told["start"], took.anonymous))
        self.show(title, "rows", (1000, "1000 rows"),
                  [("files", None), ("add, s", "s"), ("check a row, s", "s"), ("close, s", "s"), ("start again, s", "s"),
                   ("allocated, MB", "MB")], rows)

    def in_list(self):
        inputs = []
        for n in (250, 500, 1000, 1500, 2000):
            inputs.append(self.path(f"list-{n}"))
            run([self.make, "many", inputs[-1], str(n)])
        self.window("The main window with many files", inputs)
        for made in inputs:
            shutil.rmtree(made)

    def rows(self):
        imaging, importing, spectra = [], [], []
        for n in (4096, 8192, 16384, 32768, 65536):
            uvx, uvfits, out = self.path("rows.uvx"), self.path("rows.uvf"), self.path("imported")
            run([self.make, "bands", uvx, "1", str(n), "45"])
            took = self.image([uvx])
            info = best([self.cli, "info", uvx], self.repeats)
            imaging.append((n, took.seconds, took.anonymous, took.mapped, info.seconds))
            run([self.make, "channels", uvfits, str(n), "45"])
            took = best([self.cli, "import", uvfits, "--average", "1", "--out", out], self.repeats,
                        lambda: shutil.rmtree(out, ignore_errors=True))
            importing.append((n, took.seconds, took.anonymous))
            took = best([self.cli, "measure", "--folder", self.path("maps"), "--points", str(n)], self.repeats)
            picture = best([self.cli, "plot", "--folder", self.path("maps"), "--points", str(n), "--out", self.path("s.png")],
                           self.repeats)
            spectra.append((n, took.seconds, took.anonymous, picture.seconds, picture.anonymous))
        per = (1000, "1000 frequencies")
        self.show("A run on many IFs, 45 groups", "IFs", per,
                  [("run, s", "s"), ("allocated, MB", "MB"), ("mapped, MB", None), ("info, s", "s")], imaging)
        self.show("Importing UVFITS channels as IFs, 45 groups", "IFs", per, [("import, s", "s"), ("allocated, MB", "MB")],
                  importing)
        self.show("Spectra", "frequencies", per,
                  [("measure, s", "s"), ("allocated, MB", "MB"), ("plot, s", "s"), ("allocated by it, MB", "MB")], spectra)

    def selections(self):
        rows, inputs = [], []
        for n in (16, 32, 64, 128, 256):
            uvx = self.path("selections.uvx")
            run([self.make, "bands", uvx, str(n), "256", str(45 * n)])
            took = self.image([uvx])
            rows.append((256 * n, took.seconds, took.anonymous, took.mapped))
            inputs.append(self.path(f"window-{n}"))
            os.makedirs(inputs[-1], exist_ok=True)
            for i in range(n):
                run([self.make, "bands", f"{inputs[-1]}/{i:03d}.uvx", "256", "1", "45"])
        self.show("A run on frequency selections of 256 IFs, 45 groups each", "frequencies", (1000, "1000 frequencies"),
                  [("run, s", "s"), ("allocated, MB", "MB"), ("mapped, MB", None)], rows)
        self.window("The main window with 256 selections of each file", inputs)
        for made in inputs:
            shutil.rmtree(made)

    def large(self):
        rows = []
        for gigabytes in (2.5, 5.0, 10.0, 20.0):
            path = self.path("large.uvx")
            run([self.make, "sparse", path, str(int(gigabytes * 1e9))])
            took = self.image([path], repeats=1)
            rows.append((gigabytes, took.seconds, took.anonymous, took.mapped))
            os.remove(path)
        self.show("A run on one long file, 8 IFs of 16 channels", "GB", (1, "GB"),
                  [("time, s", "s"), ("allocated, MB", "MB"), ("mapped, MB", "MB")], rows)


def run_parts(name, make, parts, repeats):
    """Measures the parts that the command line names after the build folder, all without a name; make: see Load."""
    if len(sys.argv) < 2 or any(word not in parts for word in sys.argv[2:]):
        sys.exit(f"{name}: call tools/{name}.sh " + " ".join(f"[{part}]" for part in parts))
    print_machine()
    with tempfile.TemporaryDirectory(prefix=f"lumo-{name}-", dir=os.environ.get(f"{name.upper()}_FOLDER")) as folder:
        made = make(sys.argv[1], folder, int(os.environ.get(f"{name.upper()}_REPEATS", repeats)))
        for word in sys.argv[2:] or parts:
            parts[word](made)


if __name__ == "__main__":
    run_parts("load", Load, {"files": Load.files, "list": Load.in_list, "rows": Load.rows, "selections": Load.selections,
                             "large": Load.large}, 3)
