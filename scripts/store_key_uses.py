"""Which command reads or writes which key of the store, followed through the daemon's sources from each command's work."""
import re

from handler_code import Commands

KEY_ROW = re.compile(r'^ +([A-Z]+) *\((k\w+), *"(\w+)", *"(\w+)"\)', re.M)
TYPES = {"TEXT": "text", "NUMBER": "number", "SHORT": "short number", "FLAG": "flag"}
FUNCTION = re.compile(r"^(?!static constexpr|#|namespace)\w[\w:<>&*,\[\] ]*?\b(\w+)\([^;{}]*\) \{(?:\n(.*?)^\}| ([^\n]*) \}$|\}$)", re.M | re.S)
ACTION = re.compile(r"\{&(g_n\w+), +(\w+) *\}")
READ, WRITE = "read", "write"

# What is done to the key that stands in the call; a mirror reads its first key and writes its second.
CALLS = {"read": READ, "readInto": READ, "putStoredText": READ, "putEndedText": READ, "readRuleText": READ,
         "write": WRITE, "writeAddress": WRITE, "writeDdnsText": WRITE}
# Keys whose names stand in no call: the active WEP key's, and what the platform reads for the daemon.
BEHIND = {"readWepKey": [(READ, f"kWifiWepKey{index}") for index in range(4)],
          "writeWepKey": [(WRITE, f"kWifiWepKey{index}") for index in range(4)],
          "HWMIB_getRegion": [(READ, "kRadioRegion")]}


def call_around(body, position):
    """The name of the call that a place stands in, and how many commas stand before it there."""
    depth = commas = 0
    for i in range(position - 1, -1, -1):
        if body[i] == ")":
            depth += 1
        elif body[i] == "(" and depth:
            depth -= 1
        elif body[i] == "(":
            return re.search(r"(\w*)$", body[:i]).group(1), commas
        elif body[i] == "," and not depth:
            commas += 1
        elif body[i] in ";{}":
            return "", 0
    return "", 0


class Uses:
    def __init__(self, top):
        code = (top / "platform/store_keys.h").read_text()
        self.keys = {name: (section, key, TYPES[kind]) for kind, name, section, key in KEY_ROW.findall(code)}
        self.commands = Commands(top)
        self.bodies = {}
        for path in sorted((top / "src").rglob("*.cpp")):
            text = re.sub(r"//.*", "", path.read_text())
            for name, block, line in FUNCTION.findall(text):
                body = block or line
                self.bodies.setdefault(name, {})[path] = self.bodies.get(name, {}).get(path, "") + body
        self.actions = dict(ACTION.findall((top / "src/service/deferred_actions.cpp").read_text()))

    def _own(self, body):
        for match in re.finditer(r"\bk[A-Z]\w+", body):
            call, commas = call_around(body, match.start())
            if match.group() not in self.keys or call == "wepKey" or body[match.end() :].startswith(".section"):
                continue
            if call == "mirror":
                yield (READ, WRITE)[commas], match.group()
            elif call in CALLS:
                yield CALLS[call], match.group()
            else:
                raise SystemExit(f"what does {call or 'this'} do with {match.group()}?")

    def of(self, function, path=None, seen=None):
        """{(READ or WRITE, key)} of a function, of what it calls, and of what it has done after the reply."""
        seen = set() if seen is None else seen
        places = self.bodies.get(function, {})
        place = path if path in places else next(iter(places), None)
        if place is None or (function, place) in seen:
            return set()
        seen.add((function, place))
        body = places[place]
        uses = set(self._own(body))
        for word in set(re.findall(r"\b\w+(?=\()", body)):
            uses |= set(BEHIND.get(word, ())) | self.of(word, place, seen)
        for flag in re.findall(r"\b(g_n\w+) = ", body):
            if flag in self.actions:
                uses |= self.of(self.actions[flag], None, seen)
        return uses

    def _prove_all_reached(self, roots):
        """Nothing is done to a key in a place that no command comes to."""
        reached = set().union(*(self.of(root) for root in roots))
        done = {use for places in self.bodies.values() for body in places.values() for use in self._own(body)}
        if done - reached:
            raise SystemExit(f"no command comes to where the code does this: {sorted(done - reached)}")

    def by_key(self):
        """{key: {READ: names, WRITE: names}}, in the order of the opcodes."""
        found = {key: {READ: [], WRITE: []} for key in self.keys}
        roots = [(self.commands.name["kPresenceReport"], "general_report")]
        for opcode in sorted(self.commands.served["Primary"], key=self.commands.number.get):
            roots.append((self.commands.name[opcode], self.commands.row[self.commands.served["Primary"][opcode]][2]))
        login = self.of("checkAuthentication")
        self._prove_all_reached([work for _, work in roots] + ["checkAuthentication"])
        for name, work in roots:
            assert work in self.bodies, work
            for use, key in self.of(work):
                found[key][use].append(name)
        for use, key in login:
            found[key][use] = ["every protected command"]
        return found
