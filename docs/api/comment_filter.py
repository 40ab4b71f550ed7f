#!/usr/bin/env python3
"""Doxygen input filter for the public headers.

The headers document themselves in plain // comments. This filter hands
Doxygen each header with those comments turned into documentation comments,
so the sources keep one comment style:

  - a run of // lines right before a declaration becomes its /// block; when
    it stands before adjacent overloads of one name (no blank line between
    them), it documents each of them;
  - a // comment after code on the same line becomes a ///< member comment;
  - the header's opening block (before #pragma once) becomes its file text;
  - lines indented by three spaces or more after the // (examples, tables of
    inputs and results) are kept as they are written, in a fenced block,
    except list items ("- ...") and their continuation lines;
  - separator rules (// ----) and NOLINT markers are dropped;
  - elsewhere the Windows path spellings of the text ("C:\\a\\b", "<pid>") and
    the double quotes around them are escaped, so that Doxygen reads
    backslashes and angle brackets as text, not as commands or HTML.
"""
import re
import sys

RULE = re.compile(r"^\s*//\s*-{3,}\s*$")
SECTION = re.compile(r"^\s*//\s*---\s.*$")
LIST_ITEM = re.compile(r"^(\s*)- ")
MARKUP = re.compile(r'([\\<>@&#%$"])')


def escape(text):
    # Double quotes too: Doxygen would take a quoted text as written and show
    # its escaped backslashes doubled.
    return MARKUP.sub(r"\\\1", text)


def split_trailing(line):
    """Returns (code, comment) for a line with code and a trailing // comment."""
    in_string = None
    i = 0
    while i < len(line):
        c = line[i]
        if in_string:
            if c == "\\":
                i += 2
                continue
            if c == in_string:
                in_string = None
        elif c in "\"'":
            in_string = c
        elif line.startswith("//", i):
            return line[:i], line[i + 2:]
        i += 1
    return line, None


class Block:
    """Turns one run of comment bodies into documentation lines."""

    def __init__(self, indent, lead):
        self.indent = indent
        self.lead = lead
        self.lines = []
        self.verbatim = False
        self.item_indent = None

    def add(self, body):
        item = LIST_ITEM.match(body)
        if item:
            self.item_indent = len(item.group(1))
        elif self.item_indent is not None:
            indent = len(body) - len(body.lstrip())
            if not body.strip() or indent <= self.item_indent:
                self.item_indent = None
        in_list = self.item_indent is not None
        literal = not in_list and (body.startswith("   ") or (self.verbatim and body.startswith("  ")))
        if literal and not self.verbatim:
            self.lines.append(self.lead + " ~~~~~~~~~~~~~{.unparsed}")
            self.verbatim = True
        elif not literal and self.verbatim:
            self.lines.append(self.lead + " ~~~~~~~~~~~~~")
            self.verbatim = False
        self.lines.append(self.lead + (body if literal else escape(body)))

    def close(self):
        if self.verbatim:
            self.lines.append(self.lead + " ~~~~~~~~~~~~~")
            self.verbatim = False
        return [self.indent + line for line in self.lines]


ACCESS = re.compile(r"^\s*(public|private|protected)\s*:")
OPENER = re.compile(r"^\s*(template\s*<.*>\s*)?(class|struct|namespace|enum|union)\b")


def declarations(run):
    """Splits a run of code lines into declarations; None when the run opens
    a scope of its own (a class, a namespace) or holds preprocessor lines."""
    if any(ACCESS.match(l) or OPENER.match(l) or l.strip().startswith("#") for l in run):
        return None
    units = []
    depth = 0
    current = []
    for l in run:
        current.append(l)
        code, _ = split_trailing(l)
        depth += code.count("{") - code.count("}")
        if depth < 0:
            return None
        if depth == 0 and code.rstrip().endswith((";", "}")):
            units.append(current)
            current = []
    if depth != 0 or current:
        return None
    return units


NAME = re.compile(r"(~?[A-Za-z_]\w*|operator\s*\S+?)\s*\(")


def declared_name(unit):
    code, _ = split_trailing(" ".join(unit))
    match = NAME.search(code)
    return match.group(1) if match else None


def group_length(run):
    """The number of leading lines of `run` that one comment documents as a
    group: the first declaration and the overloads of the same name right
    after it. 0 when there is no group of two or more."""
    units = declarations(run)
    if not units or len(units) < 2:
        return 0
    name = declared_name(units[0])
    if name is None:
        return 0
    count = 1
    for unit in units[1:]:
        if declared_name(unit) != name:
            break
        count += 1
    if count < 2:
        return 0
    return sum(len(u) for u in units[:count])


def convert_code_line(line):
    stripped = line.strip()
    if "//" in line and not stripped.startswith("#"):
        code, comment = split_trailing(line)
        if comment is not None:
            if "NOLINT" in comment or not code.strip():
                return code.rstrip()
            return code.rstrip() + "  ///<" + escape(comment)
    return line


def main(path):
    with open(path, encoding="utf-8") as f:
        lines = f.read().split("\n")
    out = []
    i = 0
    # The opening block documents the file.
    opening = Block("", "///")
    opening.lines.append("/// \\file")
    while i < len(lines) and lines[i].strip().startswith("//"):
        opening.add(lines[i].strip()[2:])
        i += 1
    if len(opening.lines) > 1:
        out.extend(opening.close())
    while i < len(lines):
        line = lines[i]
        stripped = line.strip()
        if RULE.match(line) or SECTION.match(line):
            out.append("")
            i += 1
            continue
        if not stripped.startswith("//"):
            out.append(convert_code_line(line))
            i += 1
            continue
        # A run of comment lines, then the code lines it stands before.
        block = Block(line[: len(line) - len(line.lstrip())], "///")
        while i < len(lines) and lines[i].strip().startswith("//") and not (
                RULE.match(lines[i]) or SECTION.match(lines[i])):
            body = lines[i].strip()[2:]
            if "NOLINT" not in body:
                block.add(body)
            i += 1
        run = []
        j = i
        while j < len(lines) and lines[j].strip() and not lines[j].strip().startswith("//"):
            run.append(lines[j])
            j += 1
        length = group_length(run)
        if length:
            # One comment over adjacent declarations documents each of them: a
            # member group whose documentation is shared by its members.
            out.append(block.indent + "///@{")
            out.extend(block.close())
            out.extend(convert_code_line(l) for l in run[:length])
            out.append(block.indent + "///@}")
            i += length
        else:
            out.extend(block.close())
    sys.stdout.write("\n".join(out))


if __name__ == "__main__":
    main(sys.argv[1])
