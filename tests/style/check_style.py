# SPDX-License-Identifier: GPL-3.0-or-later
"""The repository's own rules, as a test: include directions, where system headers and Qt may stand,
ASCII sources, the SPDX line, no exceptions outside main."""
import pathlib
import re
import sys

ROOT = pathlib.Path(sys.argv[1])
LAYERS = ["base", "platform", "instrument", "telemetry", "products", "simulation", "session", "export", "views",
          "cli", "app"]
SEES = {layer: set(LAYERS[: i + 1]) for i, layer in enumerate(LAYERS)}
for layer, unseen in (("app", "cli"), ("session", "simulation"), ("export", "simulation"), ("views", "simulation")):
    SEES[layer].discard(unseen)
SYSTEM = re.compile(r"^(windows\.h|winsock2\.h|io\.h|unistd\.h|fcntl\.h|termios\.h|poll\.h|dirent\.h|pthread\.h|"
                    r"signal\.h|csignal|sched\.h|asm/.*|linux/.*|sys/.*)$")
# main catches what the libraries throw; a thread that the system refuses has no other way to say so.
MAY_CATCH = {"src/cli/main.cpp", "src/platform/Worker.cpp"}
faults = []


def check_line(path, number, line, layer):
    include = re.match(r'\s*#\s*include\s*[<"]([^>"]+)[>"]', line)
    if include:
        target = include.group(1)
        folder = target.split("/")[0]
        if folder in LAYERS and folder not in SEES[layer]:
            faults.append(f"{path}:{number}: {layer} must not include {target}")
        if SYSTEM.match(target) and layer != "platform":
            faults.append(f"{path}:{number}: system header <{target}> outside platform")
        if re.match(r"Q[A-Z]", target) and layer != "app":
            faults.append(f"{path}:{number}: Qt header <{target}> outside app")
    code = re.sub(r'"(\\.|[^"\\])*"|//.*', "", line)
    if re.search(r"\b(throw|catch)\b", code) and path.as_posix() not in MAY_CATCH:
        faults.append(f"{path}:{number}: exceptions are caught in main")


def main():
    files = [p for top in ("src", "tests", "bench", "fuzz") for p in sorted((ROOT / top).rglob("*"))
             if p.suffix in (".cpp", ".h")]
    if not files:
        faults.append("no source files found")
    for path in files:
        text = path.read_bytes()
        shown = path.relative_to(ROOT)
        if any(byte > 0x7E for byte in text):
            faults.append(f"{shown}: not ASCII")
        lines = text.decode("ascii", "replace").splitlines()
        if not lines or "SPDX-License-Identifier: GPL-3.0-or-later" not in lines[0]:
            faults.append(f"{shown}: does not open with the SPDX line")
        for number, line in enumerate(lines, 1):
            if shown.parts[0] == "src":
                check_line(shown, number, line, shown.parts[1])
    print("\n".join(faults) or f"{len(files)} files keep the rules")
    return 1 if faults else 0


sys.exit(main())
