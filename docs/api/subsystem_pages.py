#!/usr/bin/env python3
"""Writes one reference page per subsystem into the folder given.

Each page opens with the example of the subsystem's header (the first block
of indented lines in its opening comment), followed by the rest of that
comment and the list of headers that make the subsystem. The pages are made
from the headers at every build, so they cannot drift from them.

usage: subsystem_pages.py SOURCE_DIR OUTPUT_DIR
"""
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from comment_filter import Block  # noqa: E402

# (header, page name, title) in the order of the README's tour.
SUBSYSTEMS = [
    ("time", "Time and timecode"),
    ("messaging", "Messaging"),
    ("streams", "Ports and streams"),
    ("writers", "Writers"),
    ("files", "Files and paths"),
    ("foundation", "Foundation services"),
    ("text", "Text"),
]


def opening_comment(path):
    bodies = []
    with open(path, encoding="utf-8") as f:
        for line in f:
            stripped = line.strip()
            if not stripped.startswith("//"):
                break
            bodies.append(stripped[2:])
    return bodies


def split_example(bodies):
    """Returns (example lines, the other lines); the example is the first run
    of lines indented by three spaces or more."""
    start = next((i for i, b in enumerate(bodies) if b.startswith("   ")), None)
    if start is None:
        return [], bodies
    end = start
    while end < len(bodies) and (bodies[end].startswith("  ") or not bodies[end].strip()):
        end += 1
    while end > start and not bodies[end - 1].strip():
        end -= 1
    example = [b[3:] if b.startswith("   ") else b.strip() for b in bodies[start:end]]
    return example, bodies[:start] + bodies[end:]


def page(source_dir, name, title):
    header = os.path.join(source_dir, "include", "tovfoundation", name + ".h")
    example, rest = split_example(opening_comment(header))
    out = ["/** \\page subsystem_%s %s" % (name, title), ""]
    if example:
        out.append("\\code{.cpp}")
        out.extend(example)
        out.append("\\endcode")
        out.append("")
    block = Block("", "")
    for body in rest:
        block.add(body)
    out.extend(line[1:] if line.startswith(" ") else line for line in block.close())
    out.append("")
    headers = ["tovfoundation/%s.h" % name]
    folder = os.path.join(source_dir, "include", "tovfoundation", name)
    if os.path.isdir(folder):
        headers += ["tovfoundation/%s/%s" % (name, h) for h in sorted(os.listdir(folder))
                    if h.endswith(".h")]
    out.append("\\section subsystem_%s_headers Headers" % name)
    out.append("")
    for h in headers:
        out.append("- \\ref %s" % h)
    out.append("*/")
    return "\n".join(out) + "\n"


def main(source_dir, output_dir):
    os.makedirs(output_dir, exist_ok=True)
    index = ["/** \\page subsystems Subsystems", ""]
    for name, title in SUBSYSTEMS:
        with open(os.path.join(output_dir, "subsystem_%s.dox" % name), "w", encoding="utf-8") as f:
            f.write(page(source_dir, name, title))
        index.append("- \\subpage subsystem_%s" % name)
    index.append("*/")
    with open(os.path.join(output_dir, "subsystems.dox"), "w", encoding="utf-8") as f:
        f.write("\n".join(index) + "\n")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])
