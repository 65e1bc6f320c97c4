#!/usr/bin/env python3
"""Prints the table of a benchmark run: medians per contender and msg/peer ratios.

Usage: bench_report.py RESULTS.json [--markdown]

RESULTS.json is Google Benchmark's JSON output of msg_bench run with
repetitions (the median aggregates are read). Benchmarks are named
"<workload>/<contender>[/<argument>]", e.g. "W1_lookup/gettext". Ratios are
msg's median over each peer's median in the same run, CPU time. The
targets of the workloads are checked and marked.
"""

import json
import sys

# (workload, peer, highest acceptable msg/peer ratio)
TARGETS = [
    ("W1_lookup", "gettext", 0.8),
    ("W1_lookup", "icu", 0.5),
    ("W2_render", "gettext+snprintf", 0.8),
    ("W2_render", "icu_cached_pattern", 0.3),
    ("W3_load", "xerces_bare", 1.15),
    # A peer named in full is taken from another workload of the same run;
    # a limit of None reports the ratio without a target.
    ("W3c_load", "W3_load/msg", 0.01),
    ("W3c_load", "W3_load/gettext_ready", None),
    ("W3c_load", "W3_load/icu_ready", None),
    # Lookups from a compiled catalogue read in place.
    ("W1c_lookup", "W1_lookup/gettext", 0.5),
]

# W4c: the lookup read in place over gettext's at the same size, at most
# this factor, per size; and the heap per text its load leaves.
COMPILED_SCALE_TARGETS = [("1000000", 0.5)]
COMPILED_HEAP_LIMIT_BYTES = 16

# Highest acceptable median CPU time of a contender, in ns.
TIME_TARGETS = [("W3c_load/msg", 2e6)]

# W4: the lookup at the largest catalogue over the lookup at the standard
# one (keys), at most this factor.
SCALE_TARGET = ("1000000", "10000", 5.0)

# W4: heap bytes per entry before the key index (the table of chains alone),
# and the most growth allowed over it.
HEAP_BASELINE_BYTES = 210
HEAP_GROWTH_LIMIT = 4 / 3

# Highest acceptable heap allocations per warm write.
WRITE_TARGETS = {"msg_null_channel": 0, "msg_formatting_channel": 1}

# Counters worth a column, in this order.
COUNTERS = [
    "allocs_per_op",
    "allocs_per_write",
    "ranked_per_lookup",
    "chain_per_lookup",
    "mean_chain",
    "longest_chain",
    "buckets",
    "entries",
    "heap_bytes_per_entry",
    "resident_bytes_per_entry",
    "xml_heap_bytes_per_entry",
    "xml_resident_bytes_per_entry",
    "texts",
]

UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def load_medians(path):
    with open(path) as f:
        data = json.load(f)
    medians = {}
    for bench in data["benchmarks"]:
        if bench.get("run_type") == "aggregate" and bench.get("aggregate_name") != "median":
            continue
        if bench.get("error_occurred"):
            name = "/".join(part for part in split(bench["run_name"]) if part)
            medians[name] = {"error": bench.get("error_message", "error")}
            continue
        name = "/".join(part for part in split(bench["run_name"]) if part)
        # Without repetitions there are no aggregates; take the single run.
        if bench.get("run_type") != "aggregate" and name in medians:
            continue
        scale = UNIT_NS[bench.get("time_unit", "ns")]
        medians[name] = {
            "cpu_ns": bench["cpu_time"] * scale,
            "real_ns": bench["real_time"] * scale,
            "counters": {c: bench[c] for c in COUNTERS if c in bench},
        }
    return data.get("context", {}), medians


def split(name):
    # "W3_load/gettext_ready/iterations:200" -> ("W3_load", "gettext_ready", ""); the
    # run settings in a name are not arguments.
    parts = [p for p in name.split("/")
             if not p.startswith(("iterations:", "repeats:", "min_time:"))]
    workload, contender = parts[0], parts[1] if len(parts) > 1 else ""
    argument = "/".join(parts[2:])
    return workload, contender, argument


def format_time(ns):
    if ns >= 1e6:
        return f"{ns / 1e6:.1f} ms"
    if ns >= 1e3:
        return f"{ns / 1e3:.2f} us"
    return f"{ns:.0f} ns"


def format_counter(value):
    if value == int(value):
        return f"{int(value)}"
    return f"{value:.2f}" if value < 100 else f"{value:.0f}"


