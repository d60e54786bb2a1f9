"""The changes that can be made to a file of C++, one at a time: a comparison, a constant, a sign, a call, a return."""
import re
from dataclasses import dataclass

# What is no code: comments, texts, lines of the preprocessor.
NO_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'|^[ \t]*#[^\n]*(?:\\\n[^\n]*)*', re.M | re.S)
SWAPPED = {" < ": " <= ", " > ": " >= ", " <= ": " < ", " >= ": " > ", " == ": " != ", " != ": " == ", " && ": " || ",
           " || ": " && ", " + ": " - ", " - ": " + ", " += ": " -= ", " -= ": " += "}
OPERATOR = re.compile("|".join(re.escape(text) for text in sorted(SWAPPED, key=len, reverse=True)))
CONSTANT = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f]+|[1-9]\d*|0)(?=u?(?![\w.']))")
CALL = re.compile(r"^[ \t]+(?!return\b|static_assert\b|delete\b)[\w:]+(?:(?:\.|->|::)\w+)*\([^;{}]*\);$", re.M)
RETURN = re.compile(r"\breturn (-?\d+|true|false|nullptr);")
RETURNED = {"0": "-1", "true": "false", "false": "true"}
# Nor what the compiler reads past: the size of an array that is a parameter.
NO_MUTANTS = re.compile(r"static_assert\([^;]*;|^\w[^;{}]*\w\[\d+\][^;{}]*\)", re.M)


@dataclass(frozen=True)
class Mutant:
    file: str
    start: int
    end: int
    text: str  # in the place of what stands there
    line: int
    kind: str

    def applied(self, source):
        return source[: self.start] + self.text + source[self.end :]

    def shown(self, source):
        """The line as it was and as it is, wherever in the file it stands."""
        first = source.rfind("\n", 0, self.start) + 1
        last = source.find("\n", self.end)
        before, after = source[first:last], source[first : self.start] + self.text + source[self.end : last]
        return f"{self.file}: {self.kind}: {' '.join(before.split())}  ->  {' '.join(after.split())}"


def blanked(source):
    """The same length, with blanks where there is no code."""
    for pattern in (NO_CODE, NO_MUTANTS):
        source = pattern.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), source)
    return source


def mutants(file, source):
    code = blanked(source)

    def mutant(kind, start, end, text):
        return Mutant(file, start, end, text, source.count("\n", 0, start) + 1, kind)

    for match in OPERATOR.finditer(code):
        yield mutant("operator", *match.span(), SWAPPED[match[0]])
    for match in CONSTANT.finditer(code):
        yield mutant("constant", *match.span(), str(int(match[0], 0) + 1))
    for match in CALL.finditer(code):
        yield mutant("call", *match.span(), "")
    for match in RETURN.finditer(code):
        yield mutant("return", *match.span(1), RETURNED.get(match[1], "0"))
