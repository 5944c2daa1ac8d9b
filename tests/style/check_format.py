# SPDX-License-Identifier: GPL-3.0-or-later
"""Every C++ source is as clang-format leaves it. Only Debian 12's version judges, because versions differ;
without it the test is skipped (77), and says so. Usage: check_format.py ROOT"""
import pathlib
import re
import shutil
import subprocess
import sys

from check_style import files

SKIPPED = 77


def formatter():
    """The path of clang-format 14, or None."""
    for name in ("clang-format-14", "clang-format"):
        path = shutil.which(name)
        if path and re.search(r"version 14\.",
                              subprocess.run([path, "--version"], capture_output=True, text=True).stdout):
            return path
    return None


def unformatted(program, root, names):
    done = subprocess.run([program, "--dry-run", "--Werror", *names], cwd=root, capture_output=True, text=True)
    faults = sorted(set(re.findall(r"^(\S[^:\n]*):\d+:\d+: error:", done.stderr, re.MULTILINE)))
    return faults or ([done.stderr] if done.returncode else [])


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    program = formatter()
    if not program:
        print("SKIPPED: clang-format 14 is not installed (script/bootstrap --analyze)")
        return SKIPPED
    names = [name for name in files(root) if name.endswith((".cpp", ".h"))]
    faults = unformatted(program, root, names) if names else ["no source files found"]
    print("\n".join(f"{fault}: not formatted; clang-format -i it" for fault in faults) or f"{len(names)} files are formatted")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
