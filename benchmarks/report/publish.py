# SPDX-License-Identifier: Apache-2.0
"""Writes docs/performance.md with its chart, and the table in benchmarks/README.md."""

import datetime
import os
import platform
import statistics
import subprocess

import figures

_SIZES = {120: "120 B", 1024: "1 KiB", 65536: "64 KiB", 1048576: "1 MiB"}
_BEGIN, _END = "<!-- table: written by scripts/bench -->", "<!-- end of table -->"

_PAGE = """\
# Performance

Measured on {date} with `scripts/bench` on {machine}.
How, and what each name stands for: [benchmarks/README.md](../benchmarks/README.md). Times depend on
the machine and on what else it does; compare the ratios, which were taken within one run.

![The time of one request and its answer, by contender](performance.svg)

## Budgets

{budgets}

*Least possible*: the same ratio for an application that handles its sockets with Ecore and does only what
every request has to do whoever handles it: add and delete one timer, look for the allow list, take the
answer, a C text, over as a text of its own and copy that into a bundle. No library can be quicker here.

## Where the time of an exchange goes

As multiples of the bare sockets' time, each what it adds to those before it.

{shares}

Ecore's system calls per turn of the loop, and its timer, are more than the library and the platform
together. A long answer is copied a third time on its way, for a parcel keeps what was written to
it, whatever happens to the bundle. Why that copy is not saved: [design.md](design.md), *Large messages*.

The system calls of one request in the application, of which strace shows no others:

| Call | What for |
| --- | --- |
| `epoll_wait` | Ecore asks which descriptors are ready |
| `recvfrom` | the request, and whatever else has arrived, in one call |
| `openat` | the allow list: looked for anew by every request while there is none, so that a list counts from the moment it is installed |
| `sendmsg` | the whole answer, from where its pieces lie |
| `pselect6` | Ecore sleeps until something is ready |
| `getpid`, twice | Ecore's own, around its sleep |

## A request and its answer between two processes

Microseconds for one exchange, all processes on one CPU, the log filtered. The ratio is the median of
those of {rounds} rounds, with the least and the greatest; the ratio of CPU times is that of what all
processes of an exchange together ran, which other programs on the machine do not disturb.

{roundtrip}
{missing}
## Instructions per request

Counted by callgrind, so the same in every run of one build. *direct*: answered inside the callback.
*deferred*: the request came before its callback was registered. *state*: the application's state.

{counted}

The C library, the C++ runtime and memory allocation count for whoever calls them; Ecore counts for
itself: a timer added and deleted costs {timer:,.0f} instructions, which every request does once.

## In larger surroundings

Time of one exchange, with the assistant's client of this project, against the first line.

{scale}

Memory of the application after 1,000 requests: {before[resident]:,} KiB resident, {before[privateDirty]:,}
KiB written to; after {requests:,} more: {after[resident]:,} KiB and {after[privateDirty]:,} KiB.

## Size

{size}
"""


def table(head, rows, numbers=()):
    """A Markdown table; the columns in `numbers` are set flush right."""
    rule = ["---:" if column in numbers else "---" for column in range(len(head))]
    return "\n".join("| " + " | ".join(str(cell) for cell in row) + " |"
                     for row in [head, rule, *rows])


def _budgets(results):
    verdict = {True: "yes", False: "**no**", None: "–"}
    return table(["What", "Budget", "Measured", "Least possible", "Holds"],
                 [(row.what, row.budget, row.measured, row.least, verdict[row.holds])
                  for row in figures.budget_rows(results)])


def _micro(nanoseconds):
    return f"{nanoseconds / 1000:,.1f}"


def _span(ratio):
    return "{:.2f} ({:.2f} – {:.2f})".format(*ratio)


def _roundtrip(roundtrip):
    parts = []
    for size, name in _SIZES.items():
        contenders = figures.of_size(roundtrip, size)
        base = contenders[0]["name"]
        rows = [(each["name"], _micro(each["p50"]), _micro(each["p99"]), _micro(each["mean"]),
                 _span(figures.ratios(contenders, each["name"], base)),
                 _span(figures.ratios(contenders, each["name"], base, "cpuRounds")))
                for each in contenders]
        head = [f"Answer of {name}", "p50", "p99", "mean", "ratio", "ratio of CPU times"]
        parts.append(table(head, rows, range(1, 6)))
    return "\n\n".join(parts) + "\n"


def _missing(roundtrip):
    return "".join(f"\n{name} was not measured: this build lacks {packages}.\n"
                   for name, packages in roundtrip.get("missing", {}).items())


_LAYERS = (("bare sockets", "the bytes, over bare sockets"),
           ("Ecore and two sockets", "Ecore's loop"),
           (figures.LEAST, "a timer, looking for the allow list, two copies of the answer"),
           ("library", "the library and the platform"))


def _shares(roundtrip):
    rows = {what: [what] for _, what in _LAYERS}
    for size in _SIZES:
        contenders = figures.of_size(roundtrip, size)
        below = 0
        for name, what in _LAYERS:
            ratio = figures.ratios(contenders, name, _LAYERS[0][0], "cpuRounds")[0]
            rows[what].append(f"{ratio - below:.2f}")
            below = ratio
    return table(["", *_SIZES.values()], rows.values(), range(1, 1 + len(_SIZES)))


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
    rows = [(name, f"{value:,}") for name, value in
            sorted(size["file"]["sections"].items(), key=lambda item: -item[1])]
    rows = [("libnorix.so, stripped", f"{size['file']['bytes']:,}"), *rows]
    start = size["start"]
    return (table(["", "Bytes"], rows, [1]) + f"""

{size['file']['relocations']} relocations. In an idle application {size['mapped']['privateDirty']} KiB of
its pages are written to; the first `norix_initialize` of a process takes {_micro(start['p50'])} µs and
{start['heapBytes']:,} bytes of the heap, the platform's own included.""")


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


def _replace_table(path, text):
    with open(path, encoding="utf-8") as file:
        page = file.read()
    before, rest = page.split(_BEGIN)
    after = rest.split(_END)[1]
    with open(path, "w", encoding="utf-8") as file:
        file.write(before + _BEGIN + "\n" + text + "\n" + _END + after)


def publish(results, root):
    """Writes the page, the chart and the table of the last run."""
    page = _PAGE.format(date=datetime.date.today().isoformat(), machine=_machine(),
                        budgets=_budgets(results),
                        shares=_shares(results["roundtrip"]), rounds=results["roundtrip"]["rounds"],
                        roundtrip=_roundtrip(results["roundtrip"]),
                        missing=_missing(results["roundtrip"]),
                        counted=_counted(results["counted"]),
                        timer=results["counted"]["ecore/a timer added and deleted"],
                        scale=_scale(results["scale"]), size=_size(results["size"]),
                        before=results["scale"]["age"]["memoryBefore"],
                        after=results["scale"]["age"]["memoryAfter"],
                        requests=results["scale"]["age"]["requests"])
    with open(os.path.join(root, "docs", "performance.md"), "w", encoding="utf-8") as file:
        file.write(page)
    _chart(results["roundtrip"], os.path.join(root, "docs", "performance.svg"))
    _replace_table(os.path.join(root, "benchmarks", "README.md"), _budgets(results))
