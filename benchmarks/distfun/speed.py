"""speed.py RESULT PAGE: writes the table of speed into a Markdown page.

RESULT is the JSON output of distfun_benchmark with repetitions; what counts is the least of their
processor times, which other programs on the machine disturb least.
"""

import json
import math
import sys

import tables

PEERS = ["Boost", "GSL", "R"]


def read(path):
    """{function: {region: {library: ns a call}}}"""
    functions = {}
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
        # Interleaved as they ran, back in the order of the regions.
        for run in sorted(runs, key=lambda run: run["family_index"]):
            if run["run_type"] != "iteration":
                continue
            function, rest = run["run_name"].split("/", 1)
            region, library = rest.rsplit("/", 1)
            times = functions.setdefault(function, {}).setdefault(region, {})
            times[library] = min(times.get(library, math.inf), run["ns/call"])
    return functions


def ns(value):
    return f"{value:.0f}" if value < 1e4 else f"{round(value, 2 - len(str(int(value)))):.0f}"


def ratio(value):
    return f"{value:.2g}" if value < 1 else f"{value:.1f}" if value < 10 else f"{value:.0f}"


def main():
    _, result, page = sys.argv
    rows = []
    slower = []
    for function, regions in read(result).items():
        own = [times["Accredit"] for times in regions.values()]
        row = [function, f"{ns(min(own))} to {ns(max(own))}" if len(own) > 1 else ns(own[0])]
        for peer in PEERS:
            ratios = [t[peer] / t["Accredit"] for t in regions.values() if peer in t]
            if ratios:
                middle = math.exp(sum(map(math.log, ratios)) / len(ratios))
                row.append(f"{ratio(middle)} ({ratio(min(ratios))} to {ratio(max(ratios))})")
            else:
                row.append("–")
        rows.append(row)
        for region, times in regions.items():
            if min(times.values()) < 0.9 * times["Accredit"]:
                cells = [ns(times[peer]) if peer in times else "–" for peer in PEERS]
                slower.append([function, region.replace("|", "\\|"), ns(times["Accredit"])] + cells)
    peers = [f"{peer} / Accredit" for peer in PEERS]
    tables.put(page, "speed", tables.markdown(["Function", "Accredit, ns"] + peers, rows))
    header = ["Function", "Region", "Accredit, ns"] + PEERS
    tables.put(page, "slower", tables.markdown(header, slower))


if __name__ == "__main__":
    main()
