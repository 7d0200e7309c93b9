"""Prints one line for each measured row: our median, the best peer's with its name, the ratio of the two, and the other
peers with theirs.

A benchmark is called Group/Row/who, where who is `ours` or a peer's name. A counter `bytes` counts instead of the time.
"""
import collections
import json
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
CLOCKS = ("real_time", "process_time", "manual_time")


def split_name(run_name):
    """Returns (row, who); arguments after the name belong to the row, settings of the run to neither."""
    parts = [part for part in run_name.split("/") if ":" not in part and part not in CLOCKS]
    arguments = []
    while parts[-1].isdigit():
        arguments.insert(0, parts.pop())
    return "/".join(parts[:-1] + arguments), parts[-1]


def measure(entry):
    """Returns (amount, unit)."""
    if "bytes" in entry:
        return entry["bytes"], "B"
    wall_clock = any(clock in entry["run_name"].split("/") for clock in ("real_time", "manual_time"))
    time = entry["real_time" if wall_clock else "cpu_time"]
    return time * NANOSECONDS[entry["time_unit"]], "ns"


def main(path):
    rows = collections.defaultdict(dict)
    with open(path, encoding="utf-8") as file:
        for entry in json.load(file)["benchmarks"]:
            if entry.get("aggregate_name") == "median" and not entry.get("error_occurred"):
                row, who = split_name(entry["run_name"])
                rows[row][who] = measure(entry)

    print(f"{'row':44} {'ours':>17} {'best peer':>17} {'':16} {'ratio':>6}  others")
    for row, measured in rows.items():
        ours = measured.pop("ours", None)
        line = f"{row:44} " + (f"{ours[0]:14,.2f} {ours[1]:2}" if ours else f"{'-':>17}")
        ratios = [f"{ours[0] / amount:6.2f}" if ours and amount else "" for amount, _ in measured.values()]
        peers = sorted(zip(measured, measured.values(), ratios), key=lambda peer: peer[1][0])
        for who, (amount, unit), ratio in peers[:1]:
            line += f" {amount:14,.2f} {unit:2} {who:16} {ratio:6}"
        print(f"{line}  {', '.join(f'{who} {ratio.strip()}' for who, _, ratio in peers[1:])}".rstrip())


main(sys.argv[1])
