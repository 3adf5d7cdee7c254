"""The small changes of a C++ source that script/mutate tries: found by tokens, not by a parser.

The sources are formatted by clang-format, and that is relied on: a binary operator stands between blanks, a pointer's
star and a template's bracket do not.
"""
import re
from dataclasses import dataclass

TOKEN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
  | (?P<raw>R"(?P<fence>[^(\s]*)\(.*?\)(?P=fence)")
  | (?P<text>"(?:[^"\\\n]|\\.)*")
  | (?P<char>'(?:[^'\\\n]|\\.)+')
  | (?P<number>0[xX][0-9a-fA-F']+[uUlL]*|(?:\d[\d']*\.?\d*|\.\d+)(?:[eE][+-]?\d+)?[uUlLfF]*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<op><=>|<<=|>>=|\.\.\.|->\*|->|::|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[-+*/%&|^~!<>=?:;,.(){}\[\]])
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

COMPARISONS = {"<": ("<=", ">"), "<=": ("<", ">"), ">": (">=", "<"), ">=": (">", "<"), "==": ("!=",), "!=": ("==",)}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*="}
STEPS = {"++": "--", "--": "++"}
LOGIC = {"&&": "||", "||": "&&"}
NAMES = {"true": "false", "false": "true", "min": "max", "max": "min"}
KEYWORDS = {"return", "if", "else", "for", "while", "do", "switch", "case", "default", "break", "continue", "goto", "throw",
            "delete", "new", "using", "namespace", "template", "typedef", "static_assert", "co_return", "try", "catch",
            "public", "private", "protected", "friend", "extern", "static", "const", "constexpr", "auto", "operator"}


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass(frozen=True)
class Mutant:
    kind: str      # constant, text, comparison, arithmetic, logic, condition, left out
    start: int     # of the changed piece in the source
    end: int
    becomes: str
    line: int      # from 1
    inside: bool   # of a function's body

    def apply(self, source):
        return source[:self.start] + self.becomes + source[self.end:]


def tokens_of(source):
    """All tokens that can be changed; comments and directives are left out."""
    found = []
    for match in TOKEN.finditer(source):
        kind = match.lastgroup if match.lastgroup != "fence" else "raw"
        if kind not in ("comment", "directive"):
            found.append(Token(kind, match.group(), match.start(), match.end()))
    return found


def closing(tokens, index):
    """The index of the bracket that closes the one at index; the end when there is none."""
    pairs = {"(": ")", "[": "]", "{": "}"}
    opened, closed = tokens[index].text, pairs[tokens[index].text]
    depth = 0
    for i in range(index, len(tokens)):
        if tokens[i].kind == "op":
            depth += (tokens[i].text == opened) - (tokens[i].text == closed)
            if depth == 0:
                return i
    return len(tokens) - 1


def bodies(tokens):
    """The token ranges of function bodies at namespace or class level."""
    ranges = []
    i = head = 0
    while i < len(tokens):
        text = tokens[i].text
        if tokens[i].kind != "op" or text not in ("{", "}", ";"):
            i += 1
            continue
        if text == "{":
            before = [t.text for t in tokens[head:i]]
            if before and before[0] in ("namespace", "extern", "struct", "class", "enum", "union") and "(" not in before:
                if before[0] == "enum":
                    i = closing(tokens, i)
            else:
                end = closing(tokens, i)
                # A member's braces in front of the body: more of the head follows.
                behind = tokens[end + 1].text if end + 1 < len(tokens) else ""
                if behind in (",", "{"):
                    i = end + 1
                    continue
                if "(" in before and "=" not in before:
                    ranges.append((i, end))
                i = end
        head = i + 1
        i += 1
    return ranges


def numbers(text):
    """What a number becomes: one more, and one less where that is no negative one."""
    digits = text.replace("'", "")
    suffix = re.search(r"[uUlLfF]*$", digits).group() if not digits.lower().startswith("0x") else \
        re.search(r"[uUlL]*$", digits).group()
    body = digits[:len(digits) - len(suffix)] if suffix else digits
    if body.lower().startswith("0x"):
        value = int(body, 16)
        return [hex(value + 1) + suffix] + ([hex(value - 1) + suffix] if value else [])
    if re.search(r"[.eE]", body) or "f" in suffix.lower():
        value = float(body)
        more = value + 1 if value == int(value) else value * 1.25
        return [repr(more) + suffix] + ([repr(value / 2) + suffix] if value else [])
    value = int(body, 8) if re.fullmatch(r"0[0-7]+", body) else int(body)
    return [str(value + 1) + suffix] + ([str(value - 1) + suffix] if value else [])


