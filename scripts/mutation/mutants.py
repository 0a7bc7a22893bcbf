# SPDX-License-Identifier: Apache-2.0
"""Every single mutation of a source file."""

import difflib
import re
from dataclasses import dataclass

from source import Source

# Named constants that could have been taken for each other: each becomes the next of its row.
_MIXED_UP = [
    ["NORIX_ERROR_NONE", "NORIX_ERROR_OPERATION_FAILED", "NORIX_ERROR_INVALID_PARAMETER",
     "NORIX_ERROR_OUT_OF_MEMORY", "NORIX_ERROR_NOT_SUPPORTED"],
    ["ECORE_CALLBACK_CANCEL", "ECORE_CALLBACK_RENEW"],
    ["RPC_PORT_ERROR_NONE", "RPC_PORT_ERROR_IO_ERROR", "RPC_PORT_ERROR_INVALID_PARAMETER"],
    ["RPC_PORT_PORT_MAIN", "RPC_PORT_PORT_CALLBACK"],
    ["APP_MANAGER_ERROR_NONE", "APP_MANAGER_ERROR_INVALID_PARAMETER"],
    ["BUNDLE_TYPE_BYTE", "BUNDLE_TYPE_STR"],
    ["DLOG_ERROR", "DLOG_WARN"],
    ["ACTION_ID", "ACTION_TYPE", "ACTION_PARAMS", "REQUEST_ID"],
    ["KEY_ACTION_RESULT", "KEY_APP_STATE"],
    ["KEY_STATUS_CODE", "KEY_STATUS_MESSAGE"],
    ["ACTION_EXECUTION_SUCCESS", "ACTION_EXECUTION_FAILURE"],
    ["NORIX_PROXY_ALLOW_APPID_LIST_PATH", "NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME"],
    ["COMPLETE_CHECKING_TIME", "COMPLETE_WAITING_MAX_COUNT"],
    ["InvalidCallbackException", "NotConnectedSocketException", "InvalidIOException"],
    ["kDone", "kRefused"],
    ["kSupported", "kNotSupported"],
    ["true", "false"],
]
_NEXT_NAME = {row[i]: row[(i + 1) % len(row)] for row in _MIXED_UP for i in range(len(row))}

# Binary operators, and what each is turned into.
_TURNED = {
    "==": ["!="],
    "!=": ["=="],
    "<": ["<=", ">="],
    "<=": ["<", ">"],
    ">": [">=", "<="],
    ">=": [">", "<"],
    "&&": ["||"],
    "||": ["&&"],
    "+": ["-"],
    "-": ["+"],
    "*": ["/"],
    "%": ["*"],
}
_COUNTERS = {"++": "--", "--": "++"}
_FORMAT_DIRECTIVE = r"%[-+ #0-9.*]*[hlzjt]*[a-zA-Z%]"


@dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    text: str  # the whole mutated file
    function: str  # the line that begins the function
    context: tuple  # the two lines before the change
    removed: tuple
    added: tuple

    @property
    def key(self):
        """What names a mutant in the list of equivalent ones, whatever its line number is."""
        return (self.file, self.function, self.context, self.removed, self.added)

    def describe(self):
        lines = [f"{self.file} @@ {self.function}"]
        lines += [f"  {line}" for line in self.context]
        lines += [f"- {line}" for line in self.removed]
        lines += [f"+ {line}" for line in self.added]
        return "\n".join(lines)


def mutants_of(file, text):
    """All mutants of a file in the order of its text, none twice."""
    source = Source(text)
    edits = sorted({*_token_edits(source), *_statement_edits(source)})
    excluded = _excluded_lines(text)
    seen, found = {text}, []
    for start, end, replacement in edits:
        mutated = text[:start] + replacement + text[end:]
        if mutated not in seen and source.line_of(start) not in excluded:
            seen.add(mutated)
            found.append(_mutant(file, source, start, mutated))
    return found


def _excluded_lines(text):
    """The lines that no test can reach, marked as such for the coverage."""
    excluded, inside = set(), False
    for number, line in enumerate(text.split("\n"), 1):
        inside = inside or "GCOVR_EXCL_START" in line
        if inside or "GCOVR_EXCL_LINE" in line:
            excluded.add(number)
        inside = inside and "GCOVR_EXCL_STOP" not in line
    return excluded


def _mutant(file, source, start, mutated):
    before, after = source.text.split("\n"), mutated.split("\n")
    operations = difflib.SequenceMatcher(None, before, after, autojunk=False).get_opcodes()
    changed = [operation for operation in operations if operation[0] != "equal"]
    first, last = changed[0], changed[-1]
    removed = _visible(before[first[1] : last[2]])
    added = _visible(after[first[3] : last[4]])
    above = before[: first[1]]
    return Mutant(file, source.line_of(start), mutated, _function_at(above),
                  tuple(_visible(above)[-2:]), tuple(removed), tuple(added))


