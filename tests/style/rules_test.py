# SPDX-License-Identifier: GPL-3.0-or-later
"""Shows that each rule can fail: breaches it must see, and neighbours of theirs that it must not."""
import pathlib
import sys
import tempfile
import unittest

import check_format
import check_style
from rules import RULES, Source

C = "src/session/X.cpp"
ISSUE, FOLDER = "issue " + "7", "shared" + "/x.md"

# rule: (path, text) that breaks it once each; (path, text) that keeps it.
CASES = {
    "layers": ([("src/base/X.h", '#include "session/Y.h"'), ("src/cli/X.h", '#include "app/Y.h"'),
                ("src/app/X.h", '#include "cli/Y.h"'), ("src/session/X.h", '#include "simulation/Y.h"'),
                ("src/views/X.h", "#  include <cli/Y.h>")],
               [("src/cli/X.h", '#include "simulation/Y.h"\n#include <vector>'),
                ("tests/base/X.h", '#include "session/Y.h"')]),
    "system-headers": ([(C, "#include <unistd.h>"), ("src/app/X.cpp", "#include <sys/stat.h>")],
                       [("src/platform/X.cpp", "#include <unistd.h>"), (C, "#include <system_error>")]),
    "qt": ([(C, "#include <QString>"), ("src/cli/X.cpp", "#include <QtCore/QObject>"), (C, '#include "qcustomplot.h"')],
           [("src/app/X.cpp", "#include <QString>"), ("src/views/X.h", '#include "session/QorViewDoc.h"'),
            ("tests/gui/X.cpp", "#include <QTest>")]),
    "exceptions": ([(C, "void F() { throw 1; }")], [(C, '// throw\nauto a = "catch";'), ("tests/a/X.cpp", "throw 1;")]),
    "ascii": ([(C, "// \u00b5m"), ("script/x", "#!/bin/sh\n# \u2026")], [(C, "// um"), ("README.md", "\u00b5m")]),
    "licence": ([(C, "namespace qor {}"), ("script/x", "#!/bin/sh\necho"), ("tests/CMakeLists.txt", "")],
                [(C, "// SPDX-License-Identifier: GPL-3.0-or-later"),
                 ("script/x", "#!/bin/sh\n# SPDX-License-Identifier: GPL-3.0-or-later")]),
    "printing": ([(C, 'void F() { printf("x"); }'), (C, "std::cerr << 1;"), (C, 'std::fputs("x", stderr);'),
                  (C, "WriteStream(StandardStream::Error, text);")],
                 [("src/cli/X.cpp", 'printf("x");'), (C, "std::snprintf(a, 4, b);"), (C, '// printf(\nauto a = "puts(";'),
                  ("src/platform/Console_posix.cpp", "WriteStream(a, b);")]),
    "statics": ([(C, "void F() {\n    static int calls = 0;\n}"), (C, "namespace qor {\nint Calls;\n}"),
                 (C, "namespace {\nstd::map<int, Name> Names{{1, {}}};\n}"), (C, "const char* Text = nullptr;"),
                 (C, "class CX {\n    static inline int Count = 0;\n};"), (C, "void F() { \n thread_local std::string a; }"),
                 (C, "inline std::atomic<bool> Asked{false};\nvoid F() {}"),
                 (C, "int F() { return 1; }\nenum class E { A };\nint Last = 3;")],
                [(C, "static int Count(int a) { return a; }\nclass CX {\n    static CX Make();\n    int Value = 0;\n};"),
                 (C, "const int A = 1;\nconstexpr const char* B = nullptr;\nconst char* const C = B;"),
                 (C, "namespace qor {\nstruct CRow {\n    int a = 0;\n};\nusing A = int;\nint F(int a = 3);\n}"),
                 (C, "void F() {\n    static const std::map<int, int> A = {{1, 2}};\n    int b = 0;\n}"),
                 (C, "namespace A::B {\nCX::CX(int a) : Value{a}, Other(a) { Value = 1; }\nconstexpr int T[] = {1, 2};\n}"),
                 ("tests/a/X.cpp", "static int calls;")]),
    "default": ([(C, "switch (a) {\ncase E::One:\n    return 1;\ndefault:\n    return 2;\n}"),
                 (C, "switch (a) {\ncase One:\ndefault:\n    return 2;\n}"),
                 (C, "switch (a) {\ncase qor::E::One:\n    switch (b) {\n    case 1:\n        break;\n    }\n"
                     "default: // no enum of ours: but it is\n    break;\n}")],
                [(C, "switch (a) {\ncase 1:\ncase 'x':\ndefault:\n    return 2;\n}"),
                 (C, "switch (a) {\ncase ZIP_ER_READ:\ndefault: // no enum of ours: codes of libzip\n    return 2;\n}"),
                 (C, "switch (a) {\ncase E::One:\n    switch (b) {\n    case 1:\n    default:\n        break;\n    }\n}"),
                 (C, "CX() = default;")]),
    "doc-lock": ([("src/cli/X.cpp", "CRecursiveLock lock(Document.DocLock);")],
                 [(C, "CRecursiveLock lock(DocLock);"), ("src/cli/X.cpp", "// DocLock")]),
    "app-numbers": ([("src/app/X.cpp", text) for text in
                     ("a = QString::number(b);", 'tr("%1").arg(value, 0, \'f\', 2);', "std::sqrt(a);", "a.toDouble();",
                      "std::to_chars(a, b, c);", "qPow(a, 2);", "snprintf(a, 4, b, c);")],
                    [("src/app/X.cpp", 'tr("%1: %2").arg(name, text);'), ("src/views/X.cpp", "std::sqrt(a);")]),
    "nolint": ([(C, "// NOLINT"), (C, "// NOLINTNEXTLINE(bugprone-x)"), (C, "// NOLINT: it is fine")],
               [(C, "// NOLINTNEXTLINE(bugprone-branch-clone): the first fault is reported"),
                (C, "// NOLINTEND(bugprone-branch-clone)")]),
    "self-contained": ([(C, f"// see {ISSUE}"), ("README.md", "as the specif" "ication says"), ("README.md", FOLDER),
                        ("docs/a.md", "Part" " 3"), ("CMakeLists.txt", "# see #" "12"), ("script/x", "cd /work" "/main")],
                       [(C, "IssueRead(2); // a part 1 and Partial"), ("a.css", "color: #112233;"),
                        ("docs/a.md", "/usr/share/doc, an issue, specified")]),
    "named-files": ([("docs/a.md", "see src/base/Gone.h."), ("README.md", "| `script/gone` |")],
                    [("docs/a.md", "see src/base/Text.h, script/ and `src/base`; tests/<folder>/x, build/src/x, tests/golden/CASE, src/app"),
                     ("src/base/X.h", "// src/base/Gone.h")]),
}


