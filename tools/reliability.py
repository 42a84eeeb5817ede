# SPDX-License-Identifier: GPL-3.0-or-later
"""What tools/reliability.sh runs; see there."""

import argparse
import fcntl
import hashlib
import itertools
import os
import random
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

TEMPORARY = re.compile(r"\.lumo-[0-9a-f]{16}\.tmp")
NOBODY = 65534
WAIT = 120  # seconds: far above any of these commands

SKY = """{"name": "sky", "ra_deg": 10, "dec_deg": 50, "reference_mhz": 5000, "components": [
  {"name": "c", "type": "point", "east_mas": 0.2, "north_mas": -0.1, "flux_jy": 1, "index": -0.5}]}"""
CIRCLE = "# Region file format: DS9 version 4.1\nimage\ncircle(8,8,3)\n"


def digest(path):
    """The bytes of a file; the date of a PDF left out."""
    data = Path(path).read_bytes()
    if data.startswith(b"%PDF"):
        data = re.sub(rb"\(D:[^)]*\)|<xmp:[A-Za-z]*Date>[^<]*<|<xmpMM:DocumentID>[^<]*<|/ID \[[^]]*\]", b"", data)
        if not data.rstrip().endswith(b"%%EOF"):
            return "cut"
    return hashlib.sha256(data).hexdigest()


def state(folder):
    """Names and digests of the files of a folder, and the temporary names in it."""
    files, temporary = {}, []
    for entry in os.scandir(folder):
        if TEMPORARY.fullmatch(entry.name):
            temporary.append(entry.name)
        elif entry.is_file():
            files[entry.name] = digest(entry.path)
    return files, temporary


def uvfits(path, scale):
    """A random-groups file: one IF at 5 GHz, one channel, RR and LL."""
    cards = []

    def card(name, value):
        if isinstance(value, bool):
            text = f"{'T' if value else 'F':>20}"
        elif isinstance(value, str):
            text = f"'{value:<8}'"
        else:
            text = f"{value!r:>20}".replace("e", "E")
        cards.append(f"{name:<8}= {text}".ljust(80))

    axes = [("COMPLEX", 3, 1.0, 1.0), ("STOKES", 2, -1.0, -1.0), ("FREQ", 1, 5e9, 1e6), ("RA", 1, 10.0, 1.0), ("DEC", 1, 50.0, 1.0)]
    parameters = ["UU---SIN", "VV---SIN", "WW---SIN", "BASELINE", "DATE", "DATE"]
    groups = 30000
    card("SIMPLE", True), card("BITPIX", -32), card("NAXIS", 6), card("NAXIS1", 0)
    for n, axis in enumerate(axes, 2):
        card(f"NAXIS{n}", axis[1])
    card("EXTEND", True), card("GROUPS", True), card("PCOUNT", len(parameters)), card("GCOUNT", groups)
    for n, (name, _, value, step) in enumerate(axes, 2):
        card(f"CTYPE{n}", name), card(f"CRVAL{n}", value), card(f"CRPIX{n}", 1.0), card(f"CDELT{n}", step)
    for n, name in enumerate(parameters, 1):
        card(f"PTYPE{n}", name), card(f"PSCAL{n}", 1.0), card(f"PZERO{n}", 0.0)
    card("OBJECT", "SRC"), card("EQUINOX", 2000.0)
    cards.append("END".ljust(80))
    header = "".join(cards).encode()
    data = b"".join(
        struct.pack(">12f", 1e-6 * (g % 97 + 1), 1e-6 * (g % 89 - 40), 0, 258, 2450000.0, g / groups, scale, 0.5, 1, scale, 0.25, 1)
        for g in range(groups))
    pad = lambda block, fill: block + fill * (-len(block) % 2880)
    Path(path).write_bytes(pad(header, b" ") + pad(data, b"\0"))


