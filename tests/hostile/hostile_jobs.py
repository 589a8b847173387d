#!/usr/bin/env python3
"""A catalogue of hostile jobs, each run through the built translator.

Every case must end with exit status 0 and leave in the output folder either
the complete neutral file (ending with "$end 'TarvexNeutralFile'") or none,
and never a temporary file. A case may take at most TIME_LIMIT seconds, and
(in a build without sanitizers) at most 20 times its input plus 50 MB of
memory at its peak; with --sanitized a report of AddressSanitizer,
UndefinedBehaviorSanitizer or LeakSanitizer on standard error fails the case.
The kill test interrupts a run that writes a large file several times at
random moments with SIGTERM, SIGINT and SIGHUP, and finds the old file or the
complete new one, never part of one, and no temporary file.

usage: hostile_jobs.py <translator> <source-dir> [--sanitized] [--only NAME]
"""
import math
import os
import random
import re
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time

END = b"$end 'TarvexNeutralFile'\n"
FILES = ["JobPrefs.hkp", "Padstack.hkp", "Cell.hkp", "Layout.hkp", "PDB.hkp", "NetClass.hkp"]
SANITIZER = re.compile(rb"ERROR: AddressSanitizer|runtime error:|ERROR: LeakSanitizer")


class Catalogue:
    def __init__(self, program, source, sanitized):
        self.program = program
        self.source = source
        self.sanitized = sanitized
        self.time_limit = 180 if sanitized else 60
        self.root = tempfile.mkdtemp(prefix="tnf_hostile_")
        self.failures = []
        self.rows = []
        self.base = {}
        demo = os.path.join(source, "examples", "Demo4Layer")
        for name in FILES:
            with open(os.path.join(demo, name), "rb") as f:
                self.base[name] = f.read()

    # ------------------------------------------------------------ running

    def run(self, name, job, output=None, expect_output=None):
        """Runs the program on job; checks the ending. expect_output: True
        (a complete file must be there), False (none may be), None (either)."""
        out_dir = os.path.join(self.root, name + "_out")
        os.makedirs(out_dir, exist_ok=True)
        output = output or os.path.join(out_dir, "out.tnf")
        input_bytes = sum(os.path.getsize(os.path.join(job, f)) for f in os.listdir(job)
                          if os.path.isfile(os.path.join(job, f)))
        start = time.monotonic()
        with open(os.path.join(self.root, "stderr.txt"), "wb") as err:
            proc = subprocess.Popen([self.program, job, output], stdin=subprocess.DEVNULL,
                                    stdout=subprocess.DEVNULL, stderr=err)
            status, peak_mb = self.wait(proc)
        seconds = time.monotonic() - start
        with open(os.path.join(self.root, "stderr.txt"), "rb") as f:
            errors = f.read()
        bound_mb = 20 * input_bytes / 1e6 + 50
        problems = []
        if status is None:
            problems.append("took longer than %d s" % self.time_limit)
        elif status != 0:
            problems.append("exit status %s" % status)
        if self.sanitized and SANITIZER.search(errors):
            problems.append("sanitizer report: " + errors[:400].decode("latin-1"))
        if not self.sanitized and peak_mb > bound_mb:
            problems.append("peak memory %.1f MB above %.1f MB" % (peak_mb, bound_mb))
        folder = os.path.dirname(output)
        if os.path.isdir(folder):
            stray = [f for f in os.listdir(folder) if ".tmp" in f]
            if stray:
                problems.append("left behind: %s" % stray)
        if os.path.isfile(output):
            with open(output, "rb") as f:
                f.seek(max(0, os.path.getsize(output) - len(END)))
                if f.read() != END:
                    problems.append("incomplete output file")
            if expect_output is False:
                problems.append("an output file where none belongs")
        elif expect_output is True:
            problems.append("no output file")
        self.rows.append((name, input_bytes, seconds, peak_mb, bound_mb))
        if problems:
            self.failures.append("%s: %s" % (name, "; ".join(problems)))
        return errors

    def wait(self, proc):
        """Waits for the run; returns its status (None if it took too long)
        and its peak resident memory in MB, read from /proc while it runs
        (the rusage of a child forked from this script would count the
        script's own memory)."""
        deadline = time.monotonic() + self.time_limit
        peak_kb = 0
        while True:
            try:
                with open("/proc/%d/status" % proc.pid) as f:
                    for line in f:
                        if line.startswith("VmHWM:"):
                            peak_kb = max(peak_kb, int(line.split()[1]))
            except OSError:
                pass
            pid, status = os.waitpid(proc.pid, os.WNOHANG)
            if pid == proc.pid:
                proc.returncode = status
                if os.WIFEXITED(status):
                    return os.WEXITSTATUS(status), peak_kb / 1024.0
                return "signal %d" % os.WTERMSIG(status), peak_kb / 1024.0
            if time.monotonic() > deadline:
                proc.kill()
                os.waitpid(proc.pid, 0)
                proc.returncode = -9
                return None, peak_kb / 1024.0
            time.sleep(0.005)

    def job(self, name, files):
        """A job folder with the given files (name to bytes)."""
        path = os.path.join(self.root, name)
        os.makedirs(path)
        for file_name, data in files.items():
            with open(os.path.join(path, file_name), "wb") as f:
                f.write(data)
        return path

    def variant(self, name, change):
        """The example job with change applied to each file's bytes."""
        return self.job(name, {f: change(f, data) for f, data in self.base.items()})

    # -------------------------------------------------------------- cases

    def cases(self):
        rng = random.Random(22)
        yield "every_file_empty", lambda: self.run("every_file_empty", self.job(
            "every_file_empty", {f: b"" for f in FILES}))
        yield "binary_garbage", lambda: self.run("binary_garbage", self.job(
            "binary_garbage", {f: bytes(rng.getrandbits(8) for _ in range(65536)) for f in FILES}))
        for i in range(6):
            name = "cut_%d" % i
            yield name, (lambda name=name: self.run(name, self.variant(
                name, lambda f, d: d[:rng.randrange(len(d) + 1)])))
        yield "line_of_5MB", lambda: self.run("line_of_5MB", self.variant(
            "line_of_5MB", lambda f, d: d + b".NOTE " + b"A" * (5 << 20) + b"\n" if f == "Layout.hkp" else d),
            expect_output=True)
        yield "million_dots", lambda: self.run("million_dots", self.variant(
            "million_dots", lambda f, d: b"." * 10**6 + b"\n" + d if f == "Layout.hkp" else d))
        yield "million_spaced_dots", lambda: self.run("million_spaced_dots", self.variant(
            "million_spaced_dots", lambda f, d: d + b". " * 10**6 if f == "Cell.hkp" else d))
        number = re.compile(rb"-?\d+\.?\d*")
        for word in [b"1e308", b"-1e308", b"1e15", b"-1e15", b"1e-320", b"nan", b"inf", b"-inf", b"99999999999999999999",
                     b"-2147483648"]:
            name = "numbers_" + word.decode().replace("-", "minus_")
            yield name, (lambda name=name, word=word: self.run(name, self.variant(
                name, lambda f, d: number.sub(word, d)), expect_output=True))
        yield "nul_bytes", lambda: self.run("nul_bytes", self.variant(
            "nul_bytes", lambda f, d: bytes(b if rng.random() > 0.01 else 0 for b in d)))
        yield "cr_line_ends", lambda: self.run("cr_line_ends", self.variant(
            "cr_line_ends", lambda f, d: d.replace(b"\n", b"\r")), expect_output=True)
        yield "utf8_bom", lambda: self.run("utf8_bom", self.variant(
            "utf8_bom", lambda f, d: b"\xef\xbb\xbf" + d), expect_output=True)
        yield "utf16", lambda: self.run("utf16", self.variant(
            "utf16", lambda f, d: d.decode("latin-1").encode("utf-16")), expect_output=True)
        yield "polygon_of_a_million_points", self.huge_polygon
        yield "hundred_thousand_pins", self.many_pins
        yield "hundred_thousand_vias", self.many_vias
        yield "odd_polygons", self.odd_polygons
        yield "layer_count", lambda: self.run("layer_count", self.variant(
            "layer_count", lambda f, d: re.sub(rb"PHYSICAL_LAYERS \d+", b"PHYSICAL_LAYERS 2147483647", d)),
            expect_output=True)
        yield "directory_as_file", self.directory_as_file
        yield "unreadable_file", self.unreadable_file
        yield "pipe_and_device", self.pipe_and_device
        yield "bad_output_paths", self.bad_output_paths
        yield "kill_while_writing", self.kill_while_writing

    def huge_polygon(self):
        """A board outline of a million points round a circle."""
        points = b" ".join(b"(%.4f, %.4f)" % (50 + 40 * math.cos(i * 2e-6 * math.pi),
                                              50 + 40 * math.sin(i * 2e-6 * math.pi)) for i in range(10**6))
        outline = b".BOARD_OUTLINE\n..POLYLINE_PATH\n...WIDTH 0\n...XY " + points + b"\n"
        self.run("polygon_of_a_million_points", self.variant(
            "polygon_of_a_million_points", lambda f, d: d[:d.index(b".BOARD_OUTLINE")] + outline
            if f == "Layout.hkp" else d), expect_output=True)

    def many_pins(self):
        pins = b"".join(b"..PIN \"%d\"\n...PADSTACK \"SMD0603\"\n...XY (%d, 0)\n" % (i % 50000, i)
                        for i in range(10**5))
        cell = b".UNITS MM\n.PACKAGE_CELL \"MANY\"\n..MOUNT_TYPE SURFACE\n" + pins
        place = (b".PACKAGE_CELL \"MANY\"\n..XY (1, 1)\n..ROTATION 0\n..PLACEMENT_LYR MNT_LYR\n..TEXT \"U9\"\n"
                 b"...TEXT_TYPE REF_DES\n" + b"".join(b"..PIN \"%d\"\n...PADSTACK \"SMD0603\"\n...XY (%d, 1)\n"
                                                     % (i % 50000, i) for i in range(10**5)))
        self.run("hundred_thousand_pins", self.variant(
            "hundred_thousand_pins", lambda f, d: d + cell if f == "Cell.hkp" else (
                d.replace(b".BOARD_ORIGIN", place + b".BOARD_ORIGIN") if f == "Layout.hkp" else d)),
            expect_output=True)

    def many_vias(self):
        vias = b"".join(b"..VIA\n...XY (%d, %d)\n...PADSTACK \"VIA_0.3\"\n" % (i % 300, i // 300)
                        for i in range(10**5))
        self.run("hundred_thousand_vias", self.variant(
            "hundred_thousand_vias", lambda f, d: d.replace(b".BOARD_ORIGIN", b".NET \"VIAS\"\n" + vias +
                                                           b".BOARD_ORIGIN") if f == "Layout.hkp" else d),
            expect_output=True)

    def odd_polygons(self):
        shapes = (b".GENERATED_DATA\n..PLANE_LYR LYR_2\n..PLANE_NET \"GND\"\n"
                  b"...POLYLINE_PATH\n....WIDTH 0\n....XY (0, 0) (10, 0) (20, 0) (0, 0)\n"
                  b"...POLYLINE_PATH\n....WIDTH 0\n....XY (0, 0) (10, 10) (10, 0) (0, 10) (0, 0)\n"
                  b"...POLYLINE_PATH\n....WIDTH 0\n....XY (0, 0) (5, 0) (5, 5) (0, 0) (-5, 0) (-5, -5) (0, 0)\n"
                  b"...POLYARC_PATH\n....WIDTH 0\n....XYR (0, 0, 0) (1e9, 0, 1e9) (0, 1, 0) (1, 1, 0)\n"
                  b"...POLYARC_PATH\n....WIDTH 0\n....XYR (0, 0, 0) (1e-9, 1e-9, 1) (2e-9, 0, 0) (1, 1, 0)\n"
                  b"...POLYARC_PATH\n....WIDTH 0.5\n....XYR (0, 0, 0) (5, 0, -5) (0, 0, 0)\n"
                  b"...CIRCLE_PATH\n....WIDTH 0\n....XY (3, 3)\n....RADIUS 0\n")
        self.run("odd_polygons", self.variant(
            "odd_polygons", lambda f, d: d + shapes if f == "Layout.hkp" else d), expect_output=True)

    def directory_as_file(self):
        job = self.variant("directory_as_file", lambda f, d: d)
        os.remove(os.path.join(job, "Layout.hkp"))
        os.makedirs(os.path.join(job, "Layout.hkp"))
        os.remove(os.path.join(job, "NetClass.hkp"))
        os.makedirs(os.path.join(job, "NetClass.hkp"))
        # A required file that is a folder is not there: the run ends as for
        # a missing file, with no output.
        self.run("directory_as_file", job)

    def unreadable_file(self):
        if os.geteuid() == 0:
            print("SKIPPED unreadable_file: running as root, which reads files of any permission; "
                  "directory_as_file stands in for it", flush=True)
            return
        job = self.variant("unreadable_file", lambda f, d: d)
        os.chmod(os.path.join(job, "Layout.hkp"), 0)
        self.run("unreadable_file", job, expect_output=True)

    def pipe_and_device(self):
        job = self.variant("pipe_and_device", lambda f, d: d)
        os.remove(os.path.join(job, "PDB.hkp"))
        os.mkfifo(os.path.join(job, "PDB.hkp"))
        os.remove(os.path.join(job, "NetClass.hkp"))
        os.symlink("/dev/zero", os.path.join(job, "NetClass.hkp"))
        self.run("pipe_and_device", job, expect_output=True)

    def bad_output_paths(self):
        job = self.variant("bad_output_paths", lambda f, d: d)
        self.run("output_in_missing_folder", job, output=os.path.join(self.root, "no", "such", "out.tnf"),
                 expect_output=False)
        folder = os.path.join(self.root, "output_names_a_folder_out")
        os.makedirs(os.path.join(folder, "out.tnf"))
        self.run("output_names_a_folder", job, output=os.path.join(folder, "out.tnf"))
        if not os.path.isdir(os.path.join(folder, "out.tnf")):
            self.failures.append("output_names_a_folder: the folder was replaced")
        if os.geteuid() == 0:
            print("SKIPPED output_in_read_only_folder: running as root, which writes anywhere", flush=True)
        else:
            locked = os.path.join(self.root, "read_only_out")
            os.makedirs(locked)
            os.chmod(locked, stat.S_IRUSR | stat.S_IXUSR)
            self.run("output_in_read_only_folder", job, output=os.path.join(locked, "out.tnf"),
                     expect_output=False)
            os.chmod(locked, stat.S_IRWXU)

    def kill_while_writing(self):
        """A large file (the example's layout repeated) killed at random moments."""
        copies = b"".join(self.base["Layout.hkp"].replace(b".BOARD_ORIGIN", b".NOTE") for _ in range(1))
        traces = b"".join(b".NET \"K%d\"\n..TRACE\n...ROUTE_LYR LYR_1\n...POLYLINE_PATH\n....WIDTH 0.2\n"
                          b"....XY (%d, 1) (%d, 30) (%d, 60)\n" % (i, i % 97, i % 89, i % 83) for i in range(40000))
        job = self.variant("kill_while_writing", lambda f, d: traces + d if f == "Layout.hkp" else d)
        del copies
        folder = os.path.join(self.root, "kill_out")
        os.makedirs(folder)
        output = os.path.join(folder, "out.tnf")
        start = time.monotonic()
        subprocess.run([self.program, job, output], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       timeout=self.time_limit)
        whole = time.monotonic() - start
        with open(output, "rb") as f:
            complete_size = len(f.read())
        rng = random.Random(7)
        outcomes = []
        for i, sig in enumerate([signal.SIGTERM, signal.SIGINT, signal.SIGHUP] * 2):
            with open(output, "wb") as f:
                f.write(b"old\n")
            proc = subprocess.Popen([self.program, job, output], stdin=subprocess.DEVNULL,
                                    stderr=subprocess.DEVNULL)
            time.sleep(rng.uniform(0.3, 1.0) * whole)
            proc.send_signal(sig)
            proc.wait(timeout=self.time_limit)
            with open(output, "rb") as f:
                text = f.read()
            if text == b"old\n":
                outcomes.append("old")
            elif text.endswith(END):
                outcomes.append("new")
            else:
                self.failures.append("kill_while_writing %d: part of a file (%d of %d bytes)" %
                                     (i, len(text), complete_size))
            stray = [f for f in os.listdir(folder) if f != "out.tnf"]
            if stray:
                self.failures.append("kill_while_writing %d: left behind %s" % (i, stray))
        print("kill_while_writing: a run of %.2f s and %d bytes, killed 6 times: %s" %
              (whole, complete_size, " ".join(outcomes)), flush=True)


def main():
    args = sys.argv[1:]
    if len(args) < 2:
        print(__doc__)
        return 2
    catalogue = Catalogue(os.path.abspath(args[0]), os.path.abspath(args[1]), "--sanitized" in args)
    only = args[args.index("--only") + 1] if "--only" in args else None
    try:
        for name, case in catalogue.cases():
            if only and not name.startswith(only):
                continue
            case()
    finally:
        print("%-32s %12s %9s %10s %10s" % ("case", "input bytes", "seconds", "peak MB", "bound MB"))
        for name, size, seconds, peak, bound in catalogue.rows:
            print("%-32s %12d %9.2f %10.1f %10.1f" % (name, size, seconds, peak, bound))
        shutil.rmtree(catalogue.root, ignore_errors=True)
    for failure in catalogue.failures:
        print("FAILED " + failure)
    return 1 if catalogue.failures else 0


if __name__ == "__main__":
    sys.exit(main())
