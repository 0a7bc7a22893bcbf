# SPDX-License-Identifier: Apache-2.0
"""Reads what callgrind wrote, and says whose instructions they were."""

import collections
import os
import re

Function = collections.namedtuple("Function", "object name")
Call = collections.namedtuple("Call", "caller callee count instructions")

_ASSIGNMENT = re.compile(r"^(c?(?:ob|fn|fi|fl)|fe|calls|jump|jcnd)=(.*)$")
_COMPRESSED = re.compile(r"^\((\d+)\)(?: (.*))?$")
_ALLOCATORS = {"malloc", "calloc", "realloc", "memalign", "posix_memalign", "aligned_alloc"}


class Profile:
    """The functions of one dump with their own instructions, and the calls between them."""

    def __init__(self, path):
        self.own = collections.Counter()
        calls = collections.defaultdict(lambda: [0, 0])
        names = {"ob": {}, "fn": {}}

        def resolve(kind, text):
            number, name = _COMPRESSED.match(text).groups()
            if name is not None:
                # "f'2" is f, called by itself.
                names[kind][number] = re.sub(r"'\d+$", "", name) if kind == "fn" else name
            return names[kind][number]

        current_object = name = called_object = callee = None
        call_count = 0
        with open(path, encoding="utf-8") as lines:
            for line in lines:
                assigned = _ASSIGNMENT.match(line.rstrip("\n"))
                if assigned:
                    key, value = assigned.groups()
                    if key == "ob":
                        current_object = os.path.basename(resolve("ob", value))
                    elif key == "fn":
                        name = resolve("fn", value)
                    elif key == "cob":
                        called_object = os.path.basename(resolve("ob", value))
                    elif key == "cfn":
                        callee = Function(called_object or current_object, resolve("fn", value))
                    elif key == "calls":
                        call_count = int(value.split()[0])
                elif line[0] in "0123456789+-*":
                    fields = line.split()
                    cost = int(fields[1]) if len(fields) > 1 else 0
                    caller = Function(current_object, name)
                    if callee is None:
                        self.own[caller] += cost
                    else:
                        calls[caller, callee][0] += call_count
                        calls[caller, callee][1] += cost
                        called_object = callee = None
        self.calls = [Call(*pair, *counted) for pair, counted in calls.items()]

    def total(self):
        return sum(self.own.values())

    def part_of(self, owner, others):
        """The instructions of the objects that `owner` accepts, and of all that works for them.

        `others` accepts the objects that count for themselves; what neither accepts, such as the C
        library, counts for its callers.
        """
        return sum(call.instructions for call in self.calls
                   if others(call.caller.object) and owner(call.callee.object)) - sum(
                       call.instructions for call in self.calls
                       if owner(call.caller.object) and others(call.callee.object))

    def allocations(self, counts):
        """How many calls of an allocating function came from objects that `counts` accepts."""
        return sum(call.count for call in self.calls
                   if call.callee.name in _ALLOCATORS and call.caller.name not in _ALLOCATORS
                   and counts(call.caller.object))

    def calls_to(self, pattern):
        """The calls of functions whose name matches, and their instructions, all included."""
        found = [call for call in self.calls if re.search(pattern, call.callee.name)]
        return (sum(call.count for call in found), sum(call.instructions for call in found))

    def below(self, pattern, leave_out):
        """The instructions of one function of the road, and of all that it calls.

        What objects that `leave_out` accepts do is left out. A function that several call, and that
        calls them, is shared out by the number of calls.
        """
        callees = collections.defaultdict(list)
        times_called = collections.Counter()
        for call in self.calls:
            callees[call.caller].append(call)
            times_called[call.callee] += call.count
        memory = {}

        def left_out(function):
            if function in memory:
                return memory[function]
            memory[function] = 0  # For a cycle; the road has none.
            memory[function] = sum(
                call.instructions if leave_out(call.callee.object) else left_out(call.callee) *
                call.count / times_called[call.callee] for call in callees[function])
            return memory[function]

        return sum(call.instructions - left_out(call.callee) * call.count / times_called[call.callee]
                   for call in self.calls
                   if re.search(pattern, call.callee.name) and call.caller.name != call.callee.name)