def main():
    if len(sys.argv) < 2:
        print(__doc__)
        return 2
    markdown = "--markdown" in sys.argv[2:]
    context, medians = load_medians(sys.argv[1])

    def order(name):
        workload, contender, argument = split(name)
        number = int(argument) if argument.isdigit() else 0
        return (workload, not contender.startswith("msg"), contender, number)

    rows = []
    for name, result in sorted(medians.items(), key=lambda item: order(item[0])):
        workload, contender, argument = split(name)
        contender = contender + (f" ({argument})" if argument else "")
        if "error" in result:
            rows.append((workload, contender, "skipped: " + result["error"], "", ""))
            continue
        msg = medians.get(f"{workload}/msg")
        ratio = ""
        if not contender.startswith("msg") and msg and "cpu_ns" in msg:
            ratio = f"{msg['cpu_ns'] / result['cpu_ns']:.2f}"
        counters = ", ".join(
            f"{c}={format_counter(v)}" for c, v in result["counters"].items()
        )
        rows.append((workload, contender, format_time(result["cpu_ns"]), ratio, counters))

    header = ("workload", "contender", "median CPU time", "msg/peer", "counters")
    if markdown:
        print("| " + " | ".join(header) + " |")
        print("|" + "---|" * len(header))
        for row in rows:
            print("| " + " | ".join(row) + " |")
    else:
        widths = [max(len(str(r[i])) for r in rows + [header]) for i in range(len(header))]
        for row in [header] + rows:
            print("  ".join(str(v).ljust(w) for v, w in zip(row, widths)).rstrip())

    print()
    print("Targets (msg/peer, median CPU time, same run):")
    missed = 0
    for workload, peer, limit in TARGETS:
        msg = medians.get(f"{workload}/msg", {})
        other = medians.get(peer if "/" in peer else f"{workload}/{peer}", {})
        if "cpu_ns" not in msg or "cpu_ns" not in other:
            print(f"  {workload}: msg/{peer} <= {limit}: not measured")
            continue
        ratio = msg["cpu_ns"] / other["cpu_ns"]
        if limit is None:
            print(f"  {workload}: msg/{peer} = {ratio:.3g} (reported, no target)")
            continue
        verdict = "met" if ratio <= limit else "MISSED"
        missed += verdict != "met"
        print(f"  {workload}: msg/{peer} = {ratio:.3g}, target <= {limit}: {verdict}")
    large, standard, factor = SCALE_TARGET
    big = medians.get(f"W4_scale/msg/{large}", {})
    small = medians.get(f"W4_scale/msg/{standard}", {})
    if "cpu_ns" in big and "cpu_ns" in small:
        ratio = big["cpu_ns"] / small["cpu_ns"]
        verdict = "met" if ratio <= factor else "MISSED"
        missed += verdict != "met"
        print(f"  W4_scale: lookup at {large} keys / at {standard} keys = {ratio:.2f}, "
              f"target <= {factor:g}: {verdict}")
    else:
        print(f"  W4_scale: lookup at {large} / {standard} keys: not measured")
    heap = [(name, result["counters"]["heap_bytes_per_entry"])
            for name, result in medians.items()
            if name.startswith("W4_scale/msg/") and "heap_bytes_per_entry" in result.get("counters", {})]
    if heap:
        name, worst = max(heap, key=lambda item: item[1])
        limit = HEAP_BASELINE_BYTES * HEAP_GROWTH_LIMIT
        verdict = "met" if worst <= limit else "MISSED"
        missed += verdict != "met"
        print(f"  W4_scale: heap bytes per entry at most {worst:.0f} ({split(name)[2]} keys), "
              f"target <= {limit:.0f} ({HEAP_BASELINE_BYTES} before the key index + a third): "
              f"{verdict}")
    for size, limit in COMPILED_SCALE_TARGETS:
        ours = medians.get(f"W4c_scale/msg/{size}", {})
        theirs = medians.get(f"W4c_scale/gettext/{size}", {})
        if "cpu_ns" not in ours or "cpu_ns" not in theirs:
            print(f"  W4c_scale: msg/gettext at {size} keys: not measured")
            continue
        ratio = ours["cpu_ns"] / theirs["cpu_ns"]
        verdict = "met" if ratio <= limit else "MISSED"
        missed += verdict != "met"
        print(f"  W4c_scale: msg/gettext at {size} keys = {ratio:.3g}, target <= {limit}: "
              f"{verdict}")
    # Not targets: what the reads of a lookup in place cost alone, so that the
    # report shows how close W4c is to what its format allows.
    for name in ("W4c_reads/find/1000000", "W4c_reads/one_slot_per_key/1000000"):
        ours = medians.get(name, {})
        theirs = medians.get("W4c_scale/gettext/1000000", {})
        if "cpu_ns" in ours and "cpu_ns" in theirs:
            print(f"  {name}: {format_time(ours['cpu_ns'])}, "
                  f"{ours['cpu_ns'] / theirs['cpu_ns']:.3g} of gettext's lookup (no target)")
    for name, result in sorted(medians.items()):
        heap_bytes = result.get("counters", {}).get("heap_bytes_per_entry")
        if not name.startswith("W4c_scale/msg/") or heap_bytes is None:
            continue
        verdict = "met" if heap_bytes <= COMPILED_HEAP_LIMIT_BYTES else "MISSED"
        missed += verdict != "met"
        print(f"  W4c_scale: heap bytes per text read in place at {split(name)[2]} keys = "
              f"{heap_bytes:.2f}, target <= {COMPILED_HEAP_LIMIT_BYTES}: {verdict}")
    for name, limit in TIME_TARGETS:
        result = medians.get(name, {})
        if "cpu_ns" not in result:
            print(f"  {name} <= {format_time(limit)}: not measured")
            continue
        verdict = "met" if result["cpu_ns"] <= limit else "MISSED"
        missed += verdict != "met"
        print(f"  {name} = {format_time(result['cpu_ns'])}, target <= {format_time(limit)}: "
              f"{verdict}")
    for contender, limit in WRITE_TARGETS.items():
        result = medians.get(f"W5_write/{contender}", {})
        allocations = result.get("counters", {}).get("allocs_per_write")
        if allocations is None:
            print(f"  W5_write: {contender}: not measured")
            continue
        verdict = "met" if allocations <= limit else "MISSED"
        missed += verdict != "met"
        print(f"  W5_write: {contender}: {allocations:g} allocations per write, "
              f"target <= {limit}: {verdict}")
    if context:
        print()
        print(f"Run: {context.get('date', '?')} on {context.get('num_cpus', '?')} CPUs "
              f"at {context.get('mhz_per_cpu', '?')} MHz, load average "
              f"{', '.join(f'{x:.2f}' for x in context.get('load_avg', []))}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
