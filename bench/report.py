#!/usr/bin/env python3
"""Turns the benchmark's JSON output into docs/PERFORMANCE.md.

Benchmarks are named Operation/input/implementation; every peer is set
against the module's own implementation ('vesk') on the same input, as the
ratio of median times (below 1.0: the module is faster).
"""
import json
import platform
import subprocess
import sys
from collections import OrderedDict


def machine():
    cpu = "unknown CPU"
    try:
        with open("/proc/cpuinfo") as info:
            for line in info:
                if line.startswith("model name"):
                    cpu = line.split(":", 1)[1].strip()
                    break
    except OSError:
        pass
    compiler = subprocess.run(["c++", "--version"], capture_output=True,
                              text=True).stdout.splitlines()[0]
    return f"{cpu}, {platform.machine()}, Linux {platform.release()}, {compiler}"


def medians(results):
    times = OrderedDict()
    for run in results["benchmarks"]:
        if run.get("aggregate_name", "median") != "median":
            continue
        name = run.get("run_name", run["name"]).removesuffix("_median")
        times[name] = run["real_time"] * {"ns": 1, "us": 1e3, "ms": 1e6,
                                          "s": 1e9}[run["time_unit"]]
    return times


def main(json_path, out_path, repetitions):
    with open(json_path) as f:
        results = json.load(f)
    groups = OrderedDict()
    for name, ns in medians(results).items():
        op, case, impl = name.split("/")
        groups.setdefault(op, OrderedDict()).setdefault(case, {})[impl] = ns
    lines = ["# Performance", "",
             "Each module operation beside its peers on the same input in the "
             "same run. Ratio: the module's median time over the peer's "
             "(below 1.00 the module is faster). Written by `scripts/bench.sh`.",
             "", f"Ran on: {machine()}; {repetitions} repetitions, medians.",
             ""]
    for op, cases in groups.items():
        lines += [f"## {op}", "", "| input | peer | module | peer time | ratio |",
                  "|---|---|---|---|---|"]
        for case, impls in cases.items():
            own = impls.get("vesk")
            if own is None:
                continue
            for impl, ns in impls.items():
                if impl == "vesk":
                    continue
                lines.append(f"| {case} | {impl} | {own:,.1f} ns | "
                             f"{ns:,.1f} ns | {own / ns:.2f} |")
        lines.append("")
    with open(out_path, "w") as f:
        f.write("\n".join(lines))


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], sys.argv[3])
