"""Measures rows and prints one line for each: our median, the best peer's with its name, the ratio of the two, and the
other peers with theirs.

    bench-table.py PROGRAM REGULAR_EXPRESSION_OF_BENCHMARK_NAMES

A benchmark is called Group/Row/who, where who is `ours` or a peer's name. A counter `bytes` counts instead of the time.

Each row has a process of its own, in which ours and the peers take many short turns in random order: the heap is the
same for each row, and a machine that gets slower for a while does so for all of them.
"""
import collections
import json
import re
import subprocess
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
CLOCKS = ("real_time", "process_time", "manual_time")
TURNS = ("--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=25", "--benchmark_min_time=0.03",
         "--benchmark_min_warmup_time=0.03", "--benchmark_report_aggregates_only=true", "--benchmark_format=json")


def split_name(run_name):
    """Returns (row, who); arguments after the name belong to the row, settings of the run to neither."""
    parts = [part for part in run_name.split("/") if ":" not in part and part not in CLOCKS]
    arguments = []
    while parts[-1].isdigit():
        arguments.insert(0, parts.pop())
    return "/".join(parts[:-1] + arguments), parts[-1]


def amount(entry):
    """Returns (amount, unit)."""
    if "bytes" in entry:
        return entry["bytes"], "B"
    wall_clock = any(clock in entry["run_name"].split("/") for clock in ("real_time", "manual_time"))
    time = entry["real_time" if wall_clock else "cpu_time"]
    return time * NANOSECONDS[entry["time_unit"]], "ns"


def output_of(program, *options):
    return subprocess.run([program, *options], check=True, stdout=subprocess.PIPE, text=True).stdout


def measure(program, names):
    """Returns what was measured of each who."""
    pattern = "^(" + "|".join(re.sub(r"(\W)", r"[\1]", name) for name in names) + ")$"
    entries = json.loads(output_of(program, f"--benchmark_filter={pattern}", *TURNS))["benchmarks"]
    for entry in entries:
        if entry.get("error_occurred"):
            sys.exit(f"{entry['run_name']}: {entry['error_message']}")
    medians = [entry for entry in entries if entry.get("aggregate_name") == "median"]
    measured = {split_name(entry["run_name"])[1]: amount(entry) for entry in medians}
    if len(measured) != len(medians):
        sys.exit(f"Two benchmarks of a row have one name: {', '.join(names)}")
    return measured


def line_of(row, measured):
    ours = measured.pop("ours", None)
    line = f"{row:44} " + (f"{ours[0]:14,.2f} {ours[1]:2}" if ours else f"{'-':>17}")
    ratios = [f"{ours[0] / value:6.2f}" if ours and value else "" for value, _ in measured.values()]
    peers = sorted(zip(measured, measured.values(), ratios), key=lambda peer: peer[1][0])
    for who, (value, unit), ratio in peers[:1]:
        line += f" {value:14,.2f} {unit:2} {who:16} {ratio:6}"
    return f"{line}  {', '.join(f'{who} {ratio.strip()}' for who, _, ratio in peers[1:])}".rstrip()


def main(program, pattern):
    rows = collections.defaultdict(list)
    for name in output_of(program, "--benchmark_list_tests", f"--benchmark_filter={pattern}").splitlines():
        rows[split_name(name)[0]].append(name)
    print(f"{'row':44} {'ours':>17} {'best peer':>17} {'':16} {'ratio':>6}  others")
    for row, names in rows.items():
        print(line_of(row, measure(program, names)), flush=True)


main(*sys.argv[1:])
