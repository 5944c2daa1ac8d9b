# SPDX-License-Identifier: GPL-3.0-or-later
"""Holds the tree to rules.py, less what allowed.txt excuses. Usage: check_style.py ROOT"""
import collections
import pathlib
import subprocess
import sys

from rules import RULES, Source, enums_of

HERE = pathlib.Path(__file__).resolve().parent


def files(root):
    """What belongs to the tree: what git knows or would add, else (an unpacked archive) everything but build/."""
    done = subprocess.run(["git", "-C", str(root), "ls-files", "-co", "--exclude-standard", "-z"], capture_output=True)
    if done.returncode == 0:
        names = sorted(name for name in done.stdout.decode().split("\0") if name)
    else:
        names = sorted(path.relative_to(root).as_posix() for path in root.rglob("*"))
        names = [name for name in names if not name.startswith(("build", ".git/")) and "__pycache__" not in name]
    return [name for name in names if (root / name).is_file()]


def breaches(root):
    """(rule, path) -> texts of the breaches, and the number of files."""
    contents = {name: (root / name).read_bytes() for name in files(root)}
    enums = frozenset().union(*(enums_of(data.decode("latin-1")) for name, data in contents.items()
                                if name.startswith("src/") and name.endswith((".cpp", ".h"))))
    tree = frozenset(contents) | {str(parent) for name in contents for parent in pathlib.PurePosixPath(name).parents}
    found = collections.defaultdict(list)
    for name, data in contents.items():
        source = Source(name, data, enums, tree)
        for rule, look in RULES.items():
            found[rule, name] += [f"{name}:{line}: [{rule}] {message}" for line, message in look(source)]
    return found, len(contents), bool(enums)


def judge(found, allowed):
    """The faults that remain. What is allowed and no longer there is a fault too: the list only shrinks."""
    faults = []
    for (rule, name), texts in found.items():
        most = allowed.get((rule, name), 0)
        if len(texts) > most:
            faults += texts + ([f"{name}: [{rule}] {len(texts)}, allowed.txt excuses {most}"] if most else [])
    faults += [f"tests/style/allowed.txt: {name} has no breach of [{rule}]: take the line out"
               for rule, name in allowed if not found.get((rule, name))]
    return faults


def read_allowed(text):
    lines = [line.split(None, 3) for line in text.splitlines() if line.strip() and not line.startswith("#")]
    return {(rule, name): int(most) for rule, name, most, _reason in lines}


def main():
    found, count, any_enum = breaches(pathlib.Path(sys.argv[1]).resolve())
    faults = judge(found, read_allowed((HERE / "allowed.txt").read_text("ascii")))
    if not any_enum:
        faults.append("no source files found")
    print("\n".join(faults) or f"{count} files keep {len(RULES)} rules")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
