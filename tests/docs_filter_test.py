#!/usr/bin/env python3
"""Tests of docs/doxygen_filter.py, the filter that hands the public
headers' `//` contract comments to Doxygen."""

import glob
import os
import re
import sys
import unittest

SOURCE_DIR = os.environ.get(
    "MSG_SOURCE_DIR", os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
sys.path.insert(0, os.path.join(SOURCE_DIR, "docs"))
sys.dont_write_bytecode = True  # nothing written into the source tree

import doxygen_filter  # noqa: E402


def undo(line):
    """What a filtered line was before the filter, if the filter changed
    only comments: the reverse of each rewrite it makes."""
    if line == "/// @file":
        return ""
    line = line.replace("/**@{*/ ", "").replace(" /**@}*/", "")
    line = re.sub(r"///< ", "// ", line)
    match = re.match(r"^(\s*)///(.*)$", line)
    if match:
        indent, text = match.groups()
        line = indent + "//" + text
    parts = line.replace("&quot;", '"').split("`")
    for n in range(0, len(parts), 2):
        parts[n] = re.sub(r"\\([\\%#@])", r"\1", parts[n])
    return "`".join(parts)


class WhatBecomesDocumentation(unittest.TestCase):
    # What the filter makes of a header's text, as (what, text, filtered).
    CASES = [
        ("the leading block documents the file; a block before a blank line or in a body "
         "stays a comment",
         "// Widget: what it is for.\n\n// A widget.\nclass Widget {\n public:\n"
         "  // Not attached.\n\n  int size() const {\n    // In a body.\n    return 1;\n  }\n};",
         "/// Widget: what it is for.\n/// @file\n/// A widget.\nclass Widget {\n public:\n"
         "  // Not attached.\n\n  int size() const {\n    // In a body.\n    return 1;\n  }\n};"),
        ("a header without a leading block gets no file documentation",
         "#ifndef A_H_\n#define A_H_\n\n// A.\nstruct A;\n#endif",
         "#ifndef A_H_\n#define A_H_\n\n/// A.\nstruct A;\n#endif"),
        ("a run of declarations shares the block",
         "class H {\n public:\n  // The threshold.\n  void set(int level);\n  int get() const;\n\n"
         "  void other();\n};",
         "class H {\n public:\n  /// The threshold.\n/**@{*/   void set(int level);\n"
         "  int get() const; /**@}*/\n\n  void other();\n};"),
        ("multi-line declarations and bodies count once",
         "// Two overloads.\ntemplate <typename T>\nvoid write(T& handler,\n           int n) {\n"
         "  go(n);\n}\ntemplate <typename T>\nvoid write(T* handler, int n) {\n  go(n);\n}\n",
         "/// Two overloads.\n/**@{*/ template <typename T>\nvoid write(T& handler,\n"
         "           int n) {\n  go(n);\n}\ntemplate <typename T>\n"
         "void write(T* handler, int n) {\n  go(n);\n} /**@}*/\n"),
        ("a single declaration is no group", "// One.\nvoid one();\n", "/// One.\nvoid one();\n"),
        ("comments after code in a group stay documentation",
         "struct S {\n  // Both.\n  int a;  // the first\n  int b;  // the second\n};",
         "struct S {\n  /// Both.\n/**@{*/   int a;  ///< the first\n"
         "  int b; /**@}*/ ///< the second\n};"),
        ("each macro is documented alone",
         "#define G_H_\n\n// The major.\n#define MAJOR 1\n#define MINOR 2\n",
         "#define G_H_\n\n/// The major.\n#define MAJOR 1\n#define MINOR 2\n"),
        ("members and enumerators take their comment as documentation",
         "enum E {\n  a = 0,  // the first\n};\nstruct S {\n  int n;  // a count\n};",
         "enum E {\n  a = 0,  ///< the first\n};\nstruct S {\n  int n;  ///< a count\n};"),
        ("code in bodies, lint markers and slashes in strings keep theirs",
         "void f() {\n  int n = 0;  // in a body\n}\nstruct S {\n"
         "  S(int n);  // NOLINT: implicit by design\n"
         "  S(const char* t) : n{0} {  // opens a body\n  }\n"
         '  const char* url = "http://example";\n};',
         None),
        ("command characters of prose are taken literally",
         "// as \\n and \\u00XX; #1; a%b; x@y\nvoid f();",
         "/// as \\\\n and \\\\u00XX; \\#1; a\\%b; x\\@y\nvoid f();"),
        ("quoted text is shown as written",
         '// "%d", "sr@latin" and "\\u3002"\nvoid f();',
         '/// "%d", "sr@latin" and "\\u3002"\nvoid f();'),
        ("a quoted quotation mark opens no quote",
         """// '"' and '\\' as \\" and \\\\; %d\nvoid f();""",
         "/// '&quot;' and '\\\\' as \\\\&quot; and \\\\\\\\; \\%d\nvoid f();"),
        ("commands and code spans are left to Doxygen",
         "// @param path the file, `a\\b %d`\nvoid f();",
         "/// @param path the file, `a\\b %d`\nvoid f();"),
        ("examples after an empty line become code, lists do not",
         "// Made like\n//\n//   Key<2> k{\"a\", \"b\"};\n//   next\n//\n"
         "// Steps:\n//   - first\n//     more\n//\n//   - second\nvoid f();",
         "/// Made like\n///\n///     Key<2> k{\"a\", \"b\"};\n///     next\n///\n"
         "/// Steps:\n///   - first\n///     more\n///\n///   - second\nvoid f();"),
        ("indented lines right after prose stay prose",
         "// The fields:\n//   time   when\nvoid f();",
         "/// The fields:\n///   time   when\nvoid f();"),
    ]

    def test_cases(self):
        for what, text, filtered in self.CASES:
            with self.subTest(what):
                # None: the text stays as it is.
                expected = text if filtered is None else filtered
                self.assertEqual(doxygen_filter.filter_header(text), expected)


class PublicHeaders(unittest.TestCase):
    def test_the_filter_changes_only_comments_and_keeps_every_line_in_place(self):
        headers = sorted(glob.glob(os.path.join(SOURCE_DIR, "include", "msg", "*.h")))
        self.assertGreater(len(headers), 10)
        for header in headers:
            with open(header, encoding="utf-8") as source:
                original = source.read().split("\n")
            filtered = doxygen_filter.filter_header("\n".join(original)).split("\n")
            self.assertEqual(len(filtered), len(original), header)
            for number, (before, after) in enumerate(zip(original, filtered), 1):
                if before.strip() == "" and after == "/// @file":
                    continue
                undone = undo(after)
                # Code lines of examples gain two blanks of indentation.
                if undone != before:
                    undone = re.sub(r"^(\s*)//  ", r"\1//", undone, count=1)
                self.assertEqual(undone, before, "%s:%d" % (header, number))


if __name__ == "__main__":
    unittest.main()
