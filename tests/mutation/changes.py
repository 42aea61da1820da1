"""The single changes that can be made in a C++ source of this code base.

A tokenizer that knows comments and literals, and the layout that clang-format gives, are enough: an
operator of two operands has space on both sides, which no template's bracket and no reference has,
and the brace of a body has space before it, which no initialiser has.
"""

import re
from typing import NamedTuple

TOKEN = re.compile(
    r"""
    (?P<gap>\s+|//[^\n]*|/\*.*?\*/|^\#(?:\\.|[^\\\n])*)
  | (?P<text>(?:u8|[LuU])?(?:R"(?P<end>[^(\s]*)\(.*?\)(?P=end)"|"(?:\\.|[^"\\\n])*"))
  | (?P<char>'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:[eEpP][+-]|['\w.])*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<mark><=>|->\*|<<=|>>=|\.\.\.|::|->|\+\+|--|&&|\|\||<<|[-+*/%&|^=!<>]=|[^\s\w])
    """, re.VERBOSE | re.DOTALL | re.MULTILINE)

COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">",
               "&&": "||", "||": "&&"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "+=": "-=", "-=": "+="}
WORDS = {"true": "false", "false": "true"}
CALLS = {"min": "max", "max": "min", "front": "back", "back": "front"}
NO_EXPRESSION = set("auto case catch class const constexpr default do else enum for friend goto if"
                    " private public return static static_assert struct switch template try typedef"
                    " typename union using while".split())


class Token(NamedTuple):
    kind: str
    text: str
    start: int
    end: int


class Change(NamedTuple):
    function: str
    kind: str
    start: int
    end: int
    replacement: str

    def applied(self, source):
        return source[:self.start] + self.replacement + source[self.end:]


class Source:
    """A source's tokens, which bracket closes which, and to which function each token belongs."""

    def __init__(self, source):
        self.source = source
        self.tokens = [Token(match.lastgroup, match[0], *match.span())
                       for match in TOKEN.finditer(source) if not match["gap"]]
        self.closing = {}
        opened = []
        for index, token in enumerate(self.tokens):
            if token.text in ("(", "[", "{"):
                opened.append(index)
            elif token.text in (")", "]", "}") and opened:
                self.closing[opened.pop()] = index
        self.owner = [None] * len(self.tokens)
        self.in_body = [False] * len(self.tokens)
        self.scope(0, len(self.tokens), "")

    def top(self, begin, end):
        """The indices of what stands in no bracket between, the opening brackets included."""
        index = begin
        while index < end:
            yield index
            index = self.closing.get(index, index) + 1

    def spaced(self, index):
        token = self.tokens[index]
        around = self.source[token.start - 1:token.start] + self.source[token.end:token.end + 1]
        return len(around) == 2 and around.isspace()

    def scope(self, begin, end, owner):
        """Gives what a namespace or a class holds to functions and variables."""
        start = begin
        for index in self.top(begin, end):
            text = self.tokens[index].text
            if text == ";" or text == ":" and self.tokens[index - 1].text in (
                    "public", "protected", "private"):
                self.give(start, index, owner)
                start = index + 1
            elif text == "{":
                header = [self.tokens[i].text for i in self.top(start, index)]
                close = self.closing[index]
                if "namespace" in header or header[:1] == ["extern"]:
                    self.scope(index + 1, close, owner)
                elif "enum" in header:
                    pass
                elif "(" not in header and {"class", "struct"} & set(header):
                    self.scope(index + 1, close, owner + self.class_name(header) + "::")
                elif self.is_body(header, index):
                    self.give(start, close, owner)
                    self.in_body[index:close] = [True] * (close - index)
                else:
                    continue  # An initialiser, which goes on to its semicolon.
                start = close + 1

    @staticmethod
    def class_name(header):
        name = header[max(header.index(word) for word in ("class", "struct") if word in header) + 1:]
        ends = [name.index(word) for word in ("final", ":") if word in name]
        return "".join(name[:min(ends, default=len(name))])

    def is_body(self, header, index):
        assigned = any(text == "=" and before != "operator"
                       for before, text in zip([""] + header, header))
        return "(" in header and not assigned and self.source[self.tokens[index].start - 1] == " "

    def give(self, start, end, owner):
        if start < end and self.tokens[start].text != "static_assert":
            name = owner + self.declared_name(start, end)
            self.owner[start:end + 1] = [name] * (end + 1 - start)

    def declared_name(self, start, end):
        name = []
        for index in self.top(start, end):
            text = self.tokens[index].text
            if text in ("(", "=", "{", "[") and name[-1:] != ["operator"]:
                break
            name.append(text)
        if name[-1:] == ["("]:
            name.append(")")  # Of the call operator.
        first = name.index("operator") if "operator" in name else len(name) - 1
        while first > 0 and name[first - 1] in ("::", "~"):
            first -= 2 if name[first - 1] == "::" else 1
        return "".join(name[max(first, 0):])


