# SPDX-License-Identifier: Apache-2.0
"""Fills the tables of docs/performance.md and benchmarks/README.md, and draws the chart.

A table stands between the comments "table NAME" and "end of table"; the words around it are the page's
own.
"""

import datetime
import os
import platform
import statistics
import subprocess

import figures

_END = "<!-- end of table -->"


def table(head, rows, numbers=()):
    """A Markdown table; the columns in `numbers` are set flush right."""
    rule = ["---:" if column in numbers else "---" for column in range(len(head))]
    return "\n".join("| " + " | ".join(str(cell) for cell in row) + " |"
                     for row in [head, rule, *rows])


def _budgets(results):
    verdict = {True: "yes", False: "**no**"}
    return table(["What", "Budget", "Measured", "Holds"],
                 [(row.what, row.budget, row.measured, verdict[row.holds])
                  for row in figures.budget_rows(results)])


def _comparison(ratio):
    return "not measured" if ratio is None else (
        f"{ratio[0]:.2f} ×, {'ahead' if ratio[0] < 1 else 'behind'}")


def _peers(roundtrip):
    return table(["The library's time, as a share of", *figures.SIZES.values()],
                 [(peer, *map(_comparison, ratios))
                  for peer, ratios in figures.comparisons(roundtrip)])


def _micro(nanoseconds):
    return f"{nanoseconds / 1000:,.1f}"


def _span(ratio):
    return "{:.2f} ({:.2f} – {:.2f})".format(*ratio)


def _roundtrip(roundtrip):
    parts = []
    for size, name in figures.SIZES.items():
        contenders = figures.of_size(roundtrip, size)
        base = contenders[0]["name"]
        rows = [(each["name"], _micro(each["p50"]), _micro(each["p99"]), _micro(each["mean"]),
                 _span(figures.ratios(contenders, each["name"], base)),
                 _span(figures.ratios(contenders, each["name"], base, "cpuRounds")))
                for each in contenders]
        head = [f"Answer of {name}", "p50", "p99", "mean", "ratio", "ratio of CPU times"]
        parts.append(table(head, rows, range(1, 6)))
    return "\n\n".join(parts)


_LAYERS = (("bare sockets", "the bytes, over bare sockets"),
           ("Ecore and two sockets", "Ecore's loop"),
           (figures.LEAST, "a timer, looking for the allow list, two copies of the answer"),
           ("library", "the library and the platform"))


def _shares(roundtrip):
    rows = {what: [what] for _, what in _LAYERS}
    for size in figures.SIZES:
        contenders = figures.of_size(roundtrip, size)
        below = 0
        for name, what in _LAYERS:
            ratio = figures.ratios(contenders, name, _LAYERS[0][0], "cpuRounds")[0]
            rows[what].append(f"{ratio - below:.2f}")
            below = ratio
    return table(["", *figures.SIZES.values()], rows.values(), range(1, 1 + len(figures.SIZES)))


def _counted(counted):
    return table(["What", "Per request"], [(name, f"{value:,.1f}")
                                           for name, value in counted.items()], [1])


def _scale(scale):
    groups = {"Registered actions": scale["actions"],
              "Connections that ask at once": scale["connections"],
              "Bytes of parameters": scale["parameters"],
              "Log": scale["log"],
              f"After {scale['age']['requests']:,} requests": scale["age"]["contenders"]}
    rows = []
    for group, contenders in groups.items():
        base = contenders[0]["name"]
        for each in contenders:
            cpu = statistics.median(each["cpuRounds"])
            rows.append((group, each["name"], _micro(each["p50"]), _micro(cpu),
                         _span(figures.ratios(contenders, each["name"], base, "cpuRounds"))))
    return table(["", "", "p50, µs", "CPU, µs", "ratio of CPU times"], rows, [2, 3, 4])


def _size(size):
    start = size["start"]
    return table(["", ""], [
        ("libnorix.so, stripped", f"{size['file']['bytes']:,} bytes"),
        ("pages of it written to, in an idle application", f"{size['mapped']['privateDirty']} KiB"),
        ("the first norix_initialize of a process, the platform's part included",
         f"{_micro(start['p50'])} µs, {start['heapBytes']:,} bytes of the heap")], [1])


def _memory(scale):
    age = scale["age"]
    rows = [(f"after {requests} requests", f"{memory['resident']:,}", f"{memory['privateDirty']:,}")
            for requests, memory in (("1,000", age["memoryBefore"]),
                                     (f"{age['requests']:,} more", age["memoryAfter"]))]
    return table(["The application's memory, KiB", "resident", "written to"], rows, [1, 2])


def _run(roundtrip):
    return table(["", ""], [("date", datetime.date.today().isoformat()), ("machine", _machine()),
                            ("rounds", roundtrip["rounds"])])


def _machine():
    model = "a processor of unknown make"
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
                break
    kernel = ".".join(platform.release().split(".")[:2])
    virtual = subprocess.run(["grep", "-qw", "hypervisor", "/proc/cpuinfo"], check=False)
    kind = "a virtual machine" if virtual.returncode == 0 else "a machine"
    return (f"{kind} with {os.cpu_count()} CPUs ({model}), {platform.system()} {kernel}, "
            f"{platform.freedesktop_os_release()['PRETTY_NAME']}")


def _chart(roundtrip, path):
    contenders = figures.of_size(roundtrip, 120)
    bars = "\n".join(f'{row} {each["p50"] / 1000} "{each["name"]}"'
                     for row, each in enumerate(reversed(contenders)))
    script = f"""
set terminal svg size 800,{120 + 34 * len(contenders)} font "sans-serif,13" background rgb "white"
set output "{path}"
set title "A request and its answer of 120 bytes between two processes"
set xlabel "microseconds (median)"
set xrange [0:*]
set yrange [-0.6:{len(contenders) - 0.4}]
set border 1
set ytics nomirror scale 0
set xtics nomirror
set grid xtics
set lmargin 32
set style fill solid 0.8 noborder
$bars << END
{bars}
END
plot $bars using ($2/2):1:($2/2):(0.35):ytic(3) with boxxyerror linecolor rgb "#3465a4" notitle, \\
     $bars using 2:1:(sprintf(" %.1f", $2)) with labels left notitle
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def _fill(path, tables):
    with open(path, encoding="utf-8") as file:
        page = file.read()
    for name, text in tables.items():
        before, rest = page.split(f"<!-- table {name} -->")
        page = f"{before}<!-- table {name} -->\n{text}\n{_END}{rest.split(_END, 1)[1]}"
    with open(path, "w", encoding="utf-8") as file:
        file.write(page)


def publish(results, root):
    """Fills the pages' tables with a run's figures."""
    roundtrip = results["roundtrip"]
    budgets = _budgets(results)
    _fill(os.path.join(root, "benchmarks", "README.md"), {"budgets": budgets})
    _fill(os.path.join(root, "docs", "performance.md"), {
        "run": _run(roundtrip), "budgets": budgets, "peers": _peers(roundtrip),
        "shares": _shares(roundtrip), "roundtrip": _roundtrip(roundtrip),
        "counted": _counted(results["counted"]), "scale": _scale(results["scale"]),
        "memory": _memory(results["scale"]), "size": _size(results["size"])})
    _chart(roundtrip, os.path.join(root, "docs", "performance.svg"))
