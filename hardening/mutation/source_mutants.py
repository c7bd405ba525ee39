"""Small breaks in the text of a C++ file, one at a time."""

import random
import re
from dataclasses import dataclass


@dataclass(frozen=True)
class Mutant:
    """One break: the characters from `begin` to `end` of `file` become `replacement`."""

    file: str
    line: int
    kind: str
    begin: int
    end: int
    replacement: str

    def apply(self, text):
        return text[: self.begin] + self.replacement + text[self.end :]

    def describe(self, text):
        """The changed lines on one, without indentation, with the change as [[before -> after]] where it is."""
        first = text.rfind("\n", 0, self.begin) + 1
        last = text.find("\n", self.end)
        change = f"[[{text[self.begin : self.end]} -> {self.replacement}]]"
        return " ".join((text[first : self.begin] + change + text[self.end : last]).split())


# Comments, literals, directives, compile-time checks, attributes, what another system or compiler builds: changing them
# shows nothing about the tests.
_NO_CODE = re.compile(
    r"""^\#ifdef\ (?:_WIN32|Q_OS_WIN)\n.*?^\#(?:else|endif)
      | ^\#else\ //\ other\ compilers\n.*?^\#endif
      | //[^\n]*
      | /\*.*?\*/
      | "(?:\\.|[^"\\\n])*"
      | (?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])*'
      | ^[ \t]*\#(?:\\.|[^\n\\])*
      | \bstatic_assert\b[^;]*;
      | ^\s*template\ <[^\n]*$
      | \[\[[^\]]*\]\]""",
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)


def _code_only(text):
    """The text with everything else blanked out; offsets and lines stay."""
    return _NO_CODE.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


# The formatter puts blanks around binary operators, and never around the brackets of a template.
_SWAPPED = {
    "comparison": {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="},
    "logic": {"&&": "||", "||": "&&"},
    "arithmetic": {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*="},
    "bits": {"<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "&", "&=": "|=", "|=": "&="},
}
_BINARY_OPERATOR = re.compile(r"(?<=[\w)\]}]\s)[-+*/%<>=!&|^]{1,2}(?=\s)")


def _swapped_operators(code):
    for match in _BINARY_OPERATOR.finditer(code):
        for kind, swaps in _SWAPPED.items():
            if match.group() in swaps:
                yield kind, match.start(), match.end(), swaps[match.group()]


_WHOLE_NUMBER = re.compile(r"(?<![\w.])(0[xX][0-9A-Fa-f]+|\d+)(?=[uUlL]*(?![\w.']))")
_FRACTION = re.compile(r"(?<![\w.])\d+\.\d*(?:e-?\d+)?(?![\w.])")


def _changed_constants(code):
    for match in _WHOLE_NUMBER.finditer(code):
        yield "constant", match.start(), match.end(), str(int(match.group(), 0) + 1)
    for match in _FRACTION.finditer(code):
        yield "constant", match.start(), match.end(), f"({match.group()} * 1.1 + 0.001)"
    for match in re.finditer(r"\b(?:true|false)\b", code):
        yield "constant", match.start(), match.end(), "false" if match.group() == "true" else "true"


def _closing_bracket(code, opening):
    """The offset of the bracket that closes the one at `opening`."""
    depth = 0
    for offset in range(opening, len(code)):
        depth += {"(": 1, ")": -1}.get(code[offset], 0)
        if depth == 0:
            return offset
    raise ValueError("a bracket is never closed")


def _negated_conditions(code):
    for match in re.finditer(r"\b(?:if|while) \(", code):
        begin = match.end()
        end = _closing_bracket(code, begin - 1)
        condition = code[begin:end]
        declares = re.search(r"(?<![=!<>])=(?!=)|;", condition)
        if not declares:
            yield "condition", begin, begin, "!(", end
    for match in re.finditer(r"(?<=[\s(])!(?=[\w(])", code):
        yield "condition", match.start(), match.end(), "", None


# A call, an assignment or a step that stands for itself; declarations have a blank before the name.
_STATEMENT = re.compile(
    r"(?<=[;{})])\s*\n\s*((?:\(void\))?(?:\+\+|--)?[\w:.\[\]*]+(?:->[\w.]+)*(?:\(| [-+*/|&^]?= |;)[^;{}]*;?)(?=\n)"
)
_NO_STATEMENT = re.compile(r"(?:return|default|public|private|else|do)\b|\w+;$(?<!break;)(?<!continue;)")


def _removed_statements(code):
    position = 0
    while match := _STATEMENT.search(code, position):
        # The next statement may begin where this one ends.
        position = match.end() - 1
        statement = match.group(1)
        is_declaration = re.search(r"= (?:delete|default);$", statement)
        if statement.endswith(";") and not is_declaration and not _NO_STATEMENT.match(statement):
            yield "statement", match.start(1), match.end(1), ";"


def _all_changes(code, text):
    for finder in (_swapped_operators, _changed_constants, _removed_statements):
        yield from finder(code)
    for kind, begin, end, replacement, closing in _negated_conditions(code):
        if closing is not None:
            end, replacement = closing, f"!({text[begin:closing]})"
        yield kind, begin, end, replacement


def mutants_of(file, text, seed):
    """All mutants of a file in an order that the seed decides, in which the kinds take turns."""
    code = _code_only(text)
    by_kind = {}
    for kind, begin, end, replacement in _all_changes(code, text):
        line = text.count("\n", 0, begin) + 1
        by_kind.setdefault(kind, []).append(Mutant(file, line, kind, begin, end, replacement))
    order = random.Random(f"{seed} {file}")
    queues = [sorted(by_kind[kind], key=lambda mutant: mutant.begin) for kind in sorted(by_kind)]
    for queue in queues:
        order.shuffle(queue)
    order.shuffle(queues)
    turns = []
    while any(queues):
        turns += [queue.pop() for queue in queues if queue]
    return turns
