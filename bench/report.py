#!/usr/bin/env python3
"""Turns the benchmark's JSON outputs into docs/PERFORMANCE.md.

    report.py OUT REPETITIONS RESULTS.json... [LINE_LENGTHS.md]

Each JSON file holds one group of rows that are set against each other.
A Markdown file, the table of bench/line_lengths.sh, goes in as it is.

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


def medians(result_sets):
    times = OrderedDict()
    # Group by group in the order given, and in each in the order the
    # benchmarks were registered, whatever order they ran in.
    for results in result_sets:
        runs = sorted(results["benchmarks"], key=lambda run: run.get("family_index", 0))
        for run in runs:
            if run.get("aggregate_name", "median") != "median":
                continue
            name = run.get("run_name", run["name"]).removesuffix("_median")
            times[name] = run["real_time"] * {"ns": 1, "us": 1e3, "ms": 1e6,
                                              "s": 1e9}[run["time_unit"]]
    return times


# The speed targets: (what, operation, peer, inputs, limit). A figure is the
# module's median time over the peer's; "throughput" targets turn it round
# (the peer's time over the module's, as a share of the peer's throughput).
ENCODER_INPUTS = ["query_8_32", "query_4KiB", "query_1MiB", "alnum_4KiB",
                  "alnum_1MiB", "spaces_4KiB", "high_4KiB", "shift_jis_4KiB"]
TARGETS = [
    ("AppendChar loop", "AppendChar", "std_push_back", ["4KiB"], "<=", 1.0),
    ("AppendString", "AppendString", "std_append", ["pieces_8_64"], "<=", 1.0),
    ("AppendInt radix 10", "AppendInt", "std_to_chars", ["radix10"], "<=", 1.0),
    ("EncodeString", "EncodeString", "curl_easy_escape", ENCODER_INPUTS, "<=", 0.5),
    ("EncodeString", "EncodeString", "boost_url", ENCODER_INPUTS, "<", 1.0),
    ("EncodeString", "EncodeString", "memcpy", ["alnum_1MiB"], "throughput", 0.30),
    ("CreateEncodedUrl", "CreateEncodedUrl", "curl_easy_escape", ENCODER_INPUTS, "<=", 0.5),
    ("CreateEncodedUrl", "CreateEncodedUrl", "boost_url", ENCODER_INPUTS, "<", 1.0),
    ("VeskStrStr", "VeskStrStr", "glibc_strstr", ["url", "url_miss"], "<=", 1.5),
    # Linear time: within a constant factor of glibc's two-way search; a
    # quadratic scan (string_view::find) is far outside it.
    ("VeskStrStr, linear time", "VeskStrStr", "glibc_strstr", ["adversarial_1MiB"], "<", 10),
    ("VeskStrCaseStr", "VeskStrCaseStr", "glibc_strcasestr", ["url", "url_miss", "adversarial_1MiB"], "<", 1.0),
    ("VeskStrICmp", "VeskStrICmp", "glibc_strcasecmp", ["url"], "<=", 1.0),
    ("ToInt64", "ToInt64", "std_from_chars", ["mixed"], "<=", 1.0),
    # Characters the code page lacks convert at a tenth of the speed of
    # those it holds, or better.
    ("CreateMBCSFromUTF8, lacking", "CreateMBCSFromUTF8", "held_characters",
     ["windows-1252_1MiB", "shift_jis_1MiB"], "<=", 10.0),
]

# Why a missed target stands, for the targets that the module's own rules
# bear on. Each takes the run's medians and the input, so that the share of
# the peer's time that the rules alone take is that of the same run.
def floor_share(times, op, case, floor, peer):
    own = times.get(f"{op}/{case}/{floor}")
    other = times.get(f"{op}/{case}/{peer}")
    return own / other if own is not None and other is not None else None


def short_copy_why(peer_name, limit):
    def why(times, case, peer):
        share = floor_share(times, "CreateEncodedUrl", case,
                            "floor_required_calls", peer)
        if share is None:
            return None
        calls = ("A short escaped copy must make the growth rule's first "
                 "request (a 257-byte work buffer), ask the host for each "
                 "character's width, write the result into the work buffer, "
                 "copy it out exactly and release the work buffer. That alone "
                 "(`floor_required_calls` in the table, the result written "
                 f"with `memcpy`) takes {share:.2f}x {peer_name}'s time")
        if share >= limit:
            return calls + (", so the target cannot be met without changing "
                            "the heap requests or the host calls.")
        text = calls + (f", against a target of {limit:g}x; the walk and "
                        "the copy do not fit in what is left yet.")
        # libcurl's escape has no kept set, so each encoder's row times the
        # very same call on this input; how far those rows differ says how
        # much of the gap is noise. Boost.URL's rows differ in their sets.
        ops = (("EncodeString", "CreateEncodedUrl", "EscapedCStr")
               if peer == "curl_easy_escape" else ())
        same = [times.get(f"{op}/{case}/{peer}") for op in ops]
        same = [t for t in same if t is not None]
        if len(same) > 1:
            text += (f" The same {peer_name} call on the same input read "
                     f"{min(same):,.1f} to {max(same):,.1f} ns across the "
                     f"{len(same)} rows that time it in this run.")
            floor = times.get(f"CreateEncodedUrl/{case}/floor_required_calls")
            fastest = floor / min(same)
            text += (f" Against the fastest of them that alone takes "
                     f"{fastest:.2f}x")
            text += (", which leaves no room under the target there."
                     if fastest >= limit else ".")
        return text
    return why


def length_scans_why(op, scans, work, limit=None):
    def why(times, case, peer):
        share = floor_share(times, op, case, "floor_length_scans", peer)
        if share is None:
            return None
        text = ("Part of the gap is a rule: the module reads no byte past a "
                f"terminator, so it measures both texts ({scans}; "
                "`floor_length_scans` in the table) before it loads any "
                f"block. Those scans alone take {share:.2f}x glibc's time, "
                "where glibc scans once with aligned loads that may run past "
                "the terminator.")
        least = floor_share(times, op, case, "floor_scans_and_memcmp", peer)
        if limit is not None and least is not None and least >= limit:
            return text + (" With a plain `memcmp` of the text after them, "
                           "which folds nothing (`floor_scans_and_memcmp`), "
                           f"they take {least:.2f}x, so the target cannot be "
                           "met without reading past a terminator.")
        return text + f" The rest is the module's own {work}."
    return why


WHY = {
    "CreateEncodedUrl/boost_url/query_8_32": short_copy_why("Boost.URL", 1.0),
    "CreateEncodedUrl/curl_easy_escape/query_8_32":
        short_copy_why("libcurl", 0.5),
    "VeskStrStr/glibc_strstr":
        length_scans_why("VeskStrStr", "`strlen`, `memchr`",
                         "block scan and setup (32 places a step, with "
                         "AVX2 where the processor has it)"),
    "VeskStrICmp/glibc_strcasecmp":
        length_scans_why("VeskStrICmp", "two `memchr`",
                         "folded compare (32 bytes a step with AVX2 where "
                         "the processor has it, else 16)", 1.0),
}


def judge(times, target):
    what, op, peer, inputs, kind, limit = target
    rows = []
    for case in inputs:
        own = times.get(f"{op}/{case}/vesk")
        other = times.get(f"{op}/{case}/{peer}")
        if own is None or other is None:
            continue
        if kind == "throughput":
            figure, met = other / own, other / own >= limit
            shown, goal = f"{figure:.0%} of its throughput", f"≥ {limit:.0%}"
        else:
            figure = own / other
            met = figure <= limit if kind == "<=" else figure < limit
            shown, goal = f"{figure:.2f}", f"{kind} {limit:g}"
            if float(shown) == limit:  # a third digit tells met from missed
                shown = f"{figure:.3f}"
        why = WHY.get(f"{op}/{peer}/{case}")
        if why is None and case != "adversarial_1MiB":
            why = WHY.get(f"{op}/{peer}")
        if why is not None:
            why = why(times, case, peer)
        rows.append((what, case, peer, shown, goal, met, why))
    return rows


def target_lines(times):
    lines = ["## Targets", "",
             "| operation | input | peer | figure | target | |",
             "|---|---|---|---|---|---|"]
    notes = []
    for target in TARGETS:
        for what, case, peer, shown, goal, met, why in judge(times, target):
            lines.append(f"| {what} | {case} | {peer} | {shown} | {goal} | "
                         f"{'met' if met else 'missed'} |")
            if not met:
                notes.append(f"- {what}, {case}, against {peer} ({shown}): "
                             + (why or "no rule of the module forces this miss."))
    if notes:
        lines += ["", "Missed in this run:", ""] + notes
    return lines + [""]


KEPT = "## Method and notes"


def main(out_path, repetitions, json_paths):
    result_sets, line_lengths = [], None
    for path in json_paths:
        with open(path) as f:
            if path.endswith(".md"):
                line_lengths = f.read().rstrip("\n")
            else:
                result_sets.append(json.load(f))
    groups = OrderedDict()
    times = medians(result_sets)
    for name, ns in times.items():
        op, case, impl = name.split("/")
        groups.setdefault(op, OrderedDict()).setdefault(case, {})[impl] = ns
    lines = ["# Performance", "",
             "Each module operation beside its peers on the same input in the "
             "same run; each operation on each input runs in a process of "
             "its own, its rows interleaved. Ratio: the module's median time "
             "over the peer's (below 1.00 the module is faster). Written by "
             "`scripts/bench.sh`.",
             "", f"Ran on: {machine()}; {repetitions} repetitions, medians.",
             "Rows whose peer starts with `floor_` are not peers: they time "
             "only what the module's rules oblige an operation to do, so the "
             "module's time over them is its own work.", ""]
    lines += target_lines(times)
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
    if line_lengths is not None:
        lines += ["## vesktext on one long line and on short lines", "",
                  "Each command that reads lines, under each code page, on "
                  "one line of 6 MiB and on the same bytes cut into short "
                  "lines; medians of alternated runs, and their ratio (the "
                  "target: 3 or less).", "", line_lengths, ""]
    # The hand-written part (the method, and measurements made by hand) is
    # kept from the file as it was: everything from its KEPT heading on.
    try:
        with open(out_path) as f:
            old = f.read()
        at = old.find(KEPT)
        if at >= 0:
            lines += [old[at:].rstrip("\n"), ""]
    except OSError:
        pass
    with open(out_path, "w") as f:
        f.write("\n".join(lines))


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], sys.argv[3:])
