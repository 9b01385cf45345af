"""Small faults for C++ sources that clang-format has laid out: what they are, and where one could be.

It reads tokens, not grammar: a binary operator has blanks around it, a template's angle bracket has none. What comes
out may fail to compile; it may not change a comment, a preprocessor line or a static_assert.
"""

import re
from collections.abc import Iterator
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>(?:(?<=\n)|\A)[ \t]*\#(?:\\\n|[^\n])*)
      | (?P<string>(?:u8|[LuU])?(?:R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"))
      | (?P<char>(?:u8|[LuU])?'(?:\\(?:x[0-9A-Fa-f]+|.)|[^'\\\n])')
      | (?P<number>(?:0[xX][0-9A-Fa-f']+|0[bB][01']+|\d[\d']*(?:\.\d*)?(?:[eE][-+]?\d+)?)[a-zA-Z_]*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<sign><<=|>>=|<=>|\.\.\.|->|\+\+|--|::|<<|>>|[-+*/%&|^<>=!]=|&&|\|\||\[\[|\]\]|.)""",
    re.X | re.S,
)
SWAPS = {
    "<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"], "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"], "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"],
    "^": ["|"], "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "|=": ["&="], "&=": ["|="], "^=": ["|="],
    "<<=": [">>="], ">>=": ["<<="],
}  # fmt: skip
PAIRS = ["true false", "min max", "front back", "first last", "starts_with ends_with", "find rfind", "begin end",
         "remove_prefix remove_suffix", "any_of all_of", "floor ceil", "isfinite isnan", "find_first_of find_last_of",
         "find_first_not_of find_last_not_of", "lower_bound upper_bound", "HighByte LowByte"]  # fmt: skip
WORDS = {word: other for pair in map(str.split, PAIRS) for word, other in (pair, pair[::-1])}
NO_CALL = {"if", "for", "while", "switch", "return", "catch", "sizeof", "alignof", "noexcept", "decltype", "operator",
           "static_assert", "explicit", "alignas", "requires", "assert"}  # fmt: skip
SYMMETRIC = {"min", "max", "equal", "swap"}  # in the arguments that change places
NO_OTHER = {"move", "forward"}  # a copy in the place of what they give is the same, only slower
NO_EXPRESSION = {"return", "if", "for", "while", "switch", "case", "default", "const", "auto", "static", "constexpr",
                 "using", "struct", "class", "enum", "else", "do", "try", "catch", "throw", "template", "typename",
                 "public", "private", "protected", "friend", "goto", "extern", "namespace", "inline",
                 "thread_local", "static_assert"}  # fmt: skip


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass(frozen=True)
class Mutant:
    path: str
    start: int
    end: int
    text: str
    kind: str


def tokens_of(source: str) -> list[Token]:
    found = [Token(m.lastgroup or "", m[0], m.start(), m.end()) for m in TOKEN.finditer(source) if not m[0].isspace()]
    return [Token("string", *vars(t).values()) if t.kind == "mark" else t for t in found if t.kind not in ("comment", "directive")]


def enumerations(sources: list[str]) -> dict[str, list[str]]:
    """The enumerators of each scoped enumeration."""
    enums = {}
    for source in sources:
        plain = re.sub(r"//[^\n]*", "", source)
        for name, body in re.findall(r"enum class (\w+)[^{;]*\{([^}]*)\}", plain):
            enums[name] = re.findall(r"(?:^|,)\s*(\w+)", body)
    return enums


