#!/usr/bin/env python3
"""Presents a public header's contract comments to Doxygen.

The headers keep their comments in the plain `//` style: a block of `//`
lines right before the declaration it describes, one block for a run of
declarations that belong together (a getter beside its setter, overloads),
and a block at the top of the file that says what the header is for.
Doxygen reads only `///` and similar, so this filter (INPUT_FILTER in
Doxyfile.in) rewrites each header on its way into Doxygen:

- the block at the top of the file becomes the file's documentation;
- a block that is directly followed by a declaration, in a namespace, class
  or struct scope, becomes that declaration's documentation; if several
  declarations follow without a blank line, they become one member group,
  and DISTRIBUTE_GROUP_DOC gives every member of it the block's text;
- everything else (blocks followed by a blank line, comments inside
  function bodies, comments after code) stays an ordinary comment.

The output has as many lines as the input, each at its place, so Doxygen's
warnings name the header's own line numbers. The header itself is never
changed.
"""

import re
import sys

SCOPE_OPENER = re.compile(r"\b(namespace|class|struct|union|enum)\b")
ACCESS = re.compile(r"^\s*(public|protected|private)\s*:")


def split_comment(line):
    """(the line without string and character literals and its comment,
    the index at which a comment after code begins or None)."""
    out = []
    i = 0
    quote = None
    while i < len(line):
        c = line[i]
        if quote:
            if c == "\\":
                i += 2
                continue
            if c == quote:
                quote = None
            i += 1
            continue
        if c in "\"'":
            quote = c
        elif line.startswith("//", i) or line.startswith("/*", i):
            return "".join(out), i
        else:
            out.append(c)
        i += 1
    return "".join(out), None


def code_of(line):
    """The line's code, without literals and comments."""
    return split_comment(line)[0]


def with_group_end(line):
    """`line` with the end of a member group after its code."""
    _, comment = split_comment(line)
    if comment is None:
        return line + " /**@}*/"
    return line[:comment].rstrip() + " /**@}*/ " + line[comment:]


def trailing_doc(line):
    """A member or enumerator with a `//` comment after it, the comment as
    its documentation (`///<`); any other line as it is."""
    code, comment = split_comment(line)
    if comment is None or not code.strip() or not code.rstrip().endswith((";", ",")):
        return line
    if not line.startswith("// ", comment) or line.startswith("// NOLINT", comment):
        return line
    return line[:comment] + "///< " + escaped(line[comment + 3:])


def is_comment(line):
    """True for a line that holds a comment only."""
    return line.lstrip().startswith("//")


def is_declaration_start(line):
    """True for a line that can begin a declaration: code other than a
    closing brace, an access specifier or a directive (but #define)."""
    stripped = line.strip()
    if stripped.startswith("#"):
        return stripped.startswith("#define")
    return bool(stripped) and not stripped.startswith(("}", "//")) and not ACCESS.match(line)


class Scopes:
    """Which braces are open: scopes (namespace, class, ...) or bodies."""

    def __init__(self):
        self.stack = []
        self.pending_scope = False  # a scope keyword seen, its `{` not yet

    def in_body(self):
        return "body" in self.stack

    def feed(self, line):
        code = code_of(line)
        if SCOPE_OPENER.search(code) and not self.in_body():
            self.pending_scope = True
        for c in code:
            if c == "{":
                self.stack.append("scope" if self.pending_scope else "body")
                self.pending_scope = False
            elif c == "}":
                if self.stack:
                    self.stack.pop()
            elif c == ";":  # a declaration such as `class Message;`
                self.pending_scope = False


def declaration_run(lines, start):
    """The declarations right after a comment block, from line `start`.

    Returns (count of declarations, index of the run's last line). The run
    ends at a blank line, a comment, an access specifier or the end of the
    enclosing scope.
    """
    depth = 0
    parens = 0
    count = 0
    last = start - 1
    i = start
    while i < len(lines):
        line = lines[i]
        if depth == 0 and parens == 0 and not is_declaration_start(line):
            break
        code = code_of(line)
        depth += code.count("{") - code.count("}")
        parens += code.count("(") - code.count(")")
        if depth < 0:
            break
        stripped = code.rstrip()
        is_macro = stripped.lstrip().startswith("#define") and not stripped.endswith("\\")
        if depth == 0 and parens == 0 and (is_macro or stripped.endswith((";", "}"))):
            count += 1
            last = i
            if is_macro:
                # A group cannot open before a directive: a macro's block
                # documents that macro alone.
                break
        i += 1
    return count, last


