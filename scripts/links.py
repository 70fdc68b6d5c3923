#!/usr/bin/env python3
"""Fails where a page links to a file or heading that is not there."""
import pathlib
import re
import sys

PAGES = [*pathlib.Path(".").glob("*.md"), *pathlib.Path("docs").glob("*.md"),
         pathlib.Path("simulators/README.md")]


def read(page):
    return re.sub(r"^```.*?^```$", "", page.read_text(encoding="utf-8"), flags=re.M | re.S)


def anchors(page):
    for heading in re.findall(r"^#+ (.*)$", read(page), re.M):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


dead = 0
for page in PAGES:
    for link in re.findall(r"\]\(([^)\s]+)\)", re.sub(r"`[^`\n]*`", "", read(page))):
        name, _, anchor = link.partition("#")
        target = page.parent / name if name else page
        if "://" in link or target.exists() and (not anchor or anchor in anchors(target)):
            continue
        dead += 1
        print(f"{page}: {link}")
sys.exit(dead > 0)
