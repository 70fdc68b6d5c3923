#!/usr/bin/env python3
"""Fails where docs/glossario-do-log.md has other lines than those that src/ writes to the log.

In the glossary a line is code in the first column: its text, "…" for what varies, and " (f)" where
it is a detailed one. Lines whose whole text comes from elsewhere are not in it.
"""
import pathlib
import re
import sys

GLOSSARY = pathlib.Path("docs/glossario-do-log.md")
CALL = re.compile(r"WriteLog\(\s*\{(.*?)\}(, *\s*Detail::kDetailed)?\s*\)", re.S)
LITERAL = re.compile(r'(?:u8)?"((?:[^"\\]|\\.)*)"(?:_ansi)?')
# Where the text stands that a call names instead of holding it, and whether more text follows it;
# None: the text of the request, or of the companion.
NAMED = {
    "variant.entry": ("src/interactive/launcher.cc", r"\.entry = ", False),
    "variant.starting": ("src/interactive/launcher.cc", r"\.starting = ", False),
    "variant.not_running": ("src/interactive/launcher.cc", r"\.not_running = ", False),
    "missing": ("src/interactive/launcher.cc", r"\.companion_missing = ", True),
    "kWaitFailed": ("src/interactive/session.cc", r"kWaitFailed = ", True),
    "src/exchange/answer_file.cc line": ("src/exchange/answer.cc", r"Also::kLogs\w*, ", True),
    "src/exchange/request_record.cc line":
        ("src/exchange/operations.cc", r"(?=\"\[METODO\] )", True),
    "src/interactive/session.cc line": None,
    "exchange.request": None,
}


def entry(text, varies, detailed):
    text = text.replace("\\", "").split('"')[0]
    text = "[METODO] " if text.startswith("[METODO] ") else text
    return (text + "…" if varies else text.rstrip()) + (" (f)" if detailed else "")


def lines_of(path):
    source = path.read_text(encoding="utf-8")
    calls = CALL.findall(source)
    if len(calls) != len(re.findall(r"(?<!void )\bWriteLog\(", source)):
        sys.exit(f"{path}: a call of WriteLog that this script cannot read")
    for pieces, detailed in calls:
        texts = LITERAL.findall(pieces)
        beside = LITERAL.sub("", pieces).split()
        if not beside:
            yield entry("".join(texts), False, detailed)
        elif beside[1:] == ["?", ":"]:  # one or the other
            yield from (entry(text, False, detailed) for text in texts)
        elif LITERAL.match(pieces.lstrip()):
            yield entry(texts[0], True, detailed)
        else:
            yield from named_lines(path, pieces, detailed)


def named_lines(path, pieces, detailed):
    name = re.match(r"[\w.]+", pieces)[0]
    key = name if name in NAMED else f"{path} {name}"
    if key not in NAMED:
        sys.exit(f"{path}: a log line whose text this script does not find: {pieces.strip()}")
    if NAMED[key]:
        other, before, varies = NAMED[key]
        for text in re.findall(before + LITERAL.pattern, pathlib.Path(other).read_text("utf-8")):
            yield entry(text, varies, detailed)


written = {line for path in sorted(pathlib.Path("src").glob("*/*.cc")) for line in lines_of(path)
           if path.name != "log.cc"}
explained = set()
for row in GLOSSARY.read_text(encoding="utf-8").splitlines():
    if row.startswith("| `"):
        explained.update(re.findall("`([^`]+)`", row.split(" | ")[0]))
for line in sorted(written - explained):
    print(f"The glossary lacks: {line}")
for line in sorted(explained - written):
    print(f"The library never writes: {line}")
sys.exit(1 if written != explained else 0)
