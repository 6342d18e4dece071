#!/usr/bin/env python3
"""Prints the page of some runs of hostutil_bench from Google Benchmark's JSON, and draws the picture.

    bench/report.py PICTURE.svg RESULT.json...
"""
import collections
import json
import platform
import re
import statistics
import subprocess
import sys

PAGE = """# Benchmarks

Written by `scripts/bench`; do not edit.

Each function and what a C++ developer would call instead, doing the same job on the same data in one process.
The code is in `bench/`.

- {machine}, {num_cpus} cores; compiler {compiler}, release build; {date}.
- {rounds} rounds, each a new process, in which every benchmark runs for at least {min_time} s, next to its peers.
  Nothing is repeated because of its result.
- A figure is the median processor time of one call. The ratio is the median of our time over that of the fastest
  other in the same round: below 1 we are faster. Half of the ratios of a row lie within {spread:.1%} of each other
  (the median over the rows; {worst:.0%} in the worst).
- A goal is the largest ratio that we accept, with 2.5 ns more where a call into a shared library counts.
  "Parse alone" and "nettle" do only part of the job.
- `ReplaceStr` and its peers edit a fresh copy of the text, which is part of the time.

{comparisons} comparisons, {missed} goals missed.

![our speed, relative to the fastest other](benchmarks.svg)

| function | data | HostUtil | others | ratio | goal |
|---|---|---:|---|---:|---|
{rows}"""

PLOT = """
set terminal svg size 820,1000 font "sans-serif,13" background "white"
set output "{picture}"
set title "Speed relative to the fastest other" font ",17"
set xlabel "times as fast: geometric mean over the data (bar), least and most (line)"
set lmargin 30; set logscale x 2; set yrange [-1:*]; set key off
set grid xtics lc rgb "#d8d8d8"; set tics nomirror scale 0
set arrow from 1, graph 0 to 1, graph 1 nohead lc rgb "#404040"
$data << END
{data}
END
plot $data using (1):0:($2 < 1 ? $2 : 1):($2 < 1 ? 1 : $2):($0 - 0.36):($0 + 0.36): \\
       ($2 < 0.95 ? 0xe0a050 : 0x4080c0):ytic(1) with boxxyerror fill solid noborder lc rgb variable, \\
     $data using 2:0:3:4 with xerrorbars pt 0 lw 1.5 lc rgb "#203040"
"""


def shown(time):
    unit, size = next((each for each in (("ms", 1e6), ("µs", 1e3)) if time >= each[1]), ("ns", 1))
    return f"{time / size:.3g} {unit}"


times = collections.defaultdict(lambda: collections.defaultdict(list))
goals, spreads, rows, speeds = {}, [], [], collections.defaultdict(list)
for file in sys.argv[2:]:
    with open(file, encoding="utf-8") as stream:
        result = json.load(stream)
    for run in sorted(result["benchmarks"], key=lambda run: run["name"].split("/")[0]):
        name, contender = run["name"].rsplit("/", 1)
        times[name][contender].append(run["cpu_time"])  # nanoseconds, Google Benchmark's default
        goals[name] = run.get("label") or goals.get(name)  # a peer has none
for name, contenders in times.items():
    ours = contenders.pop("HostUtil")
    others = sorted((statistics.median(rounds), peer) for peer, rounds in contenders.items())
    pairs = list(zip(ours, contenders[others[0][1]]))
    low, ratio, high = statistics.quantiles([our / best for our, best in pairs], n=4, method="inclusive")
    spreads.append((high - low) / ratio)
    factor, allowance = map(float, re.fullmatch(r"([\d.]+)(?: \+ ([\d.]+) ns)?", goals[name]).groups(default="0"))
    missed = statistics.median(our - factor * best - allowance for our, best in pairs) > 0
    function, data = name.replace("*", "\\*").split("/", 1)
    peers = ", ".join(f"{peer} {shown(time)}" for time, peer in others)
    rows.append(f"| `{function}` | {data} | {shown(statistics.median(ours))} | {peers} | {ratio:.2f} | {goals[name]}"
                f"{' **missed**' if missed else ''} |")
    speeds[function].append(1 / ratio)
try:
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        machine = re.search(r"model name\s*: (.*)", lines.read())[1]
except (OSError, TypeError):
    machine = platform.machine()
context = result["context"] | {"date": result["context"]["date"][:10]}
print(PAGE.format(**context, machine=machine, rounds=len(sys.argv) - 2, spread=statistics.median(spreads),
                  worst=max(spreads), comparisons=len(rows), missed=sum("**missed**" in row for row in rows),
                  rows="\n".join(rows)))
bars = sorted((statistics.geometric_mean(values), min(values), max(values), name) for name, values in speeds.items())
data = "\n".join(f"{name} {mean:.4f} {least:.4f} {most:.4f}" for mean, least, most, name in bars)
subprocess.run(["gnuplot"], input=PLOT.format(picture=sys.argv[1], data=data), text=True, check=True)