def breaches(rule, path, text):
    return list(RULES[rule](Source(path, text.encode(), frozenset({"E"}),
                                    frozenset({"src/base/Text.h", "src/base"}))))


class Rules(unittest.TestCase):
    def test_every_rule_sees_its_breaches_and_nothing_else(self):
        self.assertEqual(set(CASES), set(RULES))
        for rule, (bad, good) in CASES.items():
            for path, text in bad:
                with self.subTest(rule=rule, path=path, text=text):
                    self.assertEqual(len(breaches(rule, path, text)), 1)
            for path, text in good:
                with self.subTest(rule=rule, path=path, text=text):
                    self.assertEqual(breaches(rule, path, text), [])

    def test_the_line_is_named_in_spite_of_comments_and_texts_before_it(self):
        text = '/* a\n   b */ auto a = R"(x\n" y)";\nconst char c = \'"\'; // it\'s\nint n = 1\'000; std::cerr << "throw";\n'
        self.assertEqual([line for line, _ in breaches("printing", C, text)], [5])

    def test_what_is_allowed_is_counted_and_the_list_only_shrinks(self):
        allowed = check_style.read_allowed("# why\nprinting a.cpp 2 for every face\n")
        for count, faults in ((0, 1), (1, 0), (2, 0), (3, 4)):
            self.assertEqual(len(check_style.judge({("printing", "a.cpp"): ["fault"] * count}, allowed)), faults, count)
        self.assertEqual(check_style.judge({("printing", "b.cpp"): ["fault"]}, {}), ["fault"])

    @unittest.skipUnless(check_format.formatter(), "clang-format 14 is not installed")
    def test_a_file_out_of_format_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / ".clang-format").write_bytes((pathlib.Path(__file__).parents[2] / ".clang-format").read_bytes())
            (root / "good.cpp").write_text("int F() {\n    return 1;\n}\n")
            (root / "bad.cpp").write_text("int F()\n{\n  return 1;\n}\n")
            self.assertEqual(check_format.unformatted(check_format.formatter(), root, ["good.cpp", "bad.cpp"]), ["bad.cpp"])


unittest.main(argv=sys.argv[:1])
