# SPDX-License-Identifier: Apache-2.0
"""The seeds of those fuzz targets that read texts; seeds.py writes them with all others."""


def short(value):
    return bytes([len(value)]) + value


SENDER = b"com.valtren.tizen.norix"


def allow_list(content, sender=SENDER):
    return short(sender) + content


ALLOW_LISTS = {
    "listed": allow_list(b"org.example.other\n" + SENDER + b"\n"),
    "not-listed": allow_list(b"org.example.other\n"),
    "listed-without-a-newline": allow_list(b"org.example.other\n" + SENDER),
    "twice": allow_list((SENDER + b"\n") * 2),
    "zero-bytes": allow_list(b""),
    "one-empty-line": allow_list(b"\n"),
    "empty-sender-and-empty-line": allow_list(b"a\n\nb\n", b""),
    "carriage-return": allow_list(SENDER + b"\r\n"),
    "blanks-around-it": allow_list(b" " + SENDER + b" \n"),
    "part-of-a-line": allow_list(SENDER + b".more\nmore." + SENDER + b"\n"),
    "nul-in-a-line": allow_list(SENDER + b"\0\n"),
    "nul-in-the-sender": allow_list(SENDER + b"\n", SENDER + b"\0more"),
    "long-line": allow_list(b"x" * 3000 + b"\n" + SENDER + b"\n"),
}


def log_filter(expression, tag=b"NORIX-APPSDK"):
    return short(tag) + expression


LOG_FILTERS = {
    "tag-and-silence": log_filter(b"NORIX-APPSDK:E *:S"),
    "everything": log_filter(b""),
    "warnings": log_filter(b"*:W"),
    "tag-alone": log_filter(b"RPC_PORT_STUB", b"RPC_PORT_STUB"),
    "later-word-counts": log_filter(b"A:E A:D *:F *:I", b"A"),
    "colons-in-a-tag": log_filter(b"a:b:W", b"a:b"),
    "no-such-priority": log_filter(b"A:X B: :E", b"B"),
    "blanks": log_filter(b"\t A:E \n\n *:S ", b"A"),
    "tag-of-eight": log_filter(b"12345678:E 1234567:W *:S", b"12345678"),
    "tag-of-sixteen": log_filter(b"1234567890123456:E 1234567890123457:W", b"1234567890123457"),
    "tag-of-seventeen": log_filter(b"12345678901234567:E *:D", b"12345678901234567"),
    "empty-tag": log_filter(b"A:E *:W", b""),
    "bytes-that-are-no-text": log_filter(b"\xff\xfe:E \0 *:S", b"\xff\xfe"),
}


def log_line(value, tag=b"NORIX-APPSDK", priority=4):
    return bytes([priority]) + short(tag) + value


LOG_LINES = {
    "one-line": log_line(b"text"),
    "line-with-its-end": log_line(b"text\n"),
    "two-lines": log_line(b"first\nsecond"),
    "empty": log_line(b""),
    "empty-lines": log_line(b"\n\n\n"),
    "longer-than-a-write": log_line(b"x" * 5000),
    "more-lines-than-a-write-holds": log_line(b"x\n" * 300),
    "second-line-longer-than-a-write": log_line(b"x\n" + b"y" * 5000),
    "long-tag": log_line(b"text", b"t" * 200),
    "empty-tag": log_line(b"text", b""),
    "newline-in-the-tag": log_line(b"first\nsecond", b"ta\ng"),
    "directives": log_line(b"%s%n%*d", b"%s"),
    "escape-sequence": log_line(b"\x1b[31mred", b"\x1b"),
    "control-in-utf8": log_line(b"\xc2\x9b31m \xc3\xa4"),
    "characters-and-their-pieces": log_line("\u00e4\ud55c\U0001f3b5".encode() + b"\xe2\x82\xff"),
    "escapes-longer-than-a-write": log_line(b"\x01" * 2000),
}

MANIFEST = (b'<?xml version="1.0" encoding="utf-8"?>\n'
            b'<manifest xmlns="http://tizen.org/ns/packages" api-version="6.5"'
            b' package="org.example.music" version="1.0.0">\n%s</manifest>\n')


def manifest(*elements):
    return MANIFEST % b"".join(elements)


def application(inside=b"", element=b"ui-application", attributes=b'appid="org.example.music"'):
    return b"<%s %s>%s</%s>\n" % (element, attributes, inside, element)


VERSION_KEY = b"http://valtren.com/tizen/metadata/norix/sdk/version"