def is_spaced(source, token):
    return source[token.start - 1:token.start] in (" ", "\n") and source[token.end:token.end + 1] in (" ", "\n")


def statement_end(tokens, i):
    """The index of the semicolon of the call or assignment that begins at i, or None; a declaration is none."""
    if tokens[i].kind != "name" and tokens[i].text not in ("::", "*", "++", "--"):
        return None
    if tokens[i].text in KEYWORDS:
        return None
    last, called = None, False
    while i < len(tokens):
        token = tokens[i]
        if token.text in ("(", "["):
            called = token.text == "("
            i = closing(tokens, i)
            last = tokens[i]
        elif token.text == ";":
            return i if called else None
        elif token.text in ("=", "+=", "-=", "*=", "/=", "|=", "&="):
            while i < len(tokens) and tokens[i].text != ";":
                i = closing(tokens, i) if tokens[i].text in ("(", "[", "{") else i
                i += 1
            return i if i < len(tokens) else None
        elif token.kind == "name":
            if last is not None and (last.kind == "name" or last.text in (")", "]")):
                return None
            last, called = token, False
        elif token.text in ("::", ".", "->") or (token.text == "*" and last is None):
            last = token if token.text != "*" else None
        else:
            return None
        i += 1
    return None


def mutants_of(source):
    """Every small change of the source, in the order of their places."""
    tokens = tokens_of(source)
    functions = bodies(tokens)
    line_starts = [0] + [m.end() for m in re.finditer("\n", source)]
    found = []

    import bisect

    def line_of(place):
        return bisect.bisect_right(line_starts, place)

    def inside(i):
        return any(a < i < b for a, b in functions)

    def add(kind, i, start, end, becomes):
        found.append(Mutant(kind, start, end, becomes, line_of(start), inside(i)))

    skip_until = 0
    for i, token in enumerate(tokens):
        if token.start < skip_until:
            continue
        before = tokens[i - 1] if i else None
        after = tokens[i + 1] if i + 1 < len(tokens) else None
        text = token.text
        if text in ("static_assert", "assert") and after and after.text == "(":
            skip_until = tokens[closing(tokens, i + 1)].end
            continue
        if token.kind == "number":
            for becomes in numbers(text):
                add("constant", i, token.start, token.end, becomes)
        elif token.kind == "text":
            add("text", i, token.start, token.end, text[:-1] + '~"')
        elif token.kind == "char":
            add("constant", i, token.start, token.end, "'~'" if text != "'~'" else "'^'")
        elif token.kind == "name" and text in NAMES:
            if text in ("true", "false") or (before and before.text == "::" and after and after.text in ("(", "<")):
                add("constant" if text in ("true", "false") else "arithmetic", i, token.start, token.end, NAMES[text])
        elif token.kind == "name" and text == "if" and after and after.text == "(":
            end = closing(tokens, i + 1)
            condition = source[tokens[i + 1].end:tokens[end].start]
            if not re.search(r"[^=!<>]=[^=]|;", condition):
                add("condition", i, after.start, tokens[end].end, f"(({condition}) || true)")
                add("condition", i, after.start, tokens[end].end, f"(({condition}) && false)")
        elif token.kind == "op":
            if text in COMPARISONS and is_spaced(source, token) and before.text != "operator":
                for becomes in COMPARISONS[text]:
                    add("comparison", i, token.start, token.end, becomes)
            elif text in ARITHMETIC and is_spaced(source, token) and before.text not in ("(", ",", "=", "return", "&&", "||"):
                add("arithmetic", i, token.start, token.end, ARITHMETIC[text])
            elif text in STEPS:
                add("arithmetic", i, token.start, token.end, STEPS[text])
            elif text in LOGIC and is_spaced(source, token):
                add("logic", i, token.start, token.end, LOGIC[text])
            elif text == "!" and after and after.text != "=":
                add("logic", i, token.start, token.end, "")
        # A statement that begins here and can be left out.
        if inside(i) and before is not None and (before.text in (";", "{", "}", ":", "else") or
                                                 (before.text == ")" and source[before.end:token.start] != "")):
            end = statement_end(tokens, i)
            if end is not None:
                add("left out", i, token.start, tokens[end].end, ";")
    return found
