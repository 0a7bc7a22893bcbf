#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the seeds of the fuzz targets: tests/fuzz/seeds.py

Each seed is an input that a target understands, named for what it exercises. They are kept in the
repository; this makes them anew when a format changes. What a fuzzer found stands beside them under
names that begin with "found-", and is left alone.
"""
import pathlib
import struct

from text_seeds import (ALLOW_LISTS, DECLARATIONS, LOG_FILTERS, LOG_LINES, MANIFESTS, MCP_LINES,
                        SCENARIOS, short)

CORPUS = pathlib.Path(__file__).parent / "corpus"

# ---- Bundles -------------------------------------------------------------------------------------

STR, STR_ARRAY, BYTE, BYTE_ARRAY = 0x401, 0x501, 0x002, 0x102


def u32(*numbers):
    return struct.pack("<%dI" % len(numbers), *numbers)


def text(value):
    return value.encode() + b"\0"


def entry(kind, key, value, size=None):
    key = text(key)
    return u32(kind, len(key), len(value) if size is None else size) + key + value


def string(key, value):
    return entry(STR, key, text(value))


def blob(key, value):
    return entry(BYTE, key, value)


def array(kind, key, slots):
    return entry(kind, key, b"".join(u32(len(slot)) + slot for slot in slots), len(slots))


def bundle(*entries):
    return u32(len(entries)) + b"".join(entries)


def bundle_text(wire):
    checksum = 0xCBF29CE484222325
    for byte in wire:
        checksum = (checksum ^ byte) * 0x100000001B3 % 2**64
    return b"%016x" % checksum + wire.hex().encode()


REQUEST_ID = struct.pack("<Q", 7)


def request(action, request_id=REQUEST_ID, *more):
    return bundle(string("actionId", action), string("actionType", "t"),
                  string("actionParams", "{}"), blob("requestId", request_id), *more)


EVERY_TYPE = bundle(string("text", "value"), blob("bytes", b"\0\1\2"),
                    array(STR_ARRAY, "texts", [text("one"), b"", text("")]),
                    array(BYTE_ARRAY, "blobs", [b"\1", b"", b"\2\3"]))

BUNDLES = {
    "empty": bundle(),
    "request": request("play"),
    "every-type": EVERY_TYPE,
    "key-twice": bundle(string("key", "first"), string("key", "second")),
    "empty-key": bundle(string("", "value")),
    "unknown-type": bundle(entry(3, "key", b"x")),
    "text-without-nul": bundle(entry(STR, "key", b"value")),
    "text-with-two-nuls": bundle(entry(STR, "key", b"va\0lue\0")),
    "bytes-of-size-zero": bundle(blob("key", b"")),
    "array-of-no-slots": bundle(array(STR_ARRAY, "key", [])),
    "array-longer-than-its-bytes": bundle(entry(BYTE_ARRAY, "key", b"", 0x7FFFFFFF)),
    "value-longer-than-its-bytes": bundle(entry(BYTE, "key", b"x", 0xFFFFFFFF)),
    "count-beyond-the-bytes": u32(0xFFFFFFFF),
    "cut-off": EVERY_TYPE[:-3],
    "something-behind-it": EVERY_TYPE + b"x",
}

# ---- Parcels, frames -----------------------------------------------------------------------------


def parcel(fields, tag=b"", number=1, seconds=5, nanoseconds=6):
    return struct.pack("<Iiqq", len(tag), number, seconds, nanoseconds) + tag + fields


def sized(value):
    return u32(len(value)) + value


def i32(*numbers):
    return struct.pack("<%di" % len(numbers), *numbers)


def reads(*kinds):
    return bytes([len(kinds), *kinds])


READ = {name: kind for kind, name in enumerate(
    ["byte", "int16", "int32", "int64", "float", "double", "bool", "count", "string", "bundle",
     "own"])}


def burst(size):
    return size * 16 + 11


NUMBERS = struct.pack("<bhiqfd?i", -1, -2, -3, -4, float("nan"), -0.5, True, 3)

PARCELS = {
    "every-number": reads(*range(8)) + parcel(NUMBERS),
    "string-and-bundle": reads(READ["string"], READ["bundle"])
    + parcel(sized(text("hello")) + sized(EVERY_TYPE)),
    "own-type": reads(READ["own"], READ["own"]) + parcel(i32(1) + sized(text("x")) + i32(2)),
    "raw-bytes": reads(burst(3), burst(1), burst(9)) + parcel(b"abcdefgh"),
    "with-a-tag": reads(READ["int32"]) + parcel(i32(4), tag=b"a tag", number=-1),
    "send": reads(READ["int32"], READ["bundle"]) + parcel(i32(4) + sized(request("play"))),
    "no-fields": reads(READ["int32"], READ["string"], READ["bundle"], READ["bool"]) + parcel(b""),
    "bool-of-two": reads(READ["bool"], READ["byte"]) + parcel(b"\2"),
    "count-below-zero": reads(READ["count"], READ["int32"]) + parcel(i32(-1)),
    "string-of-size-zero": reads(READ["string"], READ["int32"]) + parcel(u32(0)),
    "string-with-two-nuls": reads(READ["string"], READ["int32"]) + parcel(sized(b"a\0b\0")),
    "bundle-longer-than-the-parcel": reads(READ["bundle"]) + parcel(u32(0xFFFFFFFF) + b"x"),
    "tag-longer-than-the-parcel": reads() + struct.pack("<Iiqq", 4096, 0, 0, 0) + b"x",
    "tag-with-a-nul": reads() + parcel(b"", tag=b"a\0b"),
    "too-many-nanoseconds": reads() + parcel(b"", nanoseconds=1000000000),
    "header-cut-off": reads() + parcel(b"")[:-1],
}

HELLO, WELCOME, PARCEL, RAW = 1, 2, 3, 4
MAGIC = b"RPCP"


def frame(kind, payload, size=None):
    return u32(len(payload) if size is None else size, kind) + payload


def hello(port=0, instance=b"instance", sender=b"com.valtren.tizen.norix", version=1, magic=MAGIC,
          sender_size=None):
    return magic + struct.pack("<HHHH", version, port, len(instance),
                               len(sender) if sender_size is None else sender_size) \
        + instance + sender


WELCOMED = MAGIC + u32(1)

HELLOS = {
    "main-port": hello(0),
    "callback-port": hello(1),
    "welcome": WELCOMED,
    "other-magic": hello(magic=b"HTTP"),
    "later-version": hello(version=2),
    "third-port": hello(2),
    "no-sender": hello(sender=b""),
    "sender-is-a-path": hello(sender=b"../../etc"),
    "sender-with-a-control-character": hello(sender=b"a\nb"),
    "instance-with-a-blank": hello(instance=b"in stance"),
    "sender-longer-than-the-hello": hello(sender_size=0xFFFF),
}


def stream(data, greeting=0, piece=0xFFFF, read=3):
    return struct.pack("<BHB", greeting, piece - 1, read - 1) + data


FRAMES = {
    "hello-and-parcel": stream(frame(HELLO, hello()) + frame(PARCEL, parcel(i32(3)))),
    "byte-by-byte": stream(frame(HELLO, hello()) + frame(PARCEL, parcel(i32(3))), piece=1),
    "welcome-and-raw": stream(frame(WELCOME, WELCOMED) + frame(RAW, b"ab") + frame(RAW, b"cde")
                              + frame(PARCEL, parcel(b"")) + frame(RAW, b"f"), greeting=1, piece=5),
    "received-directly": stream(frame(HELLO, hello()) + frame(RAW, b"x" * 9000), piece=700),
    "second-hello": stream(frame(HELLO, hello()) * 2),
    "parcel-before-the-hello": stream(frame(PARCEL, parcel(b""))),
    "unknown-kind": stream(frame(HELLO, hello()) + frame(5, b"x")),
    "kind-zero": stream(frame(0, b"x")),
    "raw-of-size-zero": stream(frame(HELLO, hello()) + frame(RAW, b"")),
    "parcel-shorter-than-its-header": stream(frame(HELLO, hello()) + frame(PARCEL, b"x" * 23)),
    "largest-length-there-is": stream(frame(HELLO, hello()) + frame(RAW, b"x", 0xFFFFFFFF)),
    "longest-message-hardly-begun": stream(frame(HELLO, hello()) + frame(RAW, b"x", 64 << 20)),
    "prefix-cut-off": stream(frame(HELLO, hello()) + b"\1\0\0"),
    "another-protocol": stream(b"GET / HTTP/1.1\r\n\r\n"),
}

# ---- Scripts: a stub and hostile proxies, a proxy and a hostile stub ----------------------------


def long(value):
    return struct.pack("<H", len(value)) + value


def open_(peer):
    return bytes([8 * peer])


def send(peer, what):
    return bytes([8 * peer + 1]) + what


def greet(port, instance=0, other_sender=False):
    return bytes([0, port + 2 * instance + (128 if other_sender else 0)])


WELCOMES = bytes([0])


def a_parcel(fields):
    return bytes([1]) + short(fields)


def a_frame(kind, payload):
    return bytes([2, kind]) + short(payload)


def bytes_(data):
    return bytes([3]) + long(data)


def turn(times=4):
    return bytes([3, times - 1])


def close(peer):
    return bytes([8 * peer + 4])


def end_sending(peer=0):
    return bytes([8 * peer + 5])


def react(how):
    return bytes([6, how])


def use_port(number, how):
    return bytes([7, number, how])


CONNECTED = open_(0) + open_(1) + send(0, greet(0)) + send(1, greet(1)) + turn()
A_REQUEST = a_parcel(i32(4) + sized(bundle(string("actionId", "play"))))
(READ_PARCEL, READ_BYTES, ANSWER, IGNORE, REFUSE, DISCONNECT, DESTROY, THROW, TURN_LOOP,
 CONNECT_AT_ONCE) = range(10)

STUBS = {
    "request-and-end": CONNECTED + send(0, A_REQUEST) + turn() + close(0) + close(1) + turn(),
    "request-before-the-second-socket": open_(0) + send(0, greet(0)) + send(0, A_REQUEST) + turn()
    + open_(1) + send(1, greet(1)) + turn(),
    "requests-and-gone": CONNECTED + send(0, A_REQUEST) * 3 + close(0) + close(1) + turn(),
    "answered": react(ANSWER) + CONNECTED + send(0, A_REQUEST) + turn() + bytes([7, 0, 1]),
    "raw-bytes": react(READ_BYTES) + CONNECTED + send(0, a_frame(RAW, b"0123456789abcd")) + turn(),
    "ignored": react(IGNORE) + CONNECTED + send(0, A_REQUEST) + turn() + close(0) + turn(),
    "refused": react(REFUSE) + CONNECTED + send(0, A_REQUEST) + turn(),
    "disconnected-by-the-handler": react(DISCONNECT) + CONNECTED + send(0, A_REQUEST) * 2 + turn(),
    "destroyed-by-the-handler": react(DESTROY) + CONNECTED + send(0, A_REQUEST) * 2 + turn(),
    "handler-throws": react(THROW) + CONNECTED + send(0, A_REQUEST) * 2 + turn() + turn(),
    "handler-turns-the-loop": react(TURN_LOOP) + CONNECTED + send(0, A_REQUEST) * 3 + turn(),
    "handler-connects-at-once": react(CONNECT_AT_ONCE) + CONNECTED + open_(2) + send(0, A_REQUEST) * 2
    + send(2, greet(0, 1)) + turn(),
    "two-connections": CONNECTED + open_(2) + open_(3) + send(2, greet(0, 1)) + send(3, greet(1, 1))
    + turn() + send(2, A_REQUEST) + send(0, A_REQUEST) + turn(),
    "same-port-twice": open_(0) + open_(1) + send(0, greet(0)) + send(1, greet(0)) + turn(),
    "instance-in-use": CONNECTED + open_(2) + send(2, greet(0)) + turn(),
    "instance-of-another-sender": open_(0) + open_(1) + send(0, greet(0))
    + send(1, greet(1, 0, True)) + turn(),
    "second-hello": CONNECTED + send(0, greet(0)) + turn(),
    "garbage-for-a-hello": open_(0) + send(0, bytes_(b"GET / HTTP/1.1\r\n\r\n")) + turn(),
    "garbage-for-a-request": CONNECTED + send(0, bytes_(b"\xff" * 40)) + turn(),
    "garbage-for-a-parcel": CONNECTED + send(0, a_frame(PARCEL, b"\xff" * 30)) + turn(),
    "half-closed": CONNECTED + send(0, A_REQUEST) + end_sending(0) + turn() + end_sending(1) + turn(),
    "callback-port-speaks": CONNECTED + send(1, A_REQUEST) + turn(),
    "old-ports-are-used": CONNECTED + send(0, A_REQUEST) + turn() + close(0) + close(1) + turn()
    + use_port(0, 0) + use_port(0, 1) + use_port(1, 2) + turn(),
}

CALLBACK = a_parcel(i32(1, 1, 0) + b"\0" + sized(text("app")) + sized(bundle()))
RESULT = a_parcel(i32(0, 0))
WELCOMED_BOTH = send(0, WELCOMES) + send(1, WELCOMES) + turn()
(P_READ_PARCEL, P_READ_BYTES, P_IGNORE, P_DISCONNECT, P_DESTROY, P_CONNECT_AGAIN) = range(6)
CONNECT_AGAIN = bytes([0])

PROXIES = {
    "callback-and-end": WELCOMED_BOTH + send(1, CALLBACK) + turn() + close(0) + close(1) + turn(),
    "callback-with-the-welcome": send(0, WELCOMES) + send(1, WELCOMES) + send(1, CALLBACK) + turn(),
    "result-and-end": WELCOMED_BOTH + send(0, RESULT) + end_sending() + turn(),
    "result-cut-off": WELCOMED_BOTH + send(0, bytes_(frame(PARCEL, b"x", 30))) + end_sending(),
    "one-welcome": send(0, WELCOMES) + turn() + close(1) + turn(),
    "two-welcomes-on-one-socket": send(0, WELCOMES) * 2 + turn(),
    "garbage-for-a-welcome": send(0, bytes_(b"\xff" * 20)) + turn(),
    "garbage-for-a-callback": WELCOMED_BOTH + send(1, bytes_(b"\xff" * 20)) + turn(),
    "hello-for-a-welcome": send(0, a_frame(HELLO, hello())) + turn(),
    "raw-bytes": react(P_READ_BYTES) + WELCOMED_BOTH + send(1, a_frame(RAW, b"0123456789")) + turn(),
    "ignored": react(P_IGNORE) + WELCOMED_BOTH + send(1, CALLBACK) + turn() + close(1) + turn(),
    "disconnected-by-the-handler": react(P_DISCONNECT) + WELCOMED_BOTH + send(1, CALLBACK) * 2
    + turn(),
    "destroyed-by-the-handler": react(P_DESTROY) + WELCOMED_BOTH + send(1, CALLBACK) * 2 + turn(),
    "connects-again": WELCOMED_BOTH + CONNECT_AGAIN + send(2, WELCOMES) + send(3, WELCOMES) + turn()
    + send(3, CALLBACK) + send(1, CALLBACK) + turn(),
    "handler-connects-again": react(P_CONNECT_AGAIN) + WELCOMED_BOTH + send(1, CALLBACK) + turn()
    + send(2, WELCOMES) + send(3, WELCOMES) + turn(),
    "closed-at-once": close(0) + close(1) + turn(),
}

# ---- Scripts: the library ------------------------------------------------------------------------


def connect(instance=0, sender=0):
    return bytes([8 * instance, sender])


def deliver(what, instance=0):
    return bytes([8 * instance + 1]) + what


def register(delegate=2, seq=8, once=0):
    return deliver(bytes([0, delegate, seq, once]))


UNREGISTER = deliver(bytes([1]))


def ask(action, request_id=REQUEST_ID, params=b"{}", with_array=0):
    return deliver(bytes([2, action]) + short(request_id) + short(params) + bytes([with_array]))


def fields(data):
    return deliver(bytes([3]) + long(data))


def pause(which):
    return bytes([4, which])


def reaction(how):
    return bytes([5, how])


def use(what, *more):
    return bytes([6, what, *more])


PLAY, EMPTY, SHORT, STATE, PERCENT = range(5)
MOMENT, TICK, GIVE_UP, ALMOST, TIMEOUT = range(5)
(NOTHING, COMPLETE, WRONGLY, UNSET, DEINITIALISE, RESTART, GONE) = range(7)
HAS_PLAY, HAS_STATE = use(0, PLAY), use(2)
COMPLETE_ACTION, COMPLETE_STATE = use(4, 1, 4) + b"done", use(5, 1, 4) + b"here"
READY = connect() + register()

REQUESTS = {
    "action-answered": HAS_PLAY + READY + ask(PLAY) + COMPLETE_ACTION,
    "action-answered-twice": HAS_PLAY + READY + ask(PLAY) + COMPLETE_ACTION * 2,
    "action-answered-at-once": reaction(COMPLETE) + HAS_PLAY + READY + ask(PLAY),
    "action-times-out": HAS_PLAY + READY + ask(PLAY) + pause(TIMEOUT) + COMPLETE_ACTION,
    "action-nobody-has": READY + ask(PLAY) + pause(GIVE_UP),
    "action-registered-late": READY + ask(PLAY, b"\7") + HAS_PLAY + pause(TICK) + COMPLETE_ACTION
    + pause(TIMEOUT),
    "short-action-registered-late": READY + ask(SHORT, b"", b"", 1) + use(0, SHORT) + pause(TICK)
    + COMPLETE_ACTION + COMPLETE_STATE + use(6, 1),
    "action-waits-and-is-replaced": READY + ask(PLAY) + pause(MOMENT) + ask(EMPTY) + pause(GIVE_UP),
    "action-waits-and-state-is-asked": HAS_STATE + READY + ask(PLAY) + ask(STATE) + pause(GIVE_UP),
    "state-answered": HAS_STATE + READY + ask(STATE) + COMPLETE_STATE,
    "state-nobody-has": READY + ask(STATE),
    "state-times-out": HAS_STATE + READY + ask(STATE) + pause(TIMEOUT) + COMPLETE_STATE,
    "completed-as-the-other-kind": reaction(WRONGLY) + HAS_PLAY + HAS_STATE + READY + ask(PLAY)
    + ask(STATE),
    "callback-unset-in-the-callback": reaction(UNSET) + HAS_PLAY + READY + ask(PLAY),
    "deinitialised-in-the-callback": reaction(DEINITIALISE) + HAS_PLAY + READY + ask(PLAY),
    "restarted-in-the-callback": reaction(RESTART) + HAS_PLAY + HAS_STATE + READY + ask(STATE)
    + READY + ask(PLAY),
    "restarted-while-a-request-waits": READY + ask(PLAY) + use(7) + pause(GIVE_UP),
    "gone-before-the-answer": reaction(GONE) + HAS_PLAY + READY + ask(PLAY),
    "no-delegate": HAS_PLAY + connect() + ask(PLAY) + COMPLETE_ACTION,
    "delegate-for-once": HAS_PLAY + connect() + register(once=1) + (ask(PLAY) + COMPLETE_ACTION) * 2,
    "delegate-dropped": HAS_PLAY + READY + UNREGISTER + ask(PLAY) + COMPLETE_ACTION,
    "two-assistants": HAS_PLAY + READY + connect(1, 1) + bytes([9, 0, 2, 9, 0]) + ask(PLAY)
    + bytes([9, 2, PLAY]) + short(REQUEST_ID) + short(b"") + b"\0" + COMPLETE_ACTION,
    "hostile-sender": HAS_PLAY + connect(0, 2) + register() + ask(PERCENT, b"1234567"),
    "name-of-an-action": HAS_PLAY + READY + ask(PLAY) + use(6, 1) + use(6, 0),
    "no-fields": READY + fields(b""),
    "unknown-command": READY + fields(i32(5)),
    "result-from-the-assistant": READY + fields(i32(0, 0)),
    "registration-cut-off": connect() + fields(i32(2, 1)),
    "send-without-a-bundle": READY + fields(i32(4)),
    "send-of-garbage": READY + fields(i32(4) + sized(b"\xff" * 20)),
    "send-of-every-type": READY + fields(i32(4) + sized(EVERY_TYPE)),
    "request-id-is-a-text": HAS_PLAY + READY + fields(
        i32(4) + sized(bundle(string("actionId", "play"), string("requestId", "7")))),
    "action-id-is-bytes": READY + fields(
        i32(4) + sized(bundle(blob("actionId", b"play"), blob("requestId", REQUEST_ID)))),
    "action-id-is-an-array": READY + fields(
        i32(4) + sized(bundle(array(STR_ARRAY, "actionId", [text("play")])))),
}

SEEDS = {
    "bundle_wire": BUNDLES,
    "bundle_text": {
        **{name: bundle_text(BUNDLES[name]) for name in
           ["empty", "request", "every-type", "key-twice", "cut-off"]},
        "with-its-nul": bundle_text(BUNDLES["request"]) + b"\0",
        "wrong-checksum": b"0" * 16 + BUNDLES["request"].hex().encode(),
        "upper-case": bundle_text(BUNDLES["every-type"]).upper(),
        "odd-number-of-digits": bundle_text(BUNDLES["request"])[:-1],
        "checksum-alone": b"cbf29ce484222325",
        "nothing": b"",
    },
    "parcel": PARCELS,
    "frames": FRAMES,
    "hello": HELLOS,
    "stub": STUBS,
    "proxy": PROXIES,
    "requests": REQUESTS,
    "allow_list": ALLOW_LISTS,
    "log_filter": LOG_FILTERS,
    "log_line": LOG_LINES,
    "manifest": MANIFESTS,
    "declarations": DECLARATIONS,
    "mcp": MCP_LINES,
    "scenario": SCENARIOS,
}


def main():
    for target, seeds in SEEDS.items():
        folder = CORPUS / target
        folder.mkdir(parents=True, exist_ok=True)
        for old in folder.iterdir():
            if not old.name.startswith("found-"):
                old.unlink()
        for name, data in seeds.items():
            (folder / name).write_bytes(data)


if __name__ == "__main__":
    main()