MANIFESTS = {
    "usual": manifest(application(
        b'<label>Music</label><metadata key="%s" value="1.0-beta"/>' % VERSION_KEY,
        attributes=b'appid="org.example.music" exec="music" type="capp"')),
    "two-applications": manifest(application(), application(
        element=b"service-application", attributes=b'appid="org.example.service"')),
    "labels-in-languages": manifest(application(
        b'<label xml:lang="de-de">Musik</label><label>Music</label>')),
    "only-a-label-in-a-language": manifest(application(b'<label xml:lang="de-de">Musik</label>')),
    "metadata-without-a-value": manifest(application(b'<metadata key="k"/>')),
    "metadata-without-a-key": manifest(application(b'<metadata value="v"/>')),
    "same-key-twice": manifest(application(b'<metadata key="k" value="1"/><metadata key="k"/>')),
    "references": manifest(application(b"<label>&lt;&#65;&#x42;&amp;&unknown;</label>")),
    "comments-and-cdata": manifest(application(b"<!-- c --><label><![CDATA[<x>]]></label>")),
    "no-application": manifest(),
    "no-appid": manifest(application(attributes=b"")),
    "appid-is-a-path": manifest(application(attributes=b'appid="../x"')),
    "no-package": b"<manifest>%s</manifest>" % application(),
    "other-root": b"<html/>",
    "entity-expansion": b'<!DOCTYPE m [<!ENTITY a "aaaa"><!ENTITY b "&a;&a;">]>\n'
                        + manifest(application(b"<label>&b;</label>")),
    "external-entity": b'<!DOCTYPE m [<!ENTITY x SYSTEM "file:///etc/passwd">]>\n'
                       + manifest(application(b"<label>&x;</label>")),
    "not-closed": manifest(application())[:-12],
    "deep": b"<manifest>" + b"<a>" * 500,
    "nul": manifest(application(b"<label>a\0b</label>")),
    "not-utf-8": manifest(application(b"<label>\xff\xfe</label>")),
    "nothing": b"",
}


def rpc(method, number=1, params=b"{}"):
    return b'{"jsonrpc":"2.0","id":%d,"method":"%s","params":%s}\n' % (number, method, params)


MCP_META = (b'"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28",'
            b'"io.modelcontextprotocol/clientCapabilities":{"elicitation":{}}}')
MCP_HELLO = rpc(b"initialize", 0, b'{"protocolVersion":"2025-11-25","capabilities":'
                                  b'{"elicitation":{"form":{}}}}')

MCP_LINES = {
    "handshake-and-lists": MCP_HELLO + b"".join(
        rpc(method, number) for number, method in enumerate(
            (b"ping", b"tools/list", b"resources/list", b"resources/templates/list",
             b"prompts/list"), 1)),
    "call-and-cancel": MCP_HELLO
                       + rpc(b"tools/call", 1, b'{"name":"f_a","arguments":{"n":4}}')
                       + b'{"jsonrpc":"2.0","method":"notifications/cancelled",'
                         b'"params":{"requestId":1}}\n',
    "call-with-progress": MCP_HELLO + rpc(
        b"tools/call", 2, b'{"name":"f_a","arguments":{},"_meta":{"progressToken":"t"}}'),
    "bad-arguments": MCP_HELLO + rpc(b"tools/call", 3, b'{"name":"f_a","arguments":{"n":"x"}}'),
    "legacy-consent": MCP_HELLO + rpc(b"tools/call", 4, b'{"name":"f_b"}')
                      + b'{"jsonrpc":"2.0","id":"norix-1","result":{"action":"accept",'
                        b'"content":{"confirm":true}}}\n',
    "modern-consent": rpc(b"tools/call", 5, b'{"name":"f_b",%s}' % MCP_META)
                      + rpc(b"tools/call", 6, b'{"name":"f_b","requestState":"x",'
                                              b'"inputResponses":{"confirm":{}},%s}' % MCP_META),
    "modern-discover-and-listen": rpc(b"server/discover", 7, b"{%s}" % MCP_META)
                                  + rpc(b"subscriptions/listen", 8, b'{"notifications":'
                                        b'{"toolsListChanged":true},%s}' % MCP_META),
    "reads-and-prompts": MCP_HELLO
                         + rpc(b"resources/read", 9, b'{"uri":"norix://org.example.f/state"}')
                         + rpc(b"prompts/get", 10, b'{"name":"f_a_say_1","arguments":{"n":"4"}}'),
    "another-version": rpc(b"ping", 11, MCP_META.replace(b"2026-07-28", b"2030-01-01").join(
        (b"{", b"}"))),
    "cursor": MCP_HELLO + rpc(b"tools/list", 12, b'{"cursor":"from-1"}'),
    "batch": b"[%s]\n" % rpc(b"ping").strip(),
    "null-id": b'{"jsonrpc":"2.0","id":null,"method":"ping"}\n',
    "deep": b"[" * 200 + b"\n",
    "long-line": b"x" * 1100 + b"\n" + rpc(b"ping"),
    "not-utf-8": b'{"jsonrpc":"2.0","id":"\xff","method":"ping"}\n',
    "windows-newlines": rpc(b"ping").replace(b"\n", b"\r\n\r\n"),
    "no-last-newline": rpc(b"ping").strip(),
    "nothing": b"",
}


def declarations(actions, more=b""):
    return b'{"version": 1,\n "actions": [' + actions + b"]" + more + b"}\n"