def number_plus_one(text):
    whole = re.fullmatch(r"(0[xX][\da-fA-F']+|[\d']+)([uUlLzZ]*)", text)
    if whole:
        return str(int(whole[1].replace("'", ""), 0 if whole[1][:2] in ("0x", "0X") else 10) + 1) \
            + whole[2]
    return f"({text} + 1)"


def literal_changes(source, index):
    token = source.tokens[index]
    if token.kind == "number":
        yield "constant", number_plus_one(token.text)
    elif token.kind == "char":
        yield "constant", "'!'" if token.text == "'?'" else "'?'"
    elif token.kind == "text":
        is_raw = "R" in token.text[:token.text.index('"')]
        position = token.text.rindex(")" if is_raw else '"')
        yield "text", token.text[:position] + "~" + token.text[position:]
    elif token.text in WORDS:
        yield "constant", WORDS[token.text]


def operator_changes(source, index):
    token = source.tokens[index]
    following = source.tokens[index + 1].text if index + 1 < len(source.tokens) else ""
    if token.text in COMPARISONS and source.spaced(index):
        yield "comparison", COMPARISONS[token.text]
    elif token.text in ARITHMETIC and source.spaced(index) and not joins_text(source, index):
        yield "arithmetic", ARITHMETIC[token.text]
    elif token.text in CALLS and following == "(":
        yield "swapped call", CALLS[token.text]
    elif token.text == "?":
        yield "condition", "|| true ?"
    elif token.text == "!":
        yield "condition", ""


def joins_text(source, index):
    """Whether the sum at `index` stands in a statement with texts, which nothing but `+` joins."""
    for step in (-1, 1):
        near = index
        while 0 <= near < len(source.tokens) and source.tokens[near].text not in (";", "{", "}"):
            if source.tokens[near].kind == "text" or source.tokens[near].text == "to_string":
                return True
            near += step
    return False


def condition_change(source, index):
    """Of an `if` or a `while`; what it declares is asked behind its declaration."""
    token = source.tokens[index]
    if token.text not in ("if", "while") or source.tokens[index + 1].text != "(":
        return
    begin, end = index + 2, source.closing[index + 1]
    parts = [i for i in source.top(begin, end) if source.tokens[i].text == ";"]
    begin = parts[-1] + 1 if parts else begin
    assigned = [i for i in source.top(begin, end) if source.tokens[i].text == "="]
    first, last = source.tokens[begin].start, source.tokens[end].start
    asked = source.source[first:last]
    if not assigned:
        yield "condition", first, last, f"!({asked})"
    elif token.text == "if" and not parts:
        yield "condition", first, last, f"{asked}; !{source.tokens[assigned[0] - 1].text}"


def expression_end(source, index):
    """The index of the semicolon, when a statement begins at `index` that is an expression with an
    effect; else None."""
    tokens = source.tokens
    before = tokens[index - 1]
    starts = before.text in (";", "{") or (  # The brace of an initialiser ends no line.
        before.text == "}" and "\n" in source.source[before.end:tokens[index].start])
    if not source.in_body[index] or not starts or tokens[index].text in NO_EXPRESSION:
        return None
    effect = tokens[index].text in ("break", "continue", "throw")
    previous = None
    for current in source.top(index, len(tokens)):
        token = tokens[current]
        if token.text == ";":
            return current if effect else None
        if token.text in (")", "]", "}"):
            return None
        if previous is not None and tokens[previous].text != "throw" and token.kind == "word":
            before = tokens[previous]
            reference = before.text in ("&", "*", ">", "&&") and not source.spaced(previous)
            if before.kind == "word" or reference and previous != index:
                return None  # A declaration.
        effect = effect or token.text in ("(", "=", "++", "--") or (
            token.text.endswith("=") and token.text not in COMPARISONS)
        previous = current
    return None


def statement_changes(source, index):
    end = expression_end(source, index)
    if end is None:
        return
    first, last = source.tokens[index].start, source.tokens[end].end
    yield "dropped statement", first, last, ";"
    second = expression_end(source, end + 1)
    if second is not None:
        start, finish = source.tokens[end + 1].start, source.tokens[second].end
        text = source.source
        yield ("swapped statements", first, finish,
               text[start:finish] + text[last:start] + text[first:last])


def changes_of(text):
    """Every change of a source, in the order of where it begins."""
    source = Source(text)
    for index, token in enumerate(source.tokens):
        function = source.owner[index]
        if function is None:
            continue
        for kind, replacement in [*literal_changes(source, index), *operator_changes(source, index)]:
            yield Change(function, kind, token.start, token.end, replacement)
        for change in [*condition_change(source, index), *statement_changes(source, index)]:
            yield Change(function, *change)
