#!/usr/bin/env python3
"""Whole-process speed of velmoric-convert against netpbm on the same files.

Usage: bench/compare_netpbm.py [BUILD_FOLDER] [PAIRS]

For each format netpbm reads, the first corpus picture is converted to BMP
(netpbm: the tool alone, its output to a file) and to PNG (netpbm: the tool
piped into pnmtopng), and a folder of 1,000 copies is converted by one
velmoric-convert against netpbm started once per file. Each comparison is
the median of paired runs that alternate which command goes first; a ratio
below 1 means velmoric-convert is faster. Needs netpbm; says so and exits 0
without it.

On ext4 without a journal, making a file passes one by one over the inodes
freed in the last minute (six while their table block is not yet written
back), so right after a mass deletion, such as the previous run's clean-up,
the batch measures the file system more than either program: leave a few
minutes between runs.
"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = sys.argv[1] if len(sys.argv) > 1 else os.path.join(ROOT, "build")
PAIRS = int(sys.argv[2]) if len(sys.argv) > 2 else 41
CONVERT = os.path.join(BUILD, "app", "velmoric-convert")
CORPUS = os.path.join(ROOT, "..", "shared", "corpus")
TOOLS = {"pi1": "pi1toppm", "neo": "neotoppm", "pi3": "pi3topbm", "spu": "sputoppm", "spc": "spctoppm",
         "mac": "macptopbm"}


def first_picture(extension):
    folder = os.path.join(CORPUS, extension)
    names = sorted(n for n in os.listdir(folder) if os.path.isfile(os.path.join(folder, n)))
    return os.path.join(folder, names[0])


RUNS = [0]
FOLDERS = []


def seconds(command):
    # Every run writes new files, as a first conversion does: replacing a
    # file costs the file system more than making one.
    RUNS[0] += 1
    command = command.replace("{n}", str(RUNS[0]))
    # Output folders are made before the clock starts, for both commands.
    for folder in FOLDERS:
        os.makedirs(folder.replace("{n}", str(RUNS[0])), exist_ok=True)
    start = time.perf_counter()
    subprocess.run(command, shell=True, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - start


def paired_ratio(ours, theirs, pairs):
    ratios = []
    for i in range(pairs):
        if i % 2 == 0:
            a = seconds(ours)
            b = seconds(theirs)
        else:
            b = seconds(theirs)
            a = seconds(ours)
        ratios.append(a / b)
    return statistics.median(ratios)


def main():
    if not shutil.which("pi1toppm") or not shutil.which("pnmtopng"):
        print("netpbm is not installed (apt-get install netpbm): nothing to compare")
        return 0
    if not os.path.isdir(CORPUS):
        print("no corpus beside the project: nothing to compare")
        return 0
    work = tempfile.mkdtemp()
    try:
        print(f"{'format':8}{'tool':10}{'BMP ratio':>10}{'PNG ratio':>10}")
        for extension, tool in TOOLS.items():
            source = first_picture(extension)
            out = os.path.join(work, "out{n}")
            FOLDERS[:] = [out]
            # Both write their one new file into the run's own new folder.
            bmp = paired_ratio(f"'{CONVERT}' -o '{out}' '{source}'", f"{tool} '{source}' > '{out}/x.pnm'", PAIRS)
            png = paired_ratio(f"'{CONVERT}' -f png -o '{out}' '{source}'",
                               f"{tool} '{source}' | pnmtopng > '{out}/x.png'", PAIRS)
            print(f"{extension.upper():8}{tool:10}{bmp:10.2f}{png:10.2f}")
        batch = os.path.join(work, "batch")
        os.mkdir(batch)
        source = first_picture("pi1")
        for i in range(1000):
            shutil.copyfile(source, os.path.join(batch, f"p{i:04}.pi1"))
        ours = f"'{CONVERT}' -q -o '{work}/batch-out{{n}}' '{batch}'"
        FOLDERS[:] = [f"{work}/batch-out{{n}}", f"{work}/ppm{{n}}"]
        theirs = f"for f in '{batch}'/*.pi1; do pi1toppm \"$f\" > '{work}/ppm{{n}}/'\"${{f##*/}}.ppm\"; done"
        ratio = paired_ratio(ours, theirs, max(5, PAIRS // 4))
        print(f"batch of 1,000 PI1 files: velmoric-convert {1 / ratio:.1f} times as fast as pi1toppm once per file")
    finally:
        shutil.rmtree(work)
    return 0


if __name__ == "__main__":
    sys.exit(main())
