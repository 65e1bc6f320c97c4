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


def run(text):
    return doxygen_filter.filter_header(text).split("\n")


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
    HEADER = """\
// Widget: a header that says what it is for.

#ifndef WIDGET_H_
#define WIDGET_H_

namespace msg {

// A widget.
class Widget {
 public:
  // Makes one.
  Widget();

  // Not attached to anything: a blank line follows.

  int size() const {
    // Inside a body: stays a comment.
    return 1;
  }
};

}  // namespace msg

#endif  // WIDGET_H_"""

    def test_blocks_before_declarations_become_documentation_and_nothing_else(self):
        out = run(self.HEADER)
        self.assertEqual(len(out), len(self.HEADER.split("\n")))
        self.assertEqual(out[0], "/// Widget: a header that says what it is for.")
        self.assertEqual(out[1], "/// @file")
        self.assertEqual(out[7], "/// A widget.")
        self.assertEqual(out[10], "  /// Makes one.")
        self.assertEqual(out[13], "  // Not attached to anything: a blank line follows.")
        self.assertEqual(out[16], "    // Inside a body: stays a comment.")
        self.assertEqual(out[21], "}  // namespace msg")
        self.assertEqual(out[23], "#endif  // WIDGET_H_")

    def test_a_header_without_a_leading_block_gets_no_file_documentation(self):
        out = run("#ifndef A_H_\n#define A_H_\n\n// A.\nstruct A;\n#endif")
        self.assertNotIn("/// @file", out)
        self.assertEqual(out[3], "/// A.")


class MemberGroups(unittest.TestCase):
    def test_a_run_of_declarations_shares_the_block(self):
        out = run("class H {\n public:\n  // The threshold.\n"
                  "  void set(int level);\n  int get() const;\n\n  void other();\n};")
        self.assertEqual(out[3], "/**@{*/   void set(int level);")
        self.assertEqual(out[4], "  int get() const; /**@}*/")
        self.assertEqual(out[6], "  void other();")

    def test_multi_line_declarations_and_bodies_count_once(self):
        out = run("// Two overloads.\ntemplate <typename T>\nvoid write(T& handler,\n"
                  "           int n) {\n  go(n);\n}\ntemplate <typename T>\n"
                  "void write(T* handler, int n) {\n  go(n);\n}\n")
        self.assertTrue(out[1].startswith("/**@{*/ template"))
        self.assertEqual(out[9], "} /**@}*/")
        self.assertEqual(sum(line.count("/**@") for line in out), 2)

    def test_a_single_declaration_is_no_group(self):
        out = run("// One.\nvoid one();\n")
        self.assertEqual(out, ["/// One.", "void one();", ""])

    def test_comments_after_code_in_a_group_stay_documentation(self):
        out = run("struct S {\n  // Both.\n  int a;  // the first\n  int b;  // the second\n};")
        self.assertEqual(out[2], "/**@{*/   int a;  ///< the first")
        self.assertEqual(out[3], "  int b; /**@}*/ ///< the second")

    def test_each_macro_is_documented_alone(self):
        out = run("#define G_H_\n\n// The major.\n#define MAJOR 1\n#define MINOR 2\n")
        self.assertEqual(out[2], "/// The major.")
        self.assertEqual(out[3], "#define MAJOR 1")
        self.assertEqual(out[4], "#define MINOR 2")


class CommentsAfterCode(unittest.TestCase):
    def test_members_and_enumerators_take_their_comment_as_documentation(self):
        out = run("enum E {\n  a = 0,  // the first\n};\nstruct S {\n  int n;  // a count\n};")
        self.assertEqual(out[1], "  a = 0,  ///< the first")
        self.assertEqual(out[4], "  int n;  ///< a count")

    def test_code_in_bodies_and_lint_markers_keep_theirs(self):
        out = run("void f() {\n  int n = 0;  // in a body\n}\nstruct S {\n"
                  "  S(int n);  // NOLINT: implicit by design\n"
                  "  S(const char* t) : n{0} {  // opens a body\n  }\n};")
        self.assertEqual(out[1], "  int n = 0;  // in a body")
        self.assertEqual(out[4], "  S(int n);  // NOLINT: implicit by design")
        self.assertEqual(out[5], "  S(const char* t) : n{0} {  // opens a body")

    def test_slashes_in_string_literals_are_not_comments(self):
        line = '  const char* url = "http://example";'
        self.assertEqual(run("struct S {\n" + line + "\n};")[1], line)


class TextAsWritten(unittest.TestCase):
    def doc(self, comment):
        return run(comment + "\nvoid f();")[0]

    def test_prose_is_escaped_and_quotes_commands_and_code_spans_are_kept(self):
        cases = [
            # Command characters of prose are taken literally.
            ("// as \\n and \\u00XX; #1; a%b; x@y",
             "/// as \\\\n and \\\\u00XX; \\#1; a\\%b; x\\@y"),
            # Quoted text is shown as written.
            ('// "%d", "sr@latin" and "\\u3002"', '/// "%d", "sr@latin" and "\\u3002"'),
            # A quoted quotation mark opens no quote.
            ("""// '"' and '\\' as \\" and \\\\; %d""",
             "/// '&quot;' and '\\\\' as \\\\&quot; and \\\\\\\\; \\%d"),
            # Commands and code spans are left to Doxygen.
            ("// @param path the file, `a\\b %d`", "/// @param path the file, `a\\b %d`"),
        ]
        for comment, expected in cases:
            with self.subTest(comment=comment):
                self.assertEqual(self.doc(comment), expected)

    def test_examples_after_an_empty_line_become_code_lists_do_not(self):
        out = run("// Made like\n//\n//   Key<2> k{\"a\", \"b\"};\n//   next\n//\n"
                  "// Steps:\n//   - first\n//     more\n//\n//   - second\nvoid f();")
        self.assertEqual(out[2], '///     Key<2> k{"a", "b"};')
        self.assertEqual(out[3], "///     next")
        self.assertEqual(out[6], "///   - first")
        self.assertEqual(out[7], "///     more")
        self.assertEqual(out[9], "///   - second")

    def test_indented_lines_right_after_prose_stay_prose(self):
        out = run("// The fields:\n//   time   when\nvoid f();")
        self.assertEqual(out[1], "///   time   when")


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
