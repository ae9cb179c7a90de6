"""Finds the places in C++ source where one small change makes a mutant.

This is a tokenizer and a rough parser of statements, not a compiler. It relies on .clang-format: a binary operator has
white space on both sides, a template's angle bracket and a unary operator do not. A wrong guess makes a mutant that
does not compile, and such a mutant does not count.
"""

import bisect
import dataclasses
import hashlib
import re

TOKEN = re.compile(
    r"""
      (?P<space>\s+)
    | (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<directive>\#(?:\\\n|[^\n])*)
    | (?P<raw>(?:u8|[uUL])?R"(?P<delimiter>[^()\\\s]{0,16})\(.*?\)(?P=delimiter)")
    | (?P<string>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
    | (?P<char>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
    | (?P<number>\.?[0-9](?:(?<=[eEpP])[+-]|'?[0-9a-zA-Z_.])*)
    | (?P<name>[A-Za-z_]\w*)
    | (?P<sign>(?<=\s)>>(?=\s)|<=>|<<=|>>=|->\*|\.\.\.|::|->|\+\+|--|<<|==|!=|<=|>=|&&|\|\||[-+*/%&|^]=|.)
    """,
    re.S | re.X,
)

BINARY = {
    "==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">",
    "+": "-", "-": "+", "+=": "-=", "-=": "+=", "&&": "||", "||": "&&",
}  # fmt: skip
CLOSING = {"(": ")", "[": "]", "{": "}"}
# A parenthesis after one of these does not hold arguments.
NOT_CALLED = set("if for while switch return sizeof alignof catch decltype noexcept alignas static_assert".split())
# A statement that begins with one of these is a declaration.
DECLARING = set(
    "alignas auto bool char class const constexpr constinit double enum extern float friend int long short signed "
    "static struct template thread_local typedef typename union unsigned using void volatile".split()
)
SHOWN = 70  # characters of a changed text in an identifier


class Unreadable(Exception):
    """Brackets do not match. The message has their place."""


@dataclasses.dataclass(frozen=True)
class Mutant:
    id: str
    path: str
    start: int
    end: int
    text: str

    def apply(self, source):
        return source[: self.start] + self.text + source[self.end :]

    def diff(self, source):
        """The changed lines before and after, each joined into one line."""
        first = source.rfind("\n", 0, self.start) + 1
        last = source.find("\n", self.end)
        last = len(source) if last < 0 else last
        after = source[first : self.start] + self.text + source[self.end : last]
        return "- " + one_line(source[first:last]), "+ " + one_line(after)


@dataclasses.dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int
    spaced_before: bool
    spaced_after: bool

    @property
    def spaced(self):
        return self.spaced_before and self.spaced_after


def one_line(text):
    return " ".join(text.split())


def shown(text):
    text = one_line(text)
    return text if len(text) <= SHOWN else text[: SHOWN - 3] + "..."


def tokenize(source):
    tokens = []
    for match in TOKEN.finditer(source):
        if match.lastgroup in ("space", "comment", "directive"):
            continue
        kind = next(kind for kind in ("raw", "string", "char", "number", "name", "sign") if match[kind] is not None)
        start, end = match.span()
        before = start == 0 or source[start - 1].isspace()
        after = end == len(source) or source[end].isspace()
        tokens.append(Token("string" if kind == "raw" else kind, match[0], start, end, before, after))
    return tokens


def next_number(text):
    """0 for 1, 1 for 0, n + 1 for any other n; None if the text is not a plain number."""
    plain = text.replace("'", "")
    match = re.fullmatch(r"(0[xX])([0-9a-fA-F]+)([uUlLzZ]*)", plain)
    if match:
        value = int(match[2], 16)
        changed = 1 - value if value < 2 else value + 1
        return f"{match[1]}{changed:0{len(match[2])}x}{match[3]}"
    match = re.fullmatch(r"([0-9]+)([uUlLzZ]*)", plain)
    if match:
        octal = len(match[1]) > 1 and match[1].startswith("0")
        value = int(match[1], 8 if octal else 10)
        changed = 1 - value if value < 2 else value + 1
        return (f"0{changed:o}" if octal else str(changed)) + match[2]
    match = re.fullmatch(r"([0-9]+)(\.[0-9]*[fFlL]?)", plain)
    if match:
        return f"{int(match[1]) + 1}{match[2]}"
    return None