def action(more=b"", action_id=b"act"):
    return (b'{"id": "' + action_id + b'", "title": "Act", "description": "Acts."' + more + b"}")


def with_form(properties, more=b""):
    return action(b', "parameters": {"type": "object", "properties": {' + properties
                  + b'}, "additionalProperties": false' + more + b"}")


_VOLUME = b'"volume": {"type": "integer", "minimum": 0, "maximum": 100}'

DECLARATIONS = {
    "no-actions": declarations(b""),
    "one-action": declarations(action()),
    "everything-said": declarations(action(
        b', "readOnly": true, "destructive": false, "confirm": true, "utterances": ["do it"]')),
    "a-number": declarations(with_form(_VOLUME, b', "required": ["volume"]')),
    "an-example-and-an-utterance": declarations(
        with_form(_VOLUME)[:-1] + b', "examples": [{"volume": 4}], "utterances": ["{volume}"]}'),
    "a-bad-example": declarations(with_form(_VOLUME)[:-1] + b', "examples": [{"volume": "4"}]}'),
    "a-text": declarations(with_form(b'"t": {"type": "string", "minLength": 1, "maxLength": 9}')),
    "an-enumeration": declarations(with_form(b'"m": {"type": "string", "enum": ["a", "b"]}')),
    "a-list": declarations(with_form(
        b'"l": {"type": "array", "items": {"type": "number"}, "minItems": 1, "maxItems": 3}')),
    "a-default": declarations(with_form(b'"d": {"type": "boolean", "default": true}')),
    "an-unknown-keyword": declarations(with_form(b'"d": {"type": "boolean", "oneOf": []}')),
    "a-misspelt-member": declarations(action(b', "utterences": []')),
    "one-id-twice": declarations(action() + b", " + action()),
    "a-key-twice": declarations(action(b', "title": "Again"')),
    "the-reserved-id": declarations(action(action_id=b"getAppContext")),
    "a-state": declarations(b"", b', "state": {"description": "S", "form": {"type": "object",'
                            b' "properties": {"on": {"type": "boolean"}}}, "examples": [{}]}'),
    "a-state-with-a-bad-example": declarations(b"", b', "state": {"description": "S",'
                                               b' "form": {"type": "string"}, "examples": [1]}'),
    "another-version": b'{"version": 2, "actions": []}',
    "breaks-off": b'{"version": 1,\n "actions": [{"id": "a',
    "not-an-object": b"[]",
    "empty": b"",
    "not-utf-8": declarations(action(action_id=b"\xff")),
    "a-bom": b"\xef\xbb\xbf" + declarations(action()),
    "deep": b"[" * 500,
    "a-large-number": declarations(with_form(b'"n": {"type": "integer", "maximum": 1e999}')),
}

# Scenarios, as testers write them and as they should not.
SCENARIOS = {
    "usual": b"""name: The volume is set
application: {folder: ../music, completion-timeout: 300 ms, arguments: [-v], environment: {A: b}}
variables: {start: 7}
steps:
  - run: musicVolume
    params: {volume: '${start}', list: [1, 2.5, true, null]}
    expect: {text: The volume is 7, within: 2 s, after: 1 ms}
  - state:
    retry: {every: 10 ms, within: 1 s}
    expect:
      json: {/volume: 7}
    capture: {volume: /volume, all: text, first: {matches: (.)}}
  - run: musicVolume
    params-text: '{"volume":${volume}}'
    expect: {contains: [a, b], matches: ^x$, log: ready, findings: loop-held}
""",
    "senders": b"""application: {folder: a, allow-list: [b, c]}
senders: {phone: {id: b}, watch: {id: c, registers: false}}
findings: [never-answered]
timeout: 2 min
steps:
  - {run: next, sender: watch, as: later, set: {k: v}, type: t}
  - {kill: watch}
  - {burst: [{run: a, expect: {outcome: superseded}}, {state: , sender: phone}]}
  - {await: later, expect: {outcome: connection-lost}}
  - {stop: application}
  - {continue: application}
  - {restart: application}
  - {register: watch}
  - {wait: 1}
""",
    "bytes": b"steps: [{run: a, params-base64: /w==}]",
    "bytes-of-another-alphabet": b'steps: [{run: a, params-base64: "\xc3\xa9"}]',
    "key-twice": b"steps: [{run: a, params: {x: {y: 1, y: 2}}}]",
    "alias": b"name: &a x\nsteps: [*a]",
    "tag": b"name: !!binary eA==",
    "not-closed": b"steps: [",
    "nothing": b"",
    "bad-expression": b"steps: [{state: , expect: {matches: '('}}]",
    "unknown-name": b"steps: [{run: '${x}'}, {run: $${y}]",
    "second-document": b"a: 1\n---\nb: 2",
    "key-that-is-a-list": b"? [a, b]\n: c",
    "deep": b"steps: " + b"[" * 300 + b"]" * 300,
    "not-utf-8": b'steps: [{run: "\xff\xfe"}]',
}
