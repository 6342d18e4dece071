#!/usr/bin/env python3
"""Prints the page of a run of hostutil_bench from Google Benchmark's JSON; draws the picture when a file is named.

    bench/report.py RESULT.json [PICTURE.svg]
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
The code is in `bench/`; that the answers are equal is checked before anything is timed.

- Machine: {machine}, {cores} cores; compiler: {compiler}, release build; {date}.
- {repetitions} repetitions of each benchmark, of at least {min_time} s each, in random order over all benchmarks.
  Nothing is repeated because of its result.
- A figure is the median processor time of one call. Half of the repetitions lie within {spread:.1%} of each other for
  the median benchmark, within {worst:.0%} for the worst.
- The ratio is our time over that of the fastest other: below 1 we are faster.
- A goal is the largest ratio that we accept. "1.05 + 2.5 ns": or a difference of 2.5 ns, about one call into a shared
  library. "Parse alone" and "nettle" do only part of the job.
- `ReplaceStr` and its peers edit a fresh copy of the text, which is part of the time.

{comparisons} comparisons, {missed} goals missed.

![our speed, relative to the fastest other](benchmarks.svg)

| function | data | HostUtil | others | ratio | goal |
|---|---|---:|---|---:|---|
{rows}

## Goals that are missed

{missed_rows}"""

PLOT = """
set terminal svg size 820,1000 font "sans-serif,13" background "white"
set output "{picture}"
set title "Speed relative to the fastest other" font ",17"
set xlabel "times as fast: geometric mean over the data (bar), least and most (line)"
set lmargin 30
set logscale x 2
set yrange [-1:*]
set grid xtics lc rgb "#d8d8d8"
set tics nomirror scale 0
set key off
set arrow from 1, graph 0 to 1, graph 1 nohead lc rgb "#404040"
$data << END
{data}
END
plot $data using (1):0:($2 < 1 ? $2 : 1):($2 < 1 ? 1 : $2):($0 - 0.36):($0 + 0.36): \\
       ($2 < 0.95 ? 0xe0a050 : 0x4080c0):ytic(1) with boxxyerror fill solid noborder lc rgb variable, \\
     $data using 2:0:3:4 with xerrorbars pt 0 lw 1.5 lc rgb "#203040"
"""

Comparison = collections.namedtuple("Comparison", "function data ours others ratio goal missed")


def compare(name, times, goal):
    """Of the times of every contender."""
    medians = {contender: statistics.median(values) for contender, values in times.items()}
    ours = medians.pop("HostUtil")
    best = min(medians.values())
    ratio, allowance = re.fullmatch(r"([\d.]+)(?: \+ ([\d.]+) ns)?", goal).groups(default="0")
    missed = ours / best > float(ratio) and ours - best > float(allowance)
    return Comparison(*name.split("/", 1), ours, medians, ours / best, goal, missed)


def read(result):
    """The comparisons, and the distance of the quartiles of each benchmark over its median."""
    times = collections.defaultdict(lambda: collections.defaultdict(list))
    goals = {}
    for run in sorted(result["benchmarks"], key=lambda run: run["family_index"]):  # the order of registration
        if run["run_type"] == "iteration":
            name, contender = run["name"].rsplit("/", 1)
            times[name][contender].append(run["cpu_time"])  # nanoseconds, Google Benchmark's default
            goals[name] = run.get("label") or goals.get(name)  # a peer has none
    spreads = []
    for values in (values for contenders in times.values() for values in contenders.values()):
        low, median, high = statistics.quantiles(values, n=4, method="inclusive")
        spreads.append((high - low) / median)
    # A filter may have selected one contender alone.
    complete = {name: each for name, each in times.items() if "HostUtil" in each and len(each) > 1}
    return [compare(name, each, goals[name]) for name, each in complete.items()], spreads


def shown(time):
    unit, size = next((each for each in (("ms", 1e6), ("µs", 1e3)) if time >= each[1]), ("ns", 1))
    return f"{time / size:.3g} {unit}"


def machine():
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as lines:
            return re.search(r"model name\s*: (.*)", lines.read())[1]
    except (OSError, TypeError):
        return platform.machine()


def page(result, comparisons, spreads):
    context = result["context"]
    rows, missed = [], []
    for each in comparisons:
        data = each.data.replace("*", "\\*")
        others = ", ".join(f"{name} {shown(time)}" for name, time in sorted(each.others.items(), key=lambda i: i[1]))
        mark = " **missed**" if each.missed else ""
        rows.append(f"| `{each.function}` | {data} | {shown(each.ours)} | {others} | {each.ratio:.2f} | {each.goal}{mark} |")
        if each.missed:
            missed.append(f"- `{each.function}`, {data}: {each.ratio:.2f}, goal {each.goal}")
    return PAGE.format(
        machine=machine(), cores=context["num_cpus"], compiler=context["compiler"], date=context["date"][:10],
        repetitions=result["benchmarks"][0]["repetitions"], min_time=context["min_time"],
        spread=statistics.median(spreads), worst=max(spreads), comparisons=len(comparisons), missed=len(missed),
        rows="\n".join(rows), missed_rows="\n".join(missed) or "None.")


def draw(comparisons, picture):
    speeds = collections.defaultdict(list)
    for each in comparisons:
        speeds[each.function].append(1 / each.ratio)
    bars = sorted((statistics.geometric_mean(values), min(values), max(values), name) for name, values in speeds.items())
    data = "\n".join(f"{name} {mean:.4f} {least:.4f} {most:.4f}" for mean, least, most, name in bars)
    subprocess.run(["gnuplot"], input=PLOT.format(picture=picture, data=data), text=True, check=True)


with open(sys.argv[1], encoding="utf-8") as stream:
    RESULT = json.load(stream)
COMPARISONS, SPREADS = read(RESULT)
if not COMPARISONS:
    sys.exit("no comparison was run")
print(page(RESULT, COMPARISONS, SPREADS))
if len(sys.argv) > 2:
    draw(COMPARISONS, sys.argv[2])