class Finder:
    def __init__(self, path, source):
        self.path = path
        self.source = source
        self.tokens = tokenize(source)
        self.lines = [match.end() for match in re.finditer("\n", source)]
        self.found = {}
        count = len(self.tokens)
        self.partner = self.match_brackets()
        self.skipped = [False] * count
        self.angle = self.match_angles()
        self.in_body = [False] * count
        self.skip_declared()

    # Tokens

    def text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def kind(self, index):
        return self.tokens[index].kind if 0 <= index < len(self.tokens) else ""

    def match_brackets(self):
        partner, opened = {}, []
        for index, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in CLOSING:
                opened.append(index)
            elif token.text in CLOSING.values():
                if not opened or CLOSING[self.text(opened[-1])] != token.text:
                    raise Unreadable(f"{self.place(token.start)}: unmatched {token.text}")
                start = opened.pop()
                partner[start], partner[index] = index, start
        if opened:
            raise Unreadable(f"{self.place(self.tokens[opened[-1]].start)}: unmatched {self.text(opened[-1])}")
        return partner

    def match_angles(self):
        """Pairs of a template's angle brackets. Whatever is between them is skipped."""
        angle, opened = {}, []
        for index, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text == "<" and self.text(index - 1) != "operator":
                if not token.spaced or self.text(index - 1) == "template":
                    opened.append(index)
            elif token.text == ">" and not token.spaced_before and opened:
                start = opened.pop()
                angle[start] = index
                self.skip(start, index)
            elif token.text in ";{}":
                opened.clear()
        return angle

    def skip(self, first, last):
        for index in range(first, last + 1):
            self.skipped[index] = True

    def skip_declared(self):
        for index, token in enumerate(self.tokens):
            text = token.text
            if token.kind == "name":
                if text in ("static_assert", "noexcept", "alignas", "decltype") and self.text(index + 1) == "(":
                    self.skip(index, self.partner[index + 1])
                elif text == "constexpr":
                    self.skip_table(index)
                elif text == "operator" and self.kind(index + 1) == "sign":
                    self.skip(index, index + 1)
            elif text == "[":
                if self.text(index + 1) == "[" and self.tokens[index + 1].start == token.end:
                    self.skip(index, self.partner[index])
                elif self.is_array_bound(index):
                    self.skip(index, self.partner[index])
            elif text == "=" and self.text(index + 1) == "0" and self.text(index + 2) == ";":
                if self.text(index - 1) in (")", "const", "noexcept", "override"):
                    self.skip(index, index + 1)  # a pure virtual function

    def skip_table(self, index):
        """Skips the initializer of a constexpr array."""
        while self.text(index) not in ("", ";", "{", "(", "="):
            index += 1
        if self.text(index) == "=" and self.text(index - 1) == "]" and self.text(index + 1) == "{":
            self.skip(index + 1, self.partner[index + 1])

    def is_array_bound(self, index):
        before = self.text(index - 2)
        return (
            self.kind(index - 1) == "name"
            and before not in ("return", "case", "else", "throw", "co_return")
            and (self.kind(index - 2) == "name" or (before in ("*", "&", ">") and not self.tokens[index - 2].spaced))
            and self.text(self.partner[index] + 1) in (";", "=", "{", "[", ",")
        )

    # Mutants

    def place(self, offset):
        line = bisect.bisect_right(self.lines, offset)
        start = self.lines[line - 1] if line else 0
        return f"{self.path}:{line + 1}:{offset - start + 1}"

    def add(self, start, end, text):
        old, new = shown(self.source[start:end]), shown(text) or "nothing"
        if one_line(self.source[start:end]) == one_line(text):
            return
        name = f"{self.place(start)} {old} -> {new}"
        self.found.setdefault(name, Mutant(name, self.path, start, end, text))

    def replace(self, index, text):
        self.add(self.tokens[index].start, self.tokens[index].end, text)

    def swap(self, first, second):
        """Adds a mutant with two ranges of tokens swapped. Each range is given by its first and its last token."""
        (a, b), (c, d) = ((self.tokens[x].start, self.tokens[y].end) for x, y in (first, second))
        source = self.source
        if one_line(source[a:b]) != one_line(source[c:d]):
            self.add(a, d, source[c:d] + source[b:c] + source[a:b])

    def find(self):
        self.find_bodies()
        for index, token in enumerate(self.tokens):
            if self.skipped[index]:
                continue
            if token.kind == "sign":
                if token.text in BINARY and token.spaced:
                    self.replace(index, BINARY[token.text])
                elif token.text == "!":
                    self.replace(index, "")
                elif token.text == "(" and self.in_body[index]:
                    self.swap_arguments(index)
            elif token.kind == "number":
                changed = next_number(token.text)
                if changed is not None:
                    self.replace(index, changed)
            elif token.text in ("true", "false"):
                self.replace(index, "false" if token.text == "true" else "true")
        return list(self.found.values())

    def swap_arguments(self, index):
        if self.text(index - 1) in NOT_CALLED:
            return
        if self.kind(index - 1) != "name" and index - 1 not in self.angle.values():
            return
        arguments, first, at, end = [], index + 1, index + 1, self.partner[index]
        while at < end:
            if self.text(at) in CLOSING:
                at = self.partner[at]
            elif at in self.angle:
                at = self.angle[at]
            elif self.text(at) == ",":
                arguments.append((first, at - 1))
                first = at + 1
            at += 1
        arguments.append((first, end - 1))
        for left, right in zip(arguments, arguments[1:]):
            # Swapping a format with its first value would only crash the program, and say nothing about the tests.
            if self.kind(left[0]) != "string":
                self.swap(left, right)

    # Statements

    def find_bodies(self):
        """Looks for functions' bodies among the declarations of namespaces and classes."""
        index, header = 0, 0
        while index < len(self.tokens):
            text = self.text(index)
            if text in (";", "}"):
                header = index + 1
            elif text in ("(", "["):
                self.visit_lambdas(index + 1, self.partner[index])
                index = self.partner[index]
            elif text == "{":
                names = self.header_names(header, index)
                if "namespace" in names or (self.text(header) == "extern" and self.kind(index - 1) == "string"):
                    header = index + 1
                elif names & {"class", "struct", "union"} and "=" not in names and "(" not in names:
                    header = index + 1
                elif "(" in names and "=" not in names and (self.is_body(index) or self.text(index - 1) == "}"):
                    self.visit_block(index)
                    index = self.partner[index]
                    header = index + 1
                else:
                    self.visit_lambdas(index + 1, self.partner[index])
                    index = self.partner[index]
            index += 1

    def header_names(self, first, last):
        names = set()
        while first < last:
            text = self.text(first)
            if first in self.angle:
                first = self.angle[first]
            elif text == "operator":
                first += 1  # its sign says nothing
            elif self.kind(first) == "name" or text in ("=", "("):
                names.add(text)
                if text == "(":
                    first = self.partner[first]
            first += 1
        return names

    def is_body(self, index):
        """Whether the brace opens the body of a function or a lambda, not a list of initializers."""
        before = self.text(index - 1)
        if before in (")", "mutable", "const", "noexcept", "override", "final", "try"):
            return True
        if before == "]":
            start = self.partner[index - 1]
            return self.kind(start - 1) != "name" or self.text(start - 1) == "return"
        at = index - 1
        while self.kind(at) == "name" or self.text(at) in ("::", "*", "&", "<", ">"):
            at -= 1
        return self.text(at) == "->" and self.text(at - 1) in (")", "const", "mutable", "noexcept")

    def visit_lambdas(self, index, end):
        while index < end:
            if self.text(index) == "{" and self.is_body(index):
                self.visit_block(index)
                index = self.partner[index]
            index += 1

    def visit_block(self, index):
        end = self.partner[index]
        for at in range(index, end + 1):
            self.in_body[at] = True
        index += 1
        previous = None
        while index < end:
            index, statement = self.visit_statement(index)
            if statement and previous and self.may_depend(previous, statement):
                self.swap(previous, statement)
            previous = statement

    def visit_statement(self, index):
        """Returns the index after the statement, and its first and last token if it is an expression."""
        text = self.text(index)
        if text == "{":
            self.visit_block(index)
            return self.partner[index] + 1, None
        if text in ("if", "for", "while", "switch"):
            index += 1
            if self.text(index) == "constexpr":
                index += 1
            self.visit_lambdas(index + 1, self.partner[index])
            return self.visit_statement(self.partner[index] + 1)[0], None
        if text in ("else", "do"):
            return self.visit_statement(index + 1)[0], None
        if text in ("case", "default"):
            while self.text(index) != ":":
                index += 1
            return index + 1, None
        end = index
        while self.text(end) not in (";", ""):
            if self.text(end) == "{":
                if self.is_body(end) or self.header_names(index, end) & {"class", "struct", "union"}:
                    if self.is_body(end):
                        self.visit_block(end)
                    end = self.partner[end]
            end += 1
        self.change_statement(index, end)
        return end + 1, (index, end) if self.is_expression(index) and end > index else None

    def is_expression(self, index):
        if self.kind(index) == "name":
            if self.text(index) in DECLARING or self.text(index) in (
                "return", "break", "continue", "goto", "throw", "static_assert"
            ):  # fmt: skip
                return False
            if self.text(index) == "delete":
                return True
            at = index + 1
            while True:
                if at in self.angle:
                    at = self.angle[at] + 1
                elif self.text(at) == "::":
                    at += 2
                else:
                    break
            # A type and the name that is declared with it.
            return not (self.kind(at) == "name" or self.text(at) in ("*", "&", "&&"))
        # (void)x; only marks a result as unused.
        return self.text(index) in ("*", "++", "--", "(", "::") and self.text(index + 1) != "void"

    def change_statement(self, index, end):
        if end <= index or self.skipped[index]:
            return
        if self.is_expression(index):
            if not (self.text(index) == "static_cast" and self.text(index + 2) == "void"):
                self.drop(index, end)
        elif self.text(index) in ("break", "continue") or (self.text(index) == "return" and end == index + 1):
            self.drop(index, end)
        elif self.text(index) == "return":
            first, last = self.tokens[index + 1], self.tokens[end - 1]
            value = self.source[first.start : last.end]
            if value == "HVC_OK":
                self.add(first.start, last.end, "HVC_FAILURE")
            elif re.fullmatch(r"HVC_[A-Z_]+", value):
                self.add(first.start, last.end, "HVC_OK")
            elif value not in ("{}", "nullptr", "true", "false") and (index + 2 < end or first.kind != "number"):
                self.add(first.start, last.end, "{}")

    def drop(self, index, end):
        self.add(self.tokens[index].start, self.tokens[end].end, ";")

    def may_depend(self, first, second):
        """Whether the order of two statements may matter. Of two assignments, one must use what the other assigns."""
        targets = [self.assigned(*first), self.assigned(*second)]
        if None not in targets:
            return self.mentions(first, targets[1]) or self.mentions(second, targets[0])
        names, calls = [], []
        for start, end in (first, second):
            names.append({self.text(at) for at in range(start, end) if self.kind(at) == "name"})
            calls.append(any(self.text(at) == "(" and self.kind(at - 1) == "name" for at in range(start, end)))
        return bool(names[0] & names[1]) or all(calls)

    def assigned(self, start, end):
        """The tokens that a statement assigns to, or None."""
        at = start
        while at < end:
            if self.text(at) in CLOSING:
                at = self.partner[at]
            elif self.text(at) in ("=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="):
                return [self.text(index) for index in range(start, at)]
            at += 1
        return None

    def mentions(self, statement, wanted):
        start, end = statement
        texts = [self.text(index) for index in range(start, end)]
        return any(texts[at : at + len(wanted)] == wanted for at in range(len(texts)))


def find_mutants(path, source):
    return Finder(path, source).find()


def draw(mutants, seed):
    """The mutants in the order of the seed. The order of two mutants depends on no other mutant."""
    return sorted(mutants, key=lambda mutant: hashlib.sha256(f"{seed} {mutant.id}".encode()).digest())
