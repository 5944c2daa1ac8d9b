# SPDX-License-Identifier: GPL-3.0-or-later
"""The rules of the house. Each function looks at one file and yields (line, message) for every breach;
RULES names them. check_style.py walks the tree with them, rules_test.py shows that each can fail.
They see text, not types: where a rule is a heuristic, its comment says what it cannot see."""
import bisect
import re

LAYERS = ["base", "platform", "instrument", "telemetry", "products", "simulation", "session", "export", "views",
          "cli", "app"]
SEES = {layer: set(LAYERS[: i + 1]) for i, layer in enumerate(LAYERS)}
for _layer, _unseen in (("app", "cli"), ("session", "simulation"), ("export", "simulation"),
                        ("views", "simulation")):
    SEES[_layer].discard(_unseen)

SYSTEM = re.compile(r"(windows\.h|winsock2\.h|io\.h|unistd\.h|fcntl\.h|termios\.h|poll\.h|dirent\.h|pthread\.h|"
                    r"signal\.h|csignal|sched\.h|asm/.*|linux/.*|sys/.*)$")
LITERAL = re.compile(r"""R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'"""
                     r"|//[^\n]*|/\*.*?\*/", re.DOTALL)


class Source:
    """A file of the tree: its path below the root, its text, and the same text without comments and
    with empty literals, line for line; beside it the enums of src, and all files and folders of the tree."""

    def __init__(self, path, data, enums=frozenset(), tree=frozenset()):
        self.path, self.data, self.enums, self.tree = path, data, enums, tree
        self.text = data.decode("latin-1")
        self.is_cpp = path.endswith((".cpp", ".h"))
        parts = path.split("/")
        self.top, self.layer = parts[0], parts[1] if len(parts) > 2 else ""
        self.in_src = self.is_cpp and self.top == "src"
        self.code = LITERAL.sub(_blank, self.text) if self.is_cpp else ""
        self._starts = [0] + [end.end() for end in re.finditer("\n", self.text)]

    def line(self, offset):
        return bisect.bisect_right(self._starts, offset)

    def find(self, pattern, text=None):
        for found in re.finditer(pattern, self.code if text is None else text, re.MULTILINE):
            yield self.line(found.start()), found


def _blank(found):
    kept = found.group()
    quote = kept[-1] if kept[-1] in "\"'" and not kept.startswith("/") else ""
    inner = re.sub(r"[^\n]", " ", kept)
    return quote + inner[2:] + quote if quote else inner


