#!/usr/bin/env bash
# What a maintainer runs before a release, an hour on an idle machine: a line a gate, then an exit
# status other than 0 where one failed or could not run. What each said is in build/release-check.
#
#    scripts/release-check.sh [gates...]
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
out=$PWD/build/release-check
mkdir -p "$out"

gate_mudancas() {  # the version is released with its date
  local version
  version=$(sed -n 's/^project(Caixora VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
  grep -qE "^## \[${version//./\\.}\] - [0-9]{4}-[0-9]{2}-[0-9]{2}$" CHANGELOG.md ||
    stop "CHANGELOG.md não diz a data da versão $version."
}
gate_fontes() {  # what is released is what was committed
  [ -z "$(git status --porcelain)" ] || stop "$(git status --short)"
}
gate_verificacoes() { scripts/check.sh; }
gate_testes() { scripts/test.sh; }
gate_medidas() { scripts/bench.sh && scripts/bench_relatorio.sh; }
gate_fuzz() { scripts/fuzz.sh 60; }
# Once here and once from a clone with a blank in its name, under another umask and time zone.
gate_pacote() {
  local clone=$out/outra\ pasta
  scripts/package.sh
  rm -rf "$clone"
  git clone -q . "$clone"
  (umask 077 && cd / && TZ=America/Sao_Paulo "$clone/scripts/package.sh")
  cmp build/pacote/SHA256SUMS "$clone/build/pacote/SHA256SUMS"
  rm -rf "$clone"
}
gate_pacote_usado() { scripts/package-check.sh build/pacote/caixora-*-win64.zip --tudo; }
# The schema and what it refers to, from the package of the makers of the format.
gate_componentes() {
  command -v npm >/dev/null || install_missing npm  # it may come with a Node of another source
  install_missing python3-jsonschema
  (cd "$out" && npm pack --silent @cyclonedx/cyclonedx-library@6.13.1 >/dev/null)
  rm -rf "$out/package"
  tar -xzf "$out"/cyclonedx-cyclonedx-library-*.tgz -C "$out" package/res/schema
  /usr/bin/python3 - "$out/package/res/schema" build/pacote/conteudo/caixora.cdx.json <<'PYTHON'
import json
import pathlib
import sys

import jsonschema

schemas = {path.name: json.loads(path.read_text(encoding="utf-8"))
           for path in pathlib.Path(sys.argv[1]).glob("*.schema.json")}
schema = schemas["bom-1.5.SNAPSHOT.schema.json"]
store = {"http://cyclonedx.org/schema/" + name: each for name, each in schemas.items()}
resolver = jsonschema.RefResolver.from_schema(schema, store=store)
with open(sys.argv[2], encoding="utf-8") as bom:
    jsonschema.Draft7Validator(schema, resolver=resolver).validate(json.load(bom))
PYTHON
}

gates=("$@")
[ ${#gates[@]} -gt 0 ] ||
  gates=(fontes mudancas verificacoes testes medidas fuzz pacote pacote_usado componentes)
for gate in "${gates[@]}"; do
  declare -F "gate_$gate" >/dev/null || stop "Não há: $gate"
done
failed=
for gate in "${gates[@]}"; do
  SECONDS=0
  set +e  # kept inside: a condition would let the gate go on after an error
  (set -e; "gate_$gate") >"$out/$gate.log" 2>&1 </dev/null
  status=$?
  set -e
  word=ok
  [ $status -eq 0 ] || word=falhou
  # Without the packages that it needs a gate has said nothing of the product.
  [ $status -eq 0 ] || ! grep -q '^Faltam pacotes' "$out/$gate.log" || word='não executado'
  [ $status -eq 0 ] || failed=1
  printf '%-14s %-14s %5d s\n' "$gate" "$word" $SECONDS
done
[ -z "$failed" ] || stop "Ver $out/<portão>.log"
