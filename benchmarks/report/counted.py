# SPDX-License-Identifier: Apache-2.0
"""Runs the counted benchmarks under callgrind, and turns their profiles into figures.

A figure is a number of instructions, or of allocations, per request. Its name is a path: what was
run, and which part of it the figure is of.
"""

import os
import subprocess

from callgrind import Profile

_VALGRIND = "/usr/bin/valgrind"
_PLATFORM_PARTS = {
    "bundle": "libbundle.",
    "parcel and port": "librpc-port.",
    "log": "libdlog.",
    "application": "libcapi-"
}
_ECORE = ("libecore", "libeina.", "libeo.", "libefl", "libemile.", "libeet.")
_LIBRARY = "libnorix."
_PROGRAMS = "benchmark_"
_OWNERS = (_LIBRARY, _PROGRAMS, *_PLATFORM_PARTS.values(), *_ECORE)

# The road of a request: each part is what a function does without what the next ones do.
_PARTS = {
    "direct": {
        "received": (r"::OnReceivedCB\(", [r"messageService::Send\("]),
        "allow list": (r"::isPermittedSender\(", []),
        "routed": (r"messageService::Send\(", [r"::isPermittedSender\(",
                                               r"ActionRequestImpl::receiveRequest\("]),
        "handed over": (r"ActionRequestImpl::receiveRequest\(", []),
        "completed": (r"^norix_complete_action_execution$", [r"ResponseCB::Invoke\("]),
        "delivered": (r"ResponseCB::Invoke\(", []),
    },
    "deferred": {
        "received": (r"::OnReceivedCB\(", [r"messageService::Send\("]),
        "allow list": (r"::isPermittedSender\(", []),
        "routed": (r"messageService::Send\(", [r"::isPermittedSender\(",
                                               r"ActionRequestImpl::receiveRequest\("]),
        "parked": (r"ActionRequestImpl::receiveRequest\(|::_bundleDataCb\(", []),
        "registered": (r"^norix_(un)?set_action_execution_cb$", []),
        "handed over": (r"::_actionExecutionFireCb\(", []),
        "timed out": (r"::_completeActionExecutionCheckCb\(", [r"ResponseCB::Invoke\("]),
        "delivered": (r"ResponseCB::Invoke\(", []),
    },
    "state": {
        "received": (r"::OnReceivedCB\(", [r"messageService::Send\("]),
        "allow list": (r"::isPermittedSender\(", []),
        "routed": (r"messageService::Send\(", [r"::isPermittedSender\(",
                                               r"StateRequestImpl::receiveRequest\("]),
        "handed over": (r"StateRequestImpl::receiveRequest\(", []),
        "completed": (r"^norix_complete_app_state_request$", [r"ResponseCB::Invoke\("]),
        "delivered": (r"ResponseCB::Invoke\(", []),
    },
}


def _is(*prefixes):
    return lambda name: name.startswith(prefixes)


def _others(*prefixes):
    return lambda name: name.startswith(_OWNERS) and not name.startswith(prefixes)


def _forget(profile):
    """No figure may come from an earlier run's file."""
    if os.path.exists(profile + ".1"):
        os.remove(profile + ".1")


def _callgrind(profile, command):
    # Bound at start: otherwise the first calls would pay for looking their functions up.
    environment = {**os.environ, "LD_BIND_NOW": "1"}
    _forget(profile)
    subprocess.run([_VALGRIND, "-q", "--tool=callgrind", "--instr-atstart=no",
                    "--callgrind-out-file=" + profile, *command],
                   check=True, env=environment, stderr=subprocess.DEVNULL)
    return Profile(profile + ".1")