class Job:
    """A command that writes into a folder, with two sets of products: what it wrote in an earlier life and writes now."""

    def __init__(self, name, commands, removes=False):
        self.name = name
        self.commands = commands  # of an output folder, for set 0 and 1
        self.removes = removes  # the command removes old products before it writes new ones
        self.sets = []
        self.seconds = 0.0


class Table:
    def __init__(self):
        self.rows = []
        self.failures = []

    def add(self, what, count, result):
        self.rows.append((what, count, result))
        print(f"{what:<58} {count:>6}  {result}", flush=True)

    def fail(self, what):
        self.failures.append(what)
        print(f"FAILED: {what}", flush=True)


class Tester:
    def __init__(self, options, work):
        self.options = options
        self.work = work
        self.table = Table()
        self.random = random.Random(options.seed)
        build = Path(options.build).resolve()
        self.cli = str(build / "src/cli/lumo-cli")
        self.writer = str(build / "tests/reliability/lumo_store_writer")
        self.environment = dict(os.environ, SOURCE_DATE_EPOCH="1700000000", QT_QPA_PLATFORM="offscreen")
        # One folder for all: some products name their place.
        self.out = work / "out"

    def start(self, command, **more):
        return subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, env=self.environment, text=True, **more)

    def call(self, command, **more):
        """Exit status (negative: the signal) and standard error."""
        process = self.start(command, **more)
        try:
            _, err = process.communicate(timeout=WAIT)
        except subprocess.TimeoutExpired:
            process.kill()
            _, err = process.communicate()
            return "hangs", err
        return process.returncode, err

    def must(self, command):
        status, err = self.call(command)
        if status != 0:
            sys.exit(f"{' '.join(map(str, command))}: exit status {status}\n{err}")

    def fresh(self, products=None):
        shutil.rmtree(self.out, ignore_errors=True)
        if products is None:
            self.out.mkdir()
        else:
            shutil.copytree(products, self.out)

    # -- the two sets of every job

    def prepare(self):
        w = self.work
        (w / "sky.json").write_text(SKY)
        (w / "area.reg").write_text(CIRCLE)
        simulate = [self.cli, "simulate", "--sky", w / "sky.json", "--array", "vlba", "--ifs", "2"]
        self.must(simulate + ["--bands", "4800,5200", "--interval", "600", "--out", w / "uvx"])
        self.files = sorted(str(p) for p in (w / "uvx").iterdir())
        for i in (0, 1):
            (w / f"fits{i}").mkdir()
            uvfits(w / f"fits{i}/data.uvfits", 1.0 + i)
        run = [self.cli, "run", *self.files, "--index-error", "--threads", "1"]
        maps, bands = [], []
        for i in (0, 1):
            self.must(run + ["--half-size", "16", "--folder", w / f"maps{i}", "--iterations", str(20 + i)])
            maps.append(w / f"maps{i}/MFS^cln0.exm")
            for n, file in enumerate(self.files):
                self.must([self.cli, "run", file, "--order", "1", "--half-size", "16", "--folder", w / f"band{i}{n}", "--iterations",
                           str(20 + 30 * i)])
            bands.append([w / f"band{i}{n}/MFS^cln0.exm" for n in range(len(self.files))])
        jobs = [
            Job("run, 16 x 16 pixels", lambda out, i: run + ["--half-size", "16", "--folder", out, "--iterations", str(20 + 30 * i),
                                                             "--log", out / "clean.tsv"], removes=True),
            Job("run, 256 x 256 pixels", lambda out, i: run + ["--folder", out, "--iterations", str(20 + 30 * i)], removes=True),
            Job("import", lambda out, i: [self.cli, "import", w / f"fits{i}/data.uvfits", "--out", out]),
            Job("simulate", lambda out, i: simulate + ["--bands", "4800,5000,5200", "--interval", "60", "--noise", "0.1", "--seed",
                                                       str(i), "--out", out]),
            Job("fit --diagnostics", lambda out, i: [self.cli, "fit", *bands[i], "--regions", w / "area.reg",
                                                     "--diagnostics", out / "points.txt"]),
        ]
        if self.options.draws:
            for kind in ("png", "svg", "pdf"):
                jobs.append(Job(f"plot .{kind}", lambda out, i, kind=kind: [self.cli, "plot", maps[i], "--out", out / f"map.{kind}"]))
        for job in jobs:
            for i in (0, 1):
                self.fresh()
                begin = time.monotonic()
                self.must(job.commands(self.out, i))
                job.seconds = time.monotonic() - begin
                files, _ = state(self.out)
                job.sets.append(files)
                shutil.copytree(self.out, w / f"{job.name} {i}")
            if not any(job.sets[0][name] != job.sets[1][name] for name in job.sets[0]):
                sys.exit(f"{job.name}: the two sets are the same, so nothing could be told")
        return jobs

    def check_whole(self, job, where, old, failed_command=True):
        """Every name of the folder is whole, old or new; returns how many names are absent, and the temporary names."""
        files, temporary = state(self.out)
        names = set(job.sets[0]) | set(job.sets[1])
        for name, bits in files.items():
            allowed = [job.sets[1].get(name)] + ([job.sets[0].get(name)] if old else [])
            if bits not in allowed:
                self.table.fail(f"{where}: {name} is neither the old file nor the new one")
        missing = names - set(files)
        if missing and old and not job.removes:
            self.table.fail(f"{where}: {', '.join(sorted(missing))} is gone")
        return len(missing), temporary

    def check_next(self, job, where):
        """The same command again gives the right bits and cleans up."""
        status, err = self.call(job.commands(self.out, 1))
        files, temporary = state(self.out)
        if status != 0:
            self.table.fail(f"{where}: the next one ended with {status}: {err}")
        elif files != job.sets[1]:
            self.table.fail(f"{where}: the next one gave other bits")
        elif temporary:
            self.table.fail(f"{where}: the next one left {temporary}")

    # -- kill -9

    def kill(self, job, aimed):
        """Kills one command, either at any moment or while a temporary file is there; False when it had ended."""
        process = self.start(job.commands(self.out, 1))
        if aimed:
            while process.poll() is None and not any(TEMPORARY.fullmatch(name) for name in os.listdir(self.out)):
                pass
            time.sleep(self.random.uniform(0, 0.003))
        else:
            time.sleep(self.random.uniform(0, job.seconds))
        process.kill()
        process.communicate()
        return process.returncode == -signal.SIGKILL

    def kills(self, jobs):
        counts = {job.name: [0, 0, 0, 0] for job in jobs}  # killed, with a left-over, with old names, with new names
        total, turn = 0, 0
        for job in itertools.cycle(jobs):
            if total >= self.options.kills:
                break
            turn += 1
            old = turn // len(jobs) % 2 == 0
            self.fresh(self.work / f"{job.name} 0" if old else None)
            if not self.kill(job, aimed=self.random.random() < 0.5):
                continue
            total += 1
            where = f"{job.name}, kill {total}"
            _, temporary = self.check_whole(job, where, old)
            files, _ = state(self.out)
            count = counts[job.name]
            count[0] += 1
            count[1] += bool(temporary)
            count[2] += old and any(bits == job.sets[0].get(name) != job.sets[1].get(name) for name, bits in files.items())
            count[3] += any(bits == job.sets[1].get(name) != job.sets[0].get(name) for name, bits in files.items())
            self.check_next(job, where)
        for job in jobs:
            killed, left, olds, news = counts[job.name]
            self.table.add(f"kill -9: {job.name}", killed, f"all names whole; left-overs {left}, old files {olds}, new files {news}")

    # -- the settings of the desktop program

    def settings_sets(self):
        known = []
        for which in "ab":
            self.fresh()
            self.must([self.writer, self.out, which, "1"])
            known.append({name: digest(self.out / name) for name in ("ZELMFS.ini", "ZELMFS.bin")})
        if any(known[0][name] == known[1][name] for name in known[0]):
            sys.exit("the two settings are the same, so nothing could be told")
        return known

    def check_settings(self, known, where):
        for name in ("ZELMFS.ini", "ZELMFS.bin"):
            try:
                bits = digest(self.out / name)
            except FileNotFoundError:
                continue
            if bits not in (known[0][name], known[1][name]):
                self.table.fail(f"{where}: {name} is half written")

    def settings(self):
        known = self.settings_sets()
        kills = max(self.options.kills // 5, 5)
        left = 0
        self.fresh()
        for i in range(kills):
            process = subprocess.Popen([self.writer, self.out, "ab", "0"], stdout=subprocess.PIPE, text=True)
            process.stdout.readline()
            time.sleep(self.random.uniform(0, 0.03))
            process.kill()
            process.communicate()
            self.check_settings(known, f"settings, kill {i + 1}")
            left += bool(state(self.out)[1])
        self.must([self.writer, self.out, "a", "1"])
        if state(self.out)[1] or any(digest(self.out / name) != known[0][name] for name in known[0]):
            self.table.fail("settings: the next save left a temporary file or other bits")
        self.table.add("kill -9: profile and binary file", kills, f"both whole; left-overs {left}")

        self.fresh()
        self.must([self.writer, self.out, "a", "1"])
        writers = [subprocess.Popen([self.writer, self.out, which, "0"], stdout=subprocess.PIPE) for which in ("a", "b", "ab")]
        reads, seen, end = 0, set(), time.monotonic() + min(2.0, kills * 0.05)
        while time.monotonic() < end:
            self.check_settings(known, "settings, three writers at once")
            seen.add(digest(self.out / "ZELMFS.ini"))
            reads += 1
        for process in writers:
            if process.poll() is not None:
                self.table.fail("settings: one of three writers at once ended by itself")
            process.kill()
            process.communicate()
        self.table.add("three writers of the settings at once: reads", reads, f"both whole; {len(seen)} of 2 settings seen")

    # -- disks and folders

    def full_disk(self, jobs):
        """A limit on the size of each file, which any user can set: a write beyond it fails."""
        done = 0
        for job in jobs:
            largest = max(path.stat().st_size for path in Path(self.work / f"{job.name} 1").iterdir())
            for share in (0.02, 0.5, 0.98, 1):
                limit = int(largest * share) if share < 1 else largest - 1
                for old in (True, False):
                    self.fresh(self.work / f"{job.name} 0" if old else None)
                    status, err = self.call(job.commands(self.out, 1),
                                            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
                    self.judge_full(job, f"{job.name}, files up to {limit} bytes", status, err, old)
                    done += 1
        self.table.add("files up to a size only", done, "all names whole, exit status 1, nothing left over")

    def judge_full(self, job, where, status, err, old):
        if status != 1 or not re.search("cannot be (written|created)", err):
            self.table.fail(f"{where}: exit status {status}: {err}")
        _, temporary = self.check_whole(job, where, old)
        if temporary:
            self.table.fail(f"{where}: left {temporary}")
        self.check_next(job, where)

    def small_disk(self, jobs):
        disk = self.work / "disk"
        disk.mkdir()
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=16m", "none", disk], capture_output=True).returncode != 0:
            self.table.add("full disk (tmpfs)", 0, "skipped: this user may not mount")
            return
        place, self.out = self.out, disk / "out"
        done, enough = 0, 0
        try:
            for job in jobs:
                # In the job's own place first: some products name it.
                for i in (0, 1):
                    self.fresh()
                    self.must(job.commands(self.out, i))
                    job.sets[i] = state(self.out)[0]
                    shutil.rmtree(self.work / f"{job.name} {i}")
                    shutil.copytree(self.out, self.work / f"{job.name} {i}")
                need = sum(path.stat().st_size for path in self.out.iterdir())
                for share in (0.0, 0.3, 0.6, 0.9):
                    for old in (True, False):
                        self.fresh(self.work / f"{job.name} 0" if old else None)
                        info = os.statvfs(disk)
                        free = info.f_bavail * info.f_frsize
                        room = int(need * share) - (need if old and job.removes else 0)
                        with open(disk / "filler", "wb") as filler:
                            filler.write(bytes(max(free - max(room, 0), 0)))
                        status, err = self.call(job.commands(self.out, 1))
                        (disk / "filler").unlink()
                        # New files may find room where the old ones were.
                        if status == 0 and old and state(self.out) == (job.sets[1], []):
                            enough += 1
                        else:
                            self.judge_full(job, f"{job.name}, disk with room for {share:.0%}", status, err, old)
                        done += 1
            readonly = 0
            for job in jobs:
                self.fresh(self.work / f"{job.name} 0")
                subprocess.run(["mount", "-o", "remount,ro", disk], check=True)
                status, err = self.call(job.commands(self.out, 1))
                unchanged = state(self.out) == (job.sets[0], [])
                subprocess.run(["mount", "-o", "remount,rw", disk], check=True)
                if status != 1 or not unchanged or not err:
                    self.table.fail(f"{job.name}, disk for reading only: exit status {status}, unchanged {unchanged}: {err}")
                readonly += 1
        finally:
            subprocess.run(["umount", disk], check=True)
            self.out = place
        self.table.add("full disk (tmpfs)", done, f"all names whole, exit status 1, nothing left over; {enough} had room (0)")
        self.table.add("disk for reading only", readonly, "old files as they were, exit status 1")

    def vanishing_folder(self, jobs):
        done, too_late = 0, 0
        aside = self.work / "aside"
        for n in range(max(self.options.kills // 10, len(jobs))):
            job = jobs[n % len(jobs)]
            self.fresh(self.work / f"{job.name} 0" if n % 2 else None)
            shutil.rmtree(aside, ignore_errors=True)
            process = self.start(job.commands(self.out, 1))
            time.sleep(self.random.uniform(0, job.seconds))
            os.rename(self.out, aside)
            try:
                _, err = process.communicate(timeout=WAIT)
            except subprocess.TimeoutExpired:
                process.kill()
                process.communicate()
                self.table.fail(f"{job.name}: hangs without its folder")
                continue
            # A command that had not begun may make the folder anew, one that had finished needs it no more.
            if process.returncode == 0:
                too_late += 1
            elif process.returncode != 1 or not err:
                self.table.fail(f"{job.name}, folder gone: exit status {process.returncode}: {err}")
            done += 1
        self.table.add("work folder vanishes", done, f"exit status 1 with a sentence; {too_late} had no need of it (0)")

    def readonly_folder(self, jobs):
        who = {}
        if os.geteuid() == 0:
            who = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
            if self.call([self.cli, "--version"], **who)[0] != 0:
                self.table.add("folder without the right to write", 0, "skipped: user nobody cannot run the program from here")
                return
        done = 0
        for job in jobs:
            self.fresh(self.work / f"{job.name} 0")
            self.out.chmod(0o555)
            status, err = self.call(job.commands(self.out, 1), **who)
            self.out.chmod(0o755)
            if status != 1 or not re.search("ermission|cannot be|can be created|not allowed", err):
                self.table.fail(f"{job.name}, folder for reading only: exit status {status}: {err}")
            if state(self.out) != (job.sets[0], []):
                self.table.fail(f"{job.name}, folder for reading only: its files changed")
            done += 1
        self.table.add("folder without the right to write", done, "old files as they were, exit status 1")

    def open_elsewhere(self, jobs):
        done = 0
        for job in jobs:
            self.fresh(self.work / f"{job.name} 0")
            held = {}
            for path in self.out.iterdir():
                stream = open(path, "rb")
                fcntl.flock(stream, fcntl.LOCK_SH)
                held[path.name] = (stream, stream.read(100))
            status, err = self.call(job.commands(self.out, 1))
            if status != 0 or state(self.out) != (job.sets[1], []):
                self.table.fail(f"{job.name}, files open elsewhere: exit status {status}, or other bits: {err}")
            for name, (stream, start) in held.items():
                stream.seek(0)
                rest = stream.read()
                if not name.endswith(".pdf") and hashlib.sha256(rest).hexdigest() != job.sets[0][name]:
                    self.table.fail(f"{job.name}: who had {name} open sees other bytes")
                stream.close()
            done += len(held)
        self.table.add("files open and locked elsewhere", done, "replaced; the reader keeps the old file")

    def cut_inputs(self, jobs):
        """Inputs that another program cuts short while they are read."""
        sources = {"run, 256 x 256 pixels": self.files, "import": [str(self.work / "fits1/data.uvfits")]}
        done, whole = 0, 0
        for n in range(max(self.options.kills // 10, 4)):
            job = next(job for job in jobs if job.name == list(sources)[n % 2])
            self.fresh()
            originals = sources[job.name]
            copies = [str(self.work / f"cut{i}{Path(p).suffix}") for i, p in enumerate(originals)]
            for original, copy in zip(originals, copies):
                shutil.copyfile(original, copy)
            command = [copies[originals.index(str(word))] if str(word) in originals else word for word in job.commands(self.out, 1)]
            process = self.start(command)
            time.sleep(self.random.uniform(0, job.seconds * 0.7))
            os.truncate(copies[-1], self.random.randrange(os.path.getsize(copies[-1])))
            try:
                _, err = process.communicate(timeout=WAIT)
            except subprocess.TimeoutExpired:
                process.kill()
                process.communicate()
                self.table.fail(f"{job.name}: hangs after its input was cut")
                continue
            done += 1
            if process.returncode == 0:
                whole += 1
            elif process.returncode != 1 or copies[-1] not in err:
                self.table.fail(f"{job.name}, input cut: exit status {process.returncode}: {err}")
            if state(self.out)[1]:
                self.table.fail(f"{job.name}, input cut: a temporary file is left")
        self.table.add("input cut short while it is read", done, f"exit status 1, the file is named; {whole} had read it (0)")

    def full_output(self):
        with open("/dev/full", "w") as full:
            commands = [[self.cli, "info", self.files[0]], [self.cli, "info", "--json", self.files[0]],
                        [self.cli, "measure", "--folder", self.work / "maps0", "--regions", self.work / "area.reg"]]
            for command in commands:
                done = subprocess.run(command, stdout=full, stderr=subprocess.PIPE, text=True, timeout=WAIT)
                if done.returncode != 1 or "standard output" not in done.stderr:
                    self.table.fail(f"full standard output: exit status {done.returncode}: {done.stderr}")
        self.table.add("full standard output (/dev/full)", len(commands), "exit status 1 with a sentence")

    def run(self):
        jobs = self.prepare()
        print(f"\n{'what':<58} {'times':>6}  result")
        if self.options.part != "disks":
            self.kills(jobs)
            self.settings()
        if self.options.part != "kills":
            self.full_disk(jobs)
            self.vanishing_folder(jobs)
            self.readonly_folder(jobs)
            self.open_elsewhere(jobs)
            self.cut_inputs(jobs)
            self.full_output()
            self.small_disk(jobs)
        if self.table.failures:
            print(f"\n{len(self.table.failures)} failures")
            return 1
        print("\nno failure")
        return 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", default=str(Path(__file__).resolve().parent.parent / "build/release"))
    parser.add_argument("--kills", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--part", choices=["all", "kills", "disks"], default="all")
    parser.add_argument("--draws", action="store_true")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="lumo-reliability-") as work:
        os.chmod(work, 0o755)
        sys.exit(Tester(options, Path(work)).run())


main()