class Source:
    def __init__(self, path: str, source: str, enums: dict[str, list[str]]):
        self.path, self.source, self.enums = path, source, enums
        self.tokens = tokens_of(source)
        self.partner: dict[int, int] = {}
        self.blocks: list[bool] = []  # per token: whether the innermost brace around it is of statements
        self._match()

    def mutants(self) -> Iterator[Mutant]:
        asserts = self._asserts()
        for i, token in enumerate(self.tokens):
            if i in asserts:
                continue
            for start, end, text, kind in self._at(i, token):
                if self.source[start:end] != text:
                    yield Mutant(self.path, start, end, text, kind)

    def _text(self, i: int) -> str:
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def _match(self) -> None:
        stack, begin = [], 0
        for i, token in enumerate(self.tokens):
            self.blocks.append(bool(stack) and next((b for _, b in reversed(stack) if b is not None), False))
            if token.text in "([{" and token.kind == "sign":
                stack.append((i, self._is_block(i, begin) if token.text == "{" else None))
            elif token.text in ")]}" and token.kind == "sign" and stack:
                opened, _ = stack.pop()
                self.partner[opened], self.partner[i] = i, opened
            if token.text in ("{", "}", ";"):
                begin = i + 1

    def _is_block(self, i: int, begin: int) -> bool:
        if any(self._text(k) in ("struct", "class", "namespace", "enum") for k in range(begin, i)):
            return False
        before = self._text(i - 1)
        return before in (")", "]", "const", "noexcept", "override", "else", "do", "try", "{", ";", "}", ":") or any(
            self._text(k) == "->" and self._text(k - 1) == ")" for k in range(max(begin, i - 6), i))

    def _asserts(self) -> set[int]:
        skipped = set()
        for i, token in enumerate(self.tokens):
            if token.text == "static_assert" and i + 1 in self.partner:
                skipped.update(range(i, self.partner[i + 1] + 1))
            elif token.text in ("[[", "template", "using") and token.kind in ("sign", "word"):
                stop = {"[[": "]]", "template": ">", "using": ";"}[token.text]
                k = i
                while k < len(self.tokens) and self._text(k) != stop:
                    k += 1
                skipped.update(range(i, k + 1))
        return skipped

    def _spaced(self, token: Token) -> bool:
        return self.source[token.start - 1].isspace() and self.source[token.end : token.end + 1].isspace()

    def _at(self, i: int, token: Token) -> Iterator[tuple[int, int, str, str]]:
        place = (token.start, token.end)
        if token.kind == "number":
            yield from ((*place, text, "constant") for text in numbers_near(token.text) if self._text(i + 1) != ";" or
                        self._text(i - 2) not in (")", "const", "override", "noexcept"))
        elif token.kind == "string" and self._text(i - 1) != "extern":
            yield from ((*place, text, "text") for text in other_strings(token.text))
        elif token.kind == "char":
            yield (*place, re.sub(r"[^'\\]'$", lambda m: chr(ord(m[0][0]) ^ 1) + "'", token.text), "constant")
        elif token.kind == "sign":
            yield from self._at_sign(i, token)
        elif token.kind == "word":
            yield from self._at_word(i, token)

    def _at_sign(self, i: int, token: Token) -> Iterator[tuple[int, int, str, str]]:
        place = (token.start, token.end)
        if self._text(i - 1) == "operator":
            return
        if token.text in SWAPS and self._spaced(token):
            yield from ((*place, text, "operator") for text in SWAPS[token.text])
        elif token.text == "!":
            yield (*place, "", "negation")
        elif token.text in ("++", "--"):
            yield (*place, "--" if token.text == "++" else "++", "operator")
            yield from self._removal(i)
        elif token.text == "?":
            first = i
            while first > 0 and self._text(first - 1) not in "([{,;=:?" and self._text(first - 1) != "return":
                first = self.partner.get(first - 1, first - 1) if self._text(first - 1) in (")", "]", "}") else first - 1
            yield from self._condition(first, i, ("!",))
        elif token.text in ("*", "("):
            yield from self._removal(i)

    def _at_word(self, i: int, token: Token) -> Iterator[tuple[int, int, str, str]]:
        place, word, following = (token.start, token.end), token.text, self._text(i + 1)
        if word in WORDS:
            yield (*place, WORDS[word], "boundary" if word not in ("true", "false") else "constant")
        if word in self.enums and following == "::" and self._text(i + 2) in self.enums[word]:
            enumerators = self.enums[word]
            other = enumerators[(enumerators.index(self._text(i + 2)) + 1) % len(enumerators)]
            yield (token.start, self.tokens[i + 2].end, f"{word}::{other}", "enumerator")
        if word in ("if", "while") and following == "(":
            inside = [k for k in range(i + 2, self.partner[i + 1]) if self._depth(k, i + 1) == 0]
            first = max((k + 1 for k in inside if self._text(k) == ";"), default=i + 2)
            if not any(self._text(k) == "=" for k in inside if k >= first):
                ways = ("!", "false && ", "true || ") if word == "if" else ("!", "false && ")
                yield from self._condition(first, self.partner[i + 1], ways)
        elif word in ("break", "continue") and following == ";":
            yield (*place, "", "removed statement")
        elif word == "return" and following not in (";", "{"):
            yield (token.end, self.tokens[self._end_of(i)].start, " {}", "returned value")
        elif word not in NO_EXPRESSION:
            yield from self._removal(i)
        if following == "(" and word not in NO_CALL and i + 1 in self.partner:
            yield from self._call(i)

    def _depth(self, k: int, opened: int) -> int:
        return sum(1 for a, b in self.partner.items() if opened < a < k < b)

    def _condition(self, first: int, behind: int, ways: tuple[str, ...]) -> Iterator[tuple[int, int, str, str]]:
        start, end = self.tokens[first].start, self.tokens[behind - 1].end
        for way in ways:
            yield (start, end, f"{way}({self.source[start:end]})", "condition")

    def _end_of(self, i: int) -> int:
        while i < len(self.tokens) and self._text(i) != ";":
            i = self.partner[i] + 1 if self._text(i) in ("(", "[", "{") and i in self.partner else i + 1
        return i

    def _removal(self, i: int) -> Iterator[tuple[int, int, str, str]]:
        """An expression that is a statement."""
        before = self._text(i - 1)
        control = before == ")" and self._text(self.partner.get(i - 1, 0) - 1) in ("if", "for", "while")
        if not (self.blocks[i] and (before in (";", "{", "}", "else") or control)):
            return
        end = self._end_of(i)
        if end >= len(self.tokens) or self._is_declaration(i, end):
            return
        yield (self.tokens[i].start, self.tokens[end].start, "", "removed statement")

    def _is_declaration(self, i: int, end: int) -> bool:
        for k in range(i, min(end, i + 12)):
            token, following = self.tokens[k], self.tokens[k + 1]
            if token.text in ("(", "[", "{", "=", ".", "->"):
                return False
            named = token.kind == "word" or (token.text in (">", "&", "*") and not self._spaced(token) and k > i)
            if named and following.kind == "word":
                return True
        return False

    def _call(self, i: int) -> Iterator[tuple[int, int, str, str]]:
        before, opened = self.tokens[i - 1] if i else None, i + 1
        closed = self.partner[opened]
        if before and (before.kind == "word" and before.text not in ("return", "else", "throw") or
                       before.text in (">", "&", "*", "~") and not self._spaced(before)):
            return
        commas = [k for k in range(opened + 1, closed) if self._text(k) == "," and self._depth(k, opened) == 0]
        edges = [opened, *commas, closed]
        arguments = [(self.tokens[a + 1].start, self.tokens[b - 1].end) for a, b in zip(edges, edges[1:]) if b > a + 1]
        for (a, b), (c, d) in zip(arguments, arguments[1:]) if self._text(i) not in SYMMETRIC else ():
            yield (a, d, self.source[c:d] + self.source[b:c] + self.source[a:b], "swapped arguments")
        first = i
        while self._text(first - 1) == "::":
            first -= 2
        if arguments and self._text(i) not in NO_OTHER and self._text(first - 1) not in (".", "->", ";", "{", "}", ":", ")", ","):
            a, b = arguments[0]
            yield (self.tokens[first].start, self.tokens[closed].end, f"({self.source[a:b]})", "dropped call")


def numbers_near(text: str) -> Iterator[str]:
    match = re.fullmatch(r"(0[xX][\dA-Fa-f']+|\d[\d']*)([uUlLzZ]*)", text)
    if not match:
        if re.fullmatch(r"[\d.]+[fF]?", text):
            yield text.replace(text.rstrip("fF"), str(float(text.rstrip("fF")) + 1), 1)
        return
    digits = match[1].replace("'", "")
    value = int(digits, 0) if digits == "0" or not digits.startswith("0") or digits[:2] in ("0x", "0X") else None
    if value is None:
        return
    for near in (value + 1, value - 1):
        if near >= 0:
            yield (hex(near) if digits[:2] in ("0x", "0X") else str(near)) + match[2]


def other_strings(text: str) -> Iterator[str]:
    if text.endswith('""') or "R\"" in text[:3]:
        return
    yield text[: text.index('"')] + '""'
    for match in re.finditer(r"\\(?:[xX][0-9A-Fa-f]+|u[0-9A-Fa-f]{4}|.)|([A-Za-z0-9])", text[text.index('"') :]):
        if match[1]:
            at = text.index('"') + match.start()
            yield text[:at] + ("y" if match[1] == "x" else "x") + text[at + 1 :]
            return