def _library(programs, folder, requests, road, actions):
    profile = _callgrind(os.path.join(folder, f"{road}-{actions}"), [
        os.path.join(programs, "benchmark_library"), f"--count={road}", f"--requests={requests}",
        f"--actions={actions}"
    ])
    name = f"library/{road}"
    if actions != 10:
        return {f"{name} with {actions} actions/total":
                profile.part_of(_is(_LIBRARY), _is(_PROGRAMS)) / requests}
    figures = {
        f"{name}/total": profile.part_of(_is(_LIBRARY), _is(_PROGRAMS)) / requests,
        f"{name}/allocations": profile.allocations(lambda user: not user.startswith(_PROGRAMS)) /
                               requests
    }
    for part, (function, without) in _PARTS[road].items():
        inside = sum(profile.below(other, _is(_PROGRAMS)) for other in without)
        figures[f"{name}/{part}"] = (profile.below(function, _is(_PROGRAMS)) - inside) / requests
    return figures


def _above_c(programs, folder, requests, road):
    """What norix.hpp costs: the whole program with it, less the whole program in C."""

    def profile(language):
        return _callgrind(os.path.join(folder, f"{road}{language}"), [
            os.path.join(programs, "benchmark_library"), f"--count={road}{language}",
            f"--requests={requests}"
        ])

    in_c, in_cpp = profile(""), profile("-cpp")
    return {
        f"norix.hpp/{road}/instructions above C": (in_cpp.total() - in_c.total()) / requests,
        f"norix.hpp/{road}/allocations above C": (in_cpp.allocations(lambda user: True) -
                                                  in_c.allocations(lambda user: True)) / requests
    }


def _platform(profile, name, requests):
    figures = {}
    for part, prefix in _PLATFORM_PARTS.items():
        figures[f"{name}/{part}"] = profile.part_of(_is(prefix), _others(prefix)) / requests
    figures[f"{name}/bundle, parcel and port"] = (figures[f"{name}/bundle"] +
                                                  figures[f"{name}/parcel and port"])
    return figures


def _application(programs, folder, requests):
    path = os.path.join(folder, "application")
    _forget(path)
    subprocess.run([os.path.join(programs, "benchmark_platform"), f"--requests={requests}",
                    "--profile=" + path, "--valgrind=" + _VALGRIND], check=True)
    profile = Profile(path + ".1")
    figures = _platform(profile, "platform/application", requests)
    figures["ecore/a timer added and deleted"] = sum(
        profile.calls_to(function)[1] for function in ("^ecore_timer_add$", "^ecore_timer_del$")
    ) / requests
    lines, instructions = profile.calls_to("^dlog_print$")
    figures["platform/application/log lines"] = lines / requests
    figures["platform/a filtered log line"] = instructions / lines
    figures["application/library"] = profile.part_of(_is(_LIBRARY), _others(_LIBRARY)) / requests
    figures["application/allocations"] = profile.allocations(lambda user: True) / requests
    figures["application/total"] = profile.total() / requests
    return figures


def _assistant(programs, folder, requests):
    profile = _callgrind(os.path.join(folder, "assistant"), [
        os.path.join(programs, "benchmark_platform"), f"--requests={requests}"
    ])
    return _platform(profile, "platform/assistant", requests)


def count(programs, folder, requests):
    """Runs everything that is counted, and returns its figures."""
    figures = {}
    for road in _PARTS:
        figures.update(_library(programs, folder, requests, road, 10))
    figures.update(_library(programs, folder, requests, "direct", 10000))
    for road in ("direct", "state"):
        figures.update(_above_c(programs, folder, requests, road))
    figures.update(_application(programs, folder, requests))
    figures.update(_assistant(programs, folder, requests))
    return {name: round(figure, 1) for name, figure in figures.items()}


def compare(expected, figures, tolerance):
    """Returns a table of what differs by more than the tolerance, and whether any has grown."""
    rows = []
    grown = False
    for name in sorted(expected.keys() | figures.keys()):
        before, now = expected.get(name), figures.get(name)
        if before is None or now is None:
            rows.append((name, before, now, "new" if before is None else "gone"))
            grown = True
        elif abs(now - before) > tolerance * max(before, 1.0):
            verdict = "grown" if now > before else "shrunk"
            rows.append((name, before, now, f"{verdict} by {abs(now - before):.1f}"))
            grown = grown or now > before
    return rows, grown
