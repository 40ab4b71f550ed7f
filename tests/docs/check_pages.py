#!/usr/bin/env python3
"""Opens the generated API reference in headless Chromium and checks what it
renders.

For the main page and the TOV::Timecode class page it takes a screenshot
(build/docs/screenshots/*.png) and reads the rendered document (--dump-dom,
after the page's scripts ran). The test fails unless the rendered text holds
the names the reference documents: the README's headings on the main page,
the class and its members on the Timecode page, the subsystem pages in the
page index, and no internal name in the class index.

usage: check_pages.py HTML_DIR SCREENSHOT_DIR
"""
import html
import os
import re
import shutil
import subprocess
import sys
import tempfile

CHROMIUM = os.environ.get("CHROMIUM", "/usr/bin/chromium")

# page file, screenshot name (or None), texts that must be rendered, texts that must not.
CHECKS = [
    ("index.html", "main_page.png",
     ["tovfoundation", "What it is", "Layout", "Using it from another CMake project",
      "A tour", "Time and timecode", "Ports and streams", "Files and paths",
      "Foundation services", "Platform notes", "TOV::Timecode", "Halyard::CReadStream"],
     []),
    ("classTOV_1_1Timecode.html", "timecode_class.png",
     ["TOV::Timecode Class Reference", "GetString", "StringToTime", "SetTime",
      "GetFrameRate", "GetFormat", "GetStyle", "IncrementHMSF", "IncrementFeetFrames",
      "Style"],
     []),
    ("pages.html", None,
     ["Subsystems", "Time and timecode", "Messaging", "Ports and streams", "Writers",
      "Files and paths", "Foundation services", "Text"],
     []),
    ("annotated.html", None,
     ["Halyard", "CFilePort", "CReadStream", "CWriteStream", "FileUtils", "CFileSpec",
      "Timecode", "FrameRate", "Time"],
     ["tovimpl", "FilePortFile", "ReadStreamState"]),
]


def chromium(profile, *args):
    command = [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
               "--no-first-run", "--disable-background-networking",
               "--disable-component-update", "--disable-sync", "--hide-scrollbars",
               "--user-data-dir=" + profile, *args]
    result = subprocess.run(command, capture_output=True, text=True, timeout=120)
    if result.returncode != 0:
        sys.stderr.write(result.stderr)
        raise SystemExit("check_pages: chromium failed (%d): %s" % (result.returncode, command))
    return result.stdout


def rendered_text(dom):
    dom = re.sub(r"(?is)<(script|style)\b.*?</\1>", " ", dom)
    text = re.sub(r"(?s)<[^>]+>", " ", dom)
    return re.sub(r"\s+", " ", html.unescape(text))


def main(html_dir, screenshot_dir):
    if not os.access(CHROMIUM, os.X_OK):
        raise SystemExit("check_pages: %s not found (scripts/install-deps --docs)" % CHROMIUM)
    os.makedirs(screenshot_dir, exist_ok=True)
    failures = []
    profile = tempfile.mkdtemp(prefix="tov-docs-chromium-")
    try:
        for page, shot, wanted, unwanted in CHECKS:
            path = os.path.join(os.path.abspath(html_dir), page)
            if not os.path.isfile(path):
                failures.append("%s: not generated" % page)
                continue
            url = "file://" + path
            if shot:
                target = os.path.join(os.path.abspath(screenshot_dir), shot)
                if os.path.exists(target):
                    os.remove(target)
                chromium(profile, "--window-size=1280,1600", "--screenshot=" + target, url)
                if not os.path.isfile(target) or os.path.getsize(target) < 10000:
                    failures.append("%s: no screenshot at %s" % (page, target))
            text = rendered_text(chromium(profile, "--dump-dom", url))
            for name in wanted:
                if name not in text:
                    failures.append("%s: rendered text lacks %r" % (page, name))
            for name in unwanted:
                if name in text:
                    failures.append("%s: rendered text shows internal name %r" % (page, name))
            print("check_pages: %s rendered, %d characters of text" % (page, len(text)))
    finally:
        shutil.rmtree(profile, ignore_errors=True)
    for failure in failures:
        print("check_pages: FAIL " + failure, file=sys.stderr)
    if failures:
        return 1
    print("check_pages: every page renders the names it documents")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