def layers(source):
    """A file of src includes its own folder and those to its left only."""
    for number, found in source.find(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', source.text if source.in_src else ""):
        folder = found.group(1).split("/")[0]
        if folder in LAYERS and folder not in SEES.get(source.layer, LAYERS):
            yield number, f"{source.layer} must not include {found.group(1)}"


def system_headers(source):
    if source.in_src and source.layer != "platform":
        for number, found in source.find(r"^\s*#\s*include\s*<([^>]+)>"):
            if SYSTEM.match(found.group(1)):
                yield number, f"system header <{found.group(1)}> outside platform"


def qt(source):
    if source.is_cpp and source.layer not in ("app", "gui"):
        for number, found in source.find(r'^\s*#\s*include\s*[<"]((?:Qt\w*/)?[Qq][A-Z]\w*|qcustomplot\.h)[>"]',
                                         source.text):
            yield number, f"Qt header {found.group(1)} outside app"


def exceptions(source):
    """main catches what the libraries throw; a thread that the system refuses has no other way to say so."""
    if source.in_src:
        for number, found in source.find(r"\b(throw|catch)\b"):
            yield number, f"{found.group()}: exceptions are caught in main"


def ascii_only(source):
    if source.is_cpp or source.path.endswith((".py", ".cmake", "CMakeLists.txt")) or source.data.startswith(b"#!"):
        for found in re.finditer(rb"[^\x00-\x7e]", source.data):
            yield source.line(found.start()), "not ASCII"
            return


def licence(source):
    if source.is_cpp or source.path.endswith((".py", ".cmake", "CMakeLists.txt")) or source.data.startswith(b"#!"):
        first = source.text.split("\n")[1 if source.data.startswith(b"#!") else 0:][:1]
        if "SPDX-License-Identifier: GPL-3.0-or-later" not in "".join(first):
            yield 1, "does not open with the SPDX line"


def printing(source):
    """Only faces print; everybody else returns values or reports through a seam."""
    if source.in_src and source.layer not in ("cli", "app") and not source.path.startswith("src/platform/Console"):
        for number, found in source.find(r"\b(v?f?printf|f?puts|f?putc|putchar|perror|WriteStream)\s*\("
                                         r"|\bstd::w?(cout|cerr|clog)\b"):
            yield number, f"{found.group().rstrip('( ')}: prints outside the faces"


VARIABLE = re.compile(r"(?:inline\s+|static\s+|thread_local\s+|extern\s+)*(?P<type>.+[\s*&>])(?P<name>[\w:]+)\s*"
                      r"(?:\[[^\]]*\]\s*)*(?:[={].*)?$", re.DOTALL)


def _is_mutable_variable(statement):
    """A declaration that defines a variable somebody can change. One initialised by parentheses looks
    like a function and is not seen."""
    flat = statement
    while True:
        flatter = re.sub(r"<[^<>;=]*>|\[\[[^\[\]]*\]\]|\b(?:alignas|GUARDED_BY)\s*\([^()]*\)", " ", flat)
        if flatter == flat:
            break
        flat = flatter
    flat = flat.strip()
    head = re.split(r"[={]", flat, maxsplit=1)[0]
    if not head or "(" in head or re.match(
            r"(using|typedef|friend|template|static_assert|class|struct|enum|union|namespace|extern|public|private|"
            r"protected|return|goto|case|default|operator|concept)\b", head):
        return False
    found = VARIABLE.match(flat)
    if not found or re.search(r"\b(constexpr|constinit const)\b", head) or "operator" in head:
        return False
    declared = found.group("type")
    behind_pointer = declared.rsplit("*", 1)[-1]
    return not re.search(r"\bconst\b", behind_pointer)


def statics(source):
    """No state of the process beside what the document owns: no variable at namespace scope, no static
    or thread_local one anywhere, unless it is const."""
    if not source.in_src:
        return
    code = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", lambda found: re.sub(r"[^\n]", " ", found.group()), source.code,
                  flags=re.MULTILINE)
    at_namespace = list(_namespace_statements(code))
    for number, found in source.find(r"^[ \t]*(?:inline\s+)?(?:static|thread_local)\b[^;(]*?(?=[;({=])"
                                     r"(?:[({=][^;]*)?;", code):
        inside = not any(begin <= found.start() < begin + len(text) for begin, text in at_namespace)
        if inside and _is_mutable_variable(found.group().rstrip(";")):
            yield number, "a static variable that is not const"
    for start, statement in at_namespace:
        if _is_mutable_variable(statement):
            yield source.line(start + len(statement) - len(statement.lstrip())), "a namespace variable that is not const"


def _namespace_statements(code):
    """(offset, text) of every statement at namespace scope; bodies of functions and classes are left out."""
    scopes, begin, depth_inside, i = [], 0, 0, 0
    for i, char in enumerate(code):
        if depth_inside:
            depth_inside += (char == "{") - (char == "}")
            if not depth_inside:
                head = code[begin:opened]
                if "(" in head or re.search(r"\b(class|struct|enum|union)\b", head):
                    begin = i + 1 if "(" in head else opened
        elif char == "{":
            if re.search(r"\bnamespace\b[\w:\s]*$|\bextern\s+\"\s*\"\s*$", code[begin:i]):
                scopes.append(char)
                begin = i + 1
            else:
                opened, depth_inside = i, 1
        elif char == "}":
            begin = i + 1
        elif char == ";":
            statement = code[begin:i]
            if not statement.lstrip().startswith("{"):
                yield begin, statement
            begin = i + 1


def default_cases(source):
    """A switch over an enum of ours names every value, so that the compiler finds the switch that a new
    value is missing from. With `using enum` a label does not show its enum: then a comment must."""
    if not source.in_src:
        return
    for start, body in _switches(source.code):
        default = re.search(r"\bdefault\s*:(?!:)", body)
        if not default:
            continue
        labels = re.findall(r"\bcase\s+((?:[^:]|::)+?)\s*:(?!:)", body)
        ours = sorted({name for label in labels for name in re.findall(r"(\w+)::", label) if name in source.enums})
        number = source.line(start + default.start())
        if ours:
            yield number, f"default: in a switch over {', '.join(ours)}; name its values"
        elif not all(re.fullmatch(r"-?\d[\w']*|'\s*'", label) for label in labels):
            around = source.text.split("\n")[number - 1]
            if "// no enum of ours: " not in around:
                yield number, 'default: without "// no enum of ours: " and what it is instead'


