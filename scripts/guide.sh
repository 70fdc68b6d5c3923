#!/usr/bin/env bash
# Fills the blocks of the guide with code of the examples, so that it shows what runs:
#
#    <!-- trecho: examples/go/main.go abrir venda -->
#    <!-- fim -->
#
# A region of an example begins at a comment of its own "trecho: venda" and goes to the next one
# "fim do trecho"; its indentation is taken away. Several regions, and the parts of one that is in
# several places, are set apart by an empty line. The table of failures comes from tools/falhas.tsv:
#
#    <!-- tabela: falhas -->
#    <!-- fim -->
#
# scripts/guide.sh --confere writes nothing, and fails where the guide differs from the examples.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit

guide=docs/guia.md
case "$*" in
  '' | --confere) ;;
  *) stop 'Uso: scripts/guide.sh [--confere]' ;;
esac
filled=$(mktemp)
trap 'rm -f "$filled"' EXIT

python3 - "$guide" >"$filled" <<'PYTHON'
import re
import sys
import textwrap

LANGUAGES = {"cc": "cpp", "cs": "csharp", "dpr": "pascal", "js": "js", "py": "python"}
BEGIN = re.compile(r"\s*(?://|'|#|/\*) trecho: (\S+)(?: \*/)?")
END = re.compile(r"\s*(?://|'|#|/\*) fim do trecho(?: \*/)?")
BLOCK = re.compile(r"<!-- trecho: (\S+) (.+) -->")
FAILURES = "<!-- tabela: falhas -->"


def read(path):
    with open(path, encoding="utf-8-sig") as file:
        return file.read().splitlines()


def regions(path):
    """{name: [its parts]}"""
    found, lines = {}, None
    for number, line in enumerate(read(path), 1):
        if begin := BEGIN.fullmatch(line):
            if lines is not None:
                sys.exit(f"{path}:{number}: a region within another")
            lines = []
            found.setdefault(begin[1], []).append(lines)
        elif END.fullmatch(line):
            if not lines:
                sys.exit(f"{path}:{number}: the end of no region, or of an empty one")
            lines = None
        elif lines is not None:
            lines.append(line)
    if lines is not None:
        sys.exit(f"{path}: a region without an end")
    return {name: [textwrap.dedent("\n".join(part)).strip("\n") for part in parts]
            for name, parts in found.items()}


def block(path, names):
    found = regions(path)
    missing = [name for name in names if name not in found]
    if missing:
        sys.exit(f"{path}: no region {', '.join(missing)}")
    extension = path.rsplit(".", 1)[1]
    code = "\n\n".join(part for name in names for part in found[name])
    return f"```{LANGUAGES.get(extension, extension)}\n{code}\n```"


def code(patterns):
    """What the host or the log says, as code; a "*" is any further text."""
    return " ou ".join(f"`{text.removesuffix('*')}{'…' if text.endswith('*') else ''}`"
                       for text in patterns)


def log_cell(cell):
    patterns = [text for text in cell.split(" | ") if text]
    last = [text.removeprefix("fim: ") for text in patterns if text.startswith("fim: ")]
    said = code(text for text in patterns if not text.startswith("fim: "))
    return f"{code(last)}, e nada mais" if last else said


def prose(text):
    return re.sub(r"([|<*_])", r"\\\1", text)


def failures(path):
    rows = [line.split("\t") for line in read(path)[1:]]
    table = ["| O PDV recebe | O log diz | Significado | O que fazer |", "|---|---|---|---|"]
    for result, log, meaning, remedy in rows:
        table.append(f"| {code([result])} | {log_cell(log)} | {prose(meaning)} | {prose(remedy)} |")
    return "\n".join(table)


skipping = False
for line in read(sys.argv[1]):
    filling = BLOCK.fullmatch(line)
    if skipping and (filling or line == FAILURES or line.startswith("## ")):
        sys.exit(f"the guide has a block without its <!-- fim --> before: {line}")
    if line == "<!-- fim -->":
        if not skipping:
            sys.exit("the guide has a <!-- fim --> without its block")
        skipping = False
    if not skipping:
        print(line)
    if filling:
        print(block(filling[1], filling[2].split()))
        skipping = True
    elif line == FAILURES:
        print(failures("tools/falhas.tsv"))
        skipping = True
    elif line.startswith(("<!-- trecho", "<!-- tabela")):
        sys.exit(f"the guide names no file and region, nor a table: {line}")
if skipping:
    sys.exit("the guide has a block without its <!-- fim -->")
PYTHON

if [ "${1:-}" = --confere ]; then
  diff -u "$guide" "$filled" ||
    stop 'O guia difere dos exemplos ou da tabela de falhas; para acertá-lo: scripts/guide.sh'
else
  cmp -s "$guide" "$filled" || cat "$filled" >"$guide"
fi