def _visible(lines):
    shown = [line.rstrip("\\").strip() for line in lines]
    return [line for line in shown if line]


def _function_at(lines_above):
    """As in git's hunk headers: the last line that begins at the margin and is no statement."""
    for line in reversed(lines_above):
        if re.match(r"(?!namespace)[A-Za-z_#]", line) and not line.endswith((";", ">", '"')):
            return line.rstrip("\\").rstrip()
    return ""


# Literals, operators and named constants.


def _token_edits(source):
    for index, token in enumerate(source.tokens):
        for replacement in _replacements(source, index):
            yield token.start, token.end, replacement


def _replacements(source, index):
    token = source.tokens[index]
    if token.kind == "string":
        if index == 0 or source.tokens[index - 1].text != "extern":
            yield _another_text(token.text)
    elif token.kind == "number":
        yield from _other_numbers(token.text)
    elif token.kind == "char":
        yield "'x'" if token.text != "'x'" else "'y'"
    elif token.kind == "name":
        if token.text in _NEXT_NAME and not _is_declared(source, index):
            yield _NEXT_NAME[token.text]
    elif token.text in _COUNTERS:
        yield _COUNTERS[token.text]
    elif token.text in _TURNED and source.spaced(index):
        yield from _TURNED[token.text]
    elif token.text == "!" or (token.text == "~" and source.tokens[index + 1].kind == "number"):
        yield ""


def _is_declared(source, index):
    """Where a constant gets its value, or a class its body."""
    return source.tokens[index + 1].text == "=" or source.tokens[index - 1].text == "class"


def _another_text(literal):
    """Its last letter changed, so that a test which compares only the beginning is found out."""
    body = literal[1:-1]
    fixed = [match.span() for match in re.finditer(_FORMAT_DIRECTIVE + r"|\\.", body)]
    free = [at for at in range(len(body)) if not any(start <= at < end for start, end in fixed)]
    letters = [at for at in free if body[at].isalnum()]
    if not free:
        return f'"x{body}"'
    at = (letters or free)[-1]
    other = "x" if body[at] != "x" else "y"
    return f'"{body[:at]}{other}{body[at + 1:]}"'


def _other_numbers(literal):
    digits, suffix = re.fullmatch(r"(0[xX][0-9a-fA-F]+|[\d.]+)([uUlLfF]*)", literal).groups()
    if "." in digits:
        yield f"{float(digits) * 1.5:g}{'' if float(digits) % 1 else '.0'}{suffix}"
        return
    number = int(digits, 0)
    yield f"{number + 1}{suffix}"
    if number > 0:
        yield f"{number - 1}{suffix}"


# Statements.


def _statement_edits(source):
    for block in source.blocks:
        for at, statement in enumerate(block.statements):
            if statement.condition and not _is_one_comparison(source, *statement.condition):
                first, last = (source.tokens[index] for index in statement.condition)
                condition = source.text[first.start : last.end]
                yield first.start, last.end, f"!({condition})"
            if _can_be_dropped(source, block, at):
                yield statement.start, statement.end, _blank(source, statement)


def _is_one_comparison(source, first, last):
    """Then turning its operator, or taking its '!' away, already negates it."""
    texts = [token.text for token in source.tokens[first : last + 1]]
    if "&&" in texts or "||" in texts:
        return False
    return any(text in ("==", "!=") for text in texts) or texts[0] == "!"


def _can_be_dropped(source, block, at):
    statement = block.statements[at]
    is_last = at + 1 == len(block.statements)
    if statement.kind == "jump":
        # Nothing to fall through to behind the last statement of a function.
        return not (is_last and block.is_function_body)
    if statement.kind == "if":
        return not statement.has_else
    if statement.kind in ("for", "while"):
        return True
    if statement.kind != "simple":
        return False
    name = _declared_name(source, statement)
    later = set()
    for other in block.statements[at + 1 :]:
        later |= source.names(other.first, other.last)
    return name is None or name not in later


def _blank(source, statement):
    """What a dropped statement leaves: its line ends, for the lines below keep their numbers."""
    ends = re.findall(r"\\?\n", source.text[statement.start : statement.end])
    return ";" + "".join(ends)


def _declared_name(source, statement):
    """The variable that a simple statement declares: the second of two neighbouring names."""
    if statement.kind != "simple":
        return None
    code = source.text[statement.start : statement.end]
    declaration = re.match(
        r"(?:(?:const|static|constexpr|struct|unsigned|long)\s+)*"
        r"(?!(?:delete|using|else)\b)[A-Za-z_][\w:]*(?:<[^;=]*>)?(?:\s*[*&]+\s*|\s+)(?:const\s+)?"
        r"(\w+)\s*(?:[=;({\[]|$)",
        code,
    )
    return declaration.group(1) if declaration else None