def _switches(code):
    """(offset, text) of every switch's body, without the bodies of switches inside it."""
    for found in re.finditer(r"\bswitch\s*\(", code):
        begin = code.find("{", found.end())
        end = _closing(code, begin)
        body = code[begin + 1:end]
        for inner in re.finditer(r"\bswitch\s*\(", body):
            opened = body.find("{", inner.end())
            closed = _closing(body, opened)
            body = body[:opened] + re.sub(r"[^\n]", " ", body[opened:closed]) + body[closed:]
        yield begin + 1, body


def _closing(code, begin):
    depth = 0
    for i in range(begin, len(code)):
        depth += (code[i] == "{") - (code[i] == "}")
        if not depth:
            return i
    return len(code)


def enums_of(text):
    """The enums that a source declares."""
    return set(re.findall(r"\benum\s+(?:class\s+|struct\s+)?(?:\[\[\w+\]\]\s*)?(\w+)\s*[:{]", text))


def doc_lock(source):
    """The faces ask the document for what they need; they do not know its lock."""
    if source.in_src and source.layer in ("cli", "app"):
        for number, _ in source.find(r"\bDocLock\b"):
            yield number, "a face names DocLock"


def app_numbers(source):
    """Numbers come into app as texts or go into a curve: nothing is formatted, read or computed there."""
    if source.in_src and source.layer == "app":
        for number, found in source.find(
                r"QString::(number|asprintf)|\.arg\([^;,]*,[^;,]*,[^;,]*,|\bsetRealNumberPrecision|\bs?n?printf\s*\("
                r"|\b(?:std::|q)(?:sqrt|log|log2|log10|exp|pow|Sqrt|Ln|Exp|Pow|Log)\w*\s*\("
                r"|(?:\.|->)to(?:Double|Float)\s*\(|\bQLocale\b|\bstd::(to_chars|from_chars|to_string|sto[dfil]+|format)\b"):
            yield number, f"{found.group().rstrip('( ')}: formats, reads or computes a number in app"


def nolint(source):
    for number, found in source.find(r"\bNOLINT(?:NEXTLINE|BEGIN)?\b(.*)", source.text if source.is_cpp else ""):
        if not re.match(r"\([a-z][\w.,-]+\): \S", found.group(1)):
            yield number, "a NOLINT names its check and its reason: NOLINT(check): reason"


# The last one keeps this file free of what it looks for.
FOREIGN = "|".join((
    r"\b[Ss]pecification" r"s?\b", r"\b[Ss]pec" r"s?\b(?!/)", r"\bPart" r" (?:[0-9]+|[IVX]+|[A-Z])\b", r"\b[Ii]ssue" r"s? #?[0-9]",
    r"(?<![\w&#/])#" r"[0-9]{1,4}\b", r"(?<!\w)shared" r"/", r"(?<![\w.$}\"*])/(?:work|tmp/w)" r"/"))


def self_contained(source):
    """The tree speaks for itself: it refers to no document, ticket or folder that a reader cannot open."""
    if source.path == "LICENSE" or source.path.startswith(("fuzz/corpus/", "examples/")) or b"\0" in source.data:
        return
    for number, found in source.find(FOREIGN, source.text):
        yield number, f"refers to something outside the tree: {found.group()}"


def named_files(source):
    """What a page says about a file or folder of the tree is about one that exists."""
    for number, found in source.find(r"(?<![\w/.*-])(?:src|tests|script|docs|bench|fuzz|cmake|examples|packaging)(?:/[\w.-]*\w)+"
                                     r"(?![\w/]*[*<{])", source.text if source.path.endswith(".md") else ""):
        name = found.group()
        placeholder = name.rsplit("/", 1)[-1].isupper() or name.removeprefix("src/") in LAYERS
        if name not in source.tree and not placeholder:
            yield number, f"{name} is not in the tree"


RULES = {"layers": layers, "system-headers": system_headers, "qt": qt, "exceptions": exceptions, "ascii": ascii_only,
         "licence": licence, "printing": printing, "statics": statics, "default": default_cases, "doc-lock": doc_lock,
         "app-numbers": app_numbers, "nolint": nolint, "self-contained": self_contained,
         "named-files": named_files}
