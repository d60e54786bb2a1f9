"""Reads a recipe as BitBake does, as far as this one goes: assignments, functions, and ${...} in them."""
import re

ASSIGNMENT = re.compile(r'^([\w:${}.-]+)\s*(\?\?=|\?=|:=|\+=|=)\s*"((?:[^"\\]|\\.|\\\n)*)"', re.M)
FUNCTION = re.compile(r"^(\w+)\(\) \{\n(.*?)^\}", re.M | re.S)
REFERENCE = re.compile(r"\$\{([\w:.-]+)\}")


class Recipe:
    def __init__(self, file, variables):
        text = file.read_text()
        name, version = file.stem.split("_")
        self.variables = {"PN": name, "PV": version, "BP": f"{name}-{version}"} | variables
        for key, operator, value in ASSIGNMENT.findall(text):
            key, value = self.expand(key), value.replace("\\\n", "")
            if operator == "+=":
                value = self.variables.get(key, "") + " " + value
            elif operator.startswith("?") and key in self.variables:
                continue
            self.variables[key] = value
        self.inherited = " ".join(re.findall(r"^inherit (.*)$", text, re.M)).split()
        self.functions = dict(FUNCTION.findall(text))

    def getVar(self, name):  # as the recipe's own Python calls it
        return self.expand(self.variables[name])

    def expand(self, text):
        text = re.sub(r"\$\{@(.*?)\}$", lambda found: str(eval(found[1], {"d": self})), text)
        return REFERENCE.sub(lambda found: self.getVar(found[1]), text)

    def function(self, name):
        return self.expand(self.functions[name])
