# SPDX-License-Identifier: Apache-2.0
"""A C++ source file as tokens and as blocks of statements.

No compiler's view: it knows as much of the language as this project uses, and a mistake costs no
more than a mutant that does not compile, which is counted as such.
"""

import re
from dataclasses import dataclass, field

_TOKEN = re.compile(
    r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>\#\s*define\s+\w+(?:\([^)]*\))?|\#[^\n]*)
  | (?P<string>"(?:\\.|[^"\\\n])*")
  | (?P<char>'(?:\\.|[^'\\\n])*')
  | (?P<number>(?:0[xX][0-9a-fA-F]+|\d+\.\d+|\d+)[uUlLfF]*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<space>(?:\s|\\\n)+)
  | (?P<operator>->|::|<<|>>|<=|>=|==|!=|&&|\|\||\+\+|--|\.\.\.|.)
    """,
    re.VERBOSE | re.DOTALL,
)

_OPENING = {"(": ")", "{": "}", "[": "]"}
# What stands before the brace of a block of statements; a class, an enum, a namespace and an
# initialiser have a name, a string or an '=' there.
_BEFORE_BLOCK = {")", "]", "const", "noexcept", "override", "else", "do", "try", ";", "{", "}", ":"}
_JUMPS = {"return", "throw", "break", "continue"}


@dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass
class Statement:
    """A statement or a label of a block. Simple statements end with their semicolon."""

    kind: str  # "simple", "jump", "label", or the keyword of a compound statement
    first: int  # index of its first token
    last: int  # index of its last token
    start: int
    end: int
    condition: tuple = None  # first and last token inside the parentheses of an if or a while
    has_else: bool = False


@dataclass
class Block:
    statements: list = field(default_factory=list)
    is_function_body: bool = False


class Source:
    def __init__(self, text):
        self.text = text
        self.tokens = [
            Token(match.lastgroup, match.group(), match.start(), match.end())
            for match in _TOKEN.finditer(text)
            if match.lastgroup not in ("space", "comment")
        ]
        self._partners = self._match_brackets()
        self.blocks = self._find_blocks()

    def line_of(self, position):
        return self.text.count("\n", 0, position) + 1

    def spaced(self, index):
        """Whether a token has white space on both sides, as clang-format sets binary operators."""
        token = self.tokens[index]
        around = self.text[token.start - 1 : token.start] + self.text[token.end : token.end + 1]
        return len(around) == 2 and around.isspace()

    def names(self, first, last):
        return {token.text for token in self.tokens[first : last + 1] if token.kind == "name"}

    def _match_brackets(self):
        partners, stack = {}, []
        for index, token in enumerate(self.tokens):
            if token.kind != "operator":
                continue
            if token.text in _OPENING:
                stack.append(index)
            elif stack and token.text == _OPENING[self.tokens[stack[-1]].text]:
                partners[stack.pop()] = index
        return partners

    def _find_blocks(self):
        blocks = []
        for index, token in enumerate(self.tokens):
            before = self.tokens[index - 1] if index > 0 else None
            if token.text != "{" or index not in self._partners or before is None:
                continue
            if before.kind != "string" and before.text in _BEFORE_BLOCK:
                block = Block(is_function_body=self._is_function_body(index))
                self._parse_block(block, index + 1, self._partners[index])
                blocks.append(block)
        return blocks

    def _is_function_body(self, brace):
        """Not the body of an if, a for, a switch, …: what stands before its parentheses tells."""
        closing = brace - 1
        while self.tokens[closing].text in ("const", "noexcept", "override"):
            closing -= 1
        opening = next((o for o, c in self._partners.items() if c == closing), None)
        if opening is None or self.tokens[closing].text != ")":
            return False
        return self.tokens[opening - 1].text not in ("if", "for", "while", "switch", "catch")

    def _parse_block(self, block, first, end):
        while first < end:
            statement = self._parse_statement(first)
            block.statements.append(statement)
            first = statement.last + 1

    def _parse_statement(self, first):
        word = self.tokens[first].text
        if word in ("case", "default", "public", "private", "protected"):
            return self._statement("label", first, self._find(first, ":"))
        if word == "{":
            return self._statement("block", first, self._partners[first])
        if word in ("if", "for", "while", "switch"):
            return self._parse_headed(word, first)
        if word == "do":
            return self._statement(word, first, self._find(self._partners[first + 1], ";"))
        if word == "try":
            last = self._partners[first + 1]
            while self._text(last + 1) == "catch":
                last = self._partners[self._partners[last + 2] + 1]
            return self._statement(word, first, last)
        kind = "jump" if word in _JUMPS else "simple"
        return self._statement(kind, first, self._find(first, ";"))

    def _parse_headed(self, word, first):
        opening = first + 1
        closing = self._partners[opening]
        last = self._parse_statement(closing + 1).last
        has_else = word == "if" and self._text(last + 1) == "else"
        if has_else:
            last = self._parse_statement(last + 2).last
        statement = self._statement(word, first, last)
        statement.has_else = has_else
        if word in ("if", "while"):
            statement.condition = (opening + 1, closing - 1)
        return statement

    def _find(self, index, text):
        """The next such token that is not inside brackets, or the last one before they close."""
        while index < len(self.tokens) - 1 and self.tokens[index].text != text:
            token = self.tokens[index]
            if token.kind == "operator" and token.text in _OPENING.values():
                return index - 1
            index = self._partners.get(index, index) + 1
        return index

    def _text(self, index):
        return self.tokens[index].text if index < len(self.tokens) else ""

    def _statement(self, kind, first, last):
        return Statement(kind, first, last, self.tokens[first].start, self.tokens[last].end)
