# SPDX-License-Identifier: Apache-2.0
"""What the runs have measured, as ratios and as rows of the budget's table."""

import statistics

# The sizes of an answer, and their names.
SIZES = {120: "120 B", 1024: "1 KiB", 65536: "64 KiB", 1048576: "1 MiB"}

# An exchange that takes longer is likely to be interrupted by another program: its CPU time is
# taken instead of the time that passed.
_LONG = 16384

_LIBRARY = "library"
# Ecore and what every request needs: no library on Ecore can be quicker.
LEAST = "Ecore and the duties"


def ratios(contenders, name, base, key="rounds"):
    """Median, least and greatest of the ratios within a round; None without one of the two."""
    found = {contender["name"]: contender for contender in contenders}
    if name not in found or base not in found:
        return None
    pairs = zip(found[name][key], found[base][key])
    each = [value / floor for value, floor in pairs]
    return statistics.median(each), min(each), max(each)


def of_size(roundtrip, answer):
    return next(size["contenders"] for size in roundtrip["sizes"] if size["answer"] == answer)


def roundtrip_ratio(roundtrip, answer, name, base):
    key = "cpuRounds" if answer >= _LONG else "rounds"
    return ratios(of_size(roundtrip, answer), name, base, key)


class Row:
    """One line of the budget's table."""

    def __init__(self, what, budget, measured, holds):
        self.what, self.budget, self.measured, self.holds = what, budget, measured, holds


def _ratio_row(what, limit, ratio):
    median, lowest, greatest = ratio
    return Row(what, f"≤ {limit} ×", f"{median:.2f} × ({lowest:.2f} – {greatest:.2f})",
               median <= limit)


def _count_row(what, limit, value, unit="instructions"):
    return Row(what, f"≤ {limit:,} {unit}", f"{value:,.0f} {unit}", value <= limit)


def _time_rows(roundtrip):
    for size, limit in ((120, 10), (1024, 10), (65536, 10), (1048576, 6)):
        above = [100 * (ratio - 1) for ratio in roundtrip_ratio(roundtrip, size, _LIBRARY, LEAST)]
        yield Row(f"an answer of {SIZES[size]}, above the least possible", f"≤ {limit} %",
                  "{:.0f} % ({:.0f} – {:.0f})".format(*above), above[0] <= limit)


def comparisons(roundtrip):
    """Per peer its name, and per size the ratio of the library's time to the peer's, or None."""
    for peer in ("sd-bus through dbus-daemon", "sd-bus peer to peer", "gRPC over a Unix socket"):
        yield peer, [roundtrip_ratio(roundtrip, size, _LIBRARY, peer) for size in SIZES]


def _counted_rows(counted):
    yield _count_row("the library per request, without Ecore", 3700, counted["library/direct/total"])
    yield _count_row("the library per request", 7, counted["library/direct/allocations"],
                     "allocations")
    for unit, limit in (("instructions", 400), ("allocations", 2)):
        yield _count_row("norix.hpp per request, above the C interface", limit,
                         max(counted[f"norix.hpp/{road}/{unit} above C"]
                             for road in ("direct", "state")), unit)
    yield _count_row("the platform per request: bundle, parcel and port, in the application", 7500,
                     counted["platform/application/bundle, parcel and port"])
    yield _count_row("the whole application per request", 20, counted["application/allocations"],
                     "allocations")
    yield _count_row("a log line that the filter drops", 60, counted["platform/a filtered log line"])


def _scale_rows(scale):
    yield _ratio_row("10,000 registered actions, against 10", 1.1,
                     ratios(scale["actions"], "10000", "10"))
    yield _ratio_row(f"after {scale['age']['requests']:,} requests, against a new application", 1.1,
                     ratios(scale["age"]["contenders"], "aged", "fresh"))
    for connections in ("100", "500"):
        # Time per request, of which a rate that is not lower is not more.
        ratio = ratios(scale["connections"], connections, "1", "cpuRounds")
        yield Row(f"requests per second over {connections} connections, against 1", "≥ 1 ×",
                  f"{1 / ratio[0]:.2f} × ({1 / ratio[2]:.2f} – {1 / ratio[1]:.2f})", ratio[0] <= 1)


def _size_rows(size):
    kib = 1024
    yield _count_row("libnorix.so, stripped", 60 * kib, size["file"]["bytes"], "bytes")
    private = size["mapped"]["privateDirty"] + size["start"]["heapBytes"] / kib
    yield _count_row("its private memory in an idle application, with the heap that its start takes",
                     16, private, "KiB")


def _bundle_row(bundle):
    slowest = max(bundle["shapes"], key=lambda shape: shape["p50"])
    milliseconds = slowest["p50"] / 1e6
    return Row("a peer's bundle of 64 MiB, the costliest kind, read and freed", "≤ 100 ms of CPU time",
               f"{milliseconds:.0f} ms ({slowest['name']})", milliseconds <= 100)


def _median_of_differences(more, less):
    return statistics.median(one - other for one, other in zip(more, less))


def _microseconds_row(what, limit, nanoseconds):
    return Row(what, f"≤ {limit} µs", f"{nanoseconds / 1000:.1f} µs", nanoseconds <= limit * 1000)


def _tools_rows(tools):
    probe = tools["probe"]
    yield _microseconds_row("the probe, per request, on the application's loop", 3,
                            _median_of_differences(probe["with"], probe["without"]))
    library, bridge = tools["bridge"]
    yield _microseconds_row("an agent's call, above a direct exchange", 150,
                            _median_of_differences(bridge["rounds"], library["rounds"]))
    scenario = tools["scenario"]
    own = _median_of_differences(scenario["played"], scenario["exchanges"]) / 1e9
    yield Row(f"a scenario of {scenario['steps']:,} steps, beside as many exchanges", "≤ 1 s",
              f"{own:.2f} s", own <= 1)
    state, *others = tools["start"]
    milliseconds = [f"{each['p50'] / 1e6:.1f} ms" for each in tools["start"]]
    beside = f" (busctl --version: {milliseconds[1]})" if others else " (without busctl)"
    yield Row("norix-assistant state, cold start to answer", "≤ 10 ms", milliseconds[0] + beside,
              state["p50"] <= 10e6)


def budget_rows(results):
    return [*_time_rows(results["roundtrip"]), *_counted_rows(results["counted"]),
            *_scale_rows(results["scale"]), *_size_rows(results["size"]),
            *_tools_rows(results["tools"]),
            _bundle_row(results["bundle"])]