def escaped(text):
    """`text` with the characters Doxygen would take as commands taken
    literally, except "@" commands.

    The comments are prose: a backslash, "%" or "#" means itself (JSON
    escapes, printf formats), and so does an "@" inside a word ("sr@latin").
    An "@" that starts a word is a command (@param, @code): documentation
    may use them. Code spans (`...`) and quoted text ("...") are left as
    they are; Doxygen shows them as written.
    """
    parts = re.split(r"(`[^`]*`|(?<!['\\])\"[^\"]*(?<!['\\])\")", text)
    for n in range(0, len(parts), 2):
        prose = re.sub(r"([\\%#]|(?<=\S)@|@(?![A-Za-z{}]))", r"\\\1", parts[n])
        # A quotation mark that is quoted itself ('"', \") opens no quote.
        parts[n] = re.sub(r"(?<=['\\])\"", "&quot;", prose)
    return "".join(parts)


def code_lines(lines, begin, end):
    """The lines of the comment block [begin, end) that are examples or tables.

    Such a run is indented by two or more blanks more than the prose, starts
    after an empty comment line and is no list ("- ..."); it is indented
    further so that Doxygen's Markdown shows it as code, as it stands.
    """
    def text(k):
        return re.match(r"^\s*//(.*)$", lines[k]).group(1)

    def indented(k):
        return text(k).startswith("   ") and text(k).strip() != ""

    code = set()
    k = begin
    while k < end:
        if indented(k) and (k == begin or text(k - 1).strip() == ""):
            run = k
            while run < end and indented(run):
                run += 1
            if not re.match(r"^\s*([-*+]|\d+\.)\s", text(k)):
                code.update(range(k, run))
            k = run
        else:
            k += 1
    return code


def to_doc(line, is_code):
    """A `//` comment line as a `///` documentation line."""
    indent, text = re.match(r"^(\s*)//(.*)$", line).groups()
    if is_code:
        return indent + "///  " + text
    return indent + "///" + escaped(text)


def filter_header(text):
    """The header `text` as Doxygen is to read it."""
    lines = text.split("\n")
    out = list(lines)
    scopes = Scopes()
    groups = []  # (first line, last line) of each member group
    i = 0
    at_top = True
    while i < len(lines):
        line = lines[i]
        if not is_comment(line) or line.lstrip().startswith(("///", "//!")):
            if line.strip():
                at_top = False
            if not scopes.in_body() and not line.lstrip().startswith("//"):
                out[i] = trailing_doc(out[i])
            scopes.feed(line)
            i += 1
            continue
        begin = i
        while i < len(lines) and is_comment(lines[i]):
            i += 1
        end = i  # first line after the block
        following = lines[end] if end < len(lines) else ""

        code = code_lines(lines, begin, end)

        def as_doc(k):
            return to_doc(lines[k], k in code)

        if at_top and following.strip() == "":
            for k in range(begin, end):
                out[k] = as_doc(k)
            if end < len(lines):
                out[end] = "/// @file"
            at_top = False
            continue
        at_top = False
        if scopes.in_body() or not is_declaration_start(following):
            continue
        count, last = declaration_run(lines, end)
        if count == 0:
            continue
        for k in range(begin, end):
            out[k] = as_doc(k)
        if count > 1:
            groups.append((end, last))
    # Marked once the comments after code have become documentation: the
    # markers must not hide those comments from trailing_doc().
    for first, last in groups:
        out[first] = "/**@{*/ " + out[first]
        out[last] = with_group_end(out[last])
    return "\n".join(out)


def main():
    with open(sys.argv[1], encoding="utf-8") as header:
        sys.stdout.write(filter_header(header.read()))


if __name__ == "__main__":
    main()
