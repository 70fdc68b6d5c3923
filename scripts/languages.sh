#!/usr/bin/env bash
# Runs the example of each language named, or of all of them, against the simulators in a clean
# checkout, and compares what it printed, left in its journal and had others receive with
# tests/languages. The example is killed on the way: no sale may be left without its one outcome.
# Then the language's binding goes through a list of mishaps and misuse.
#
# scripts/languages/<language>.sh defines build, which makes the example in $out and keeps what it
# fetches in $kit, and run, which runs it in the current folder. One of a binding defines
# build_probe and run_probe as well, for the program that goes through the list.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit

if [ $# -ne 1 ]; then
  [ $# -gt 0 ] || set -- c cpp pascal csharp vb node go ponte
  failed=()
  for language in "$@"; do
    scripts/languages.sh "$language" || failed+=("$language")
  done
  [ ${#failed[@]} -eq 0 ] || { echo "Falharam: ${failed[*]}"; exit 1; }
  exit
fi

# Tests run beside those of the DLL and of other languages: they have a Windows of their own.
[ -z "${bin:-}" ] || export CAIXORA_WINEPREFIX+=-linguagens-$lane WINEPREFIX+=-linguagens-$lane
language=$1
script=scripts/languages/$language.sh
[ -e "$script" ] || stop "Falta $script."
root=$PWD
kit=$root/build/languages/kit
out=$root/build/languages/$language
c=$WINEPREFIX/drive_c
req=$c/Tef_Dial/Req
got=$out/obtido.txt
host=
program=run

install_missing
if [ -z "${bin:-}" ]; then  # a test brings the folder that it was built in
  bin=$root/build/windows/bin
  build windows caixora Caixora_falsa clientorvane_simulador Trevix Email taskkill caixora_host
fi
mkdir -p "$kit" "$out"
: >"$out/stdout" >"$out/stderr"
make_prefix

need_packages() { install_missing "$@"; }

fail() {
  {
    echo "$language: $1"
    tail -n 40 "$out/stdout" "$out/stderr"
  } >&2
  exit 1
}

# Polls until a command succeeds. The limit is for a program that hangs, not for a slow machine.
await() {
  local end=$((SECONDS + 300))
  until "$@" 2>/dev/null; do
    if [ -n "$host" ] && ended 2>/dev/null; then
      "$@" 2>/dev/null || fail "o exemplo terminou antes de: $*"
      return
    fi
    [ $SECONDS -lt $end ] || fail "em vão se esperou: $*"
    sleep 0.05
  done
}

lay_out() {
  make_prefix  # and no program runs, not even the GP
  rm -rf "$WINEPREFIX"/drive_[c-f]/Tef_Dial "$c"/{caixa,Lumetra,Trevix,TrevixLog,Gp}
  mkdir -p "$c"/{caixa,Lumetra,Trevix,Gp} "$req" "$c/Tef_Dial/Resp"
  : >"$c/Tef_Dial/Tef_Dial.exe"
  cp "$bin/clientorvane_simulador.exe" "$c/Lumetra/"
  cp "$bin/Trevix.exe" "$bin/Email.exe" "$c/Trevix/"
  cp "$bin/Caixora.dll" "$c/caixa/"
  printf 'C:\\Trevix\r\nCAMINHO=C:\\Trevix\r\n' >"$c/caixa/ConfigQJ.ini"
}

start_gp() {
  rm -f "$out/gp.log"  # an old one would tell that the new GP is ready
  wine "$c/Lumetra/clientorvane_simulador.exe" STARTAUTO "$@" >"$out/gp.log" 2>&1 </dev/null &
  await grep -q Aguardando "$out/gp.log"
}

# Starts the example as a process group of its own, so that all of it can be killed.
start() {
  set -m
  (
    source "$script"
    cd "$c/caixa"
    $program "$@"
  ) >"$out/stdout" 2>"$out/stderr" </dev/null &
  host=$!
  set +m
}
ended() { ! kill -0 "$host"; }
crash() {
  kill -KILL -- "-$host"
  wait "$host" 2>/dev/null || true
  host=
}

# What a run is compared by: what it printed, its exit status and the journal that it left.
run_example() {
  echo "> exemplo${*:+ $*}"
  start "$@"
  await ended
  local status=0
  wait "$host" || status=$?
  host=
  cat "$out/stdout"
  echo "< $status"
  journal
}
journal() { (cd "$c/caixa" && grep -sH '' diario.txt* || true); }

# What is missing, or is not Windows-1252, makes the text differ; the rest is still to be seen.
ansi() { iconv -f WINDOWS-1252 -t UTF-8 "$@" || true; }

# A request a line, but for what follows its heading.
requests() {
  ansi "$c/Lumetra/Pedidos.txt" |
    sed -zE 's/\r\n/|/g; s/ = /=/g; s/==== [0-9:]*\|/\n/g; s/^\n//; s/\|(261-0.1|800-001)/\n  \1/g'
  echo
}

sell_and_recover() {
  lay_out
  run_example
  run_example --cair
  run_example --retomar
  run_example --retomar
  echo '> pedidos'
  requests
  ansi "$c/Trevix/Trevix_parametros.txt" "$c/Trevix/Email_recebido.txt" | tr -d '\r'
}

# The library is on its second attempt to write the request.
refused_once() { [ "$(grep -ac 'Gerando Arquivo' "$c/Lumetra/Log/Caixora.log")" -ge 2 ]; }

# Killed when the GP has approved and the answer is on its way, then again while the sale cannot be
# undone: the GP works in a folder of its own, and requests reach it only from here.
crash_on_the_way() {
  lay_out
  start_gp --pasta 'C:\Gp'
  start --cair
  await grep -q 999-999 "$req/intpos.001"
  mv "$req/intpos.001" "$c/Gp/Req/"
  await test -e "$c/Gp/Resp/Intpos.001"
  crash
  echo '> queda antes da resposta'
  journal
  mv "$req" "$c/Gp/fora"
  rm -f "$c/Lumetra/Log/Caixora.log"
  start --retomar
  await refused_once
  crash
  mv "$c/Gp/fora" "$req"
  make_prefix
  run_example --retomar
}

# A journal that another language left: what was to be confirmed is confirmed, whatever is undone
# beside it. With one that cannot be read nothing is sold.
inherit_journals() {
  printf '%s\r\n' 'caixora-diario 1' '106;2500;confirmar' '107;4000;desfazer' >"$c/caixa/diario.txt"
  run_example --retomar
  printf '%s\n' 'caixora-diario 1' '108;2000;pronta' >"$c/caixa/diario.txt"
  echo '> diário ilegível'
  run_example --cair >/dev/null
  journal
  echo '> pedidos'
  requests
}

# One sale, its receipt without what differs from run to run.
sell_once() {
  lay_out
  start_gp
  run_example 12.345.678/0001-95 11.222.333/0001-81 12,50 101 | ansi |
    sed -E 's|^[0-9/]{10} [0-9:]{5}|<data>|; s/^NSU: .*/NSU: <nsu>/; s/\r//'
  echo '> pedidos'
  requests
}

# Of an error its kind, when its message has every word of its command from the third on.
mishaps() {
  awk '
    /^> / { count = split($0, words) }
    /^! / {
      kind = "Erro"
      if (match($2, /ValorDivergente|VendaEmAberto|PendenciaAberta|ErroDoPdv|Diario/))
        kind = substr($2, RSTART, RLENGTH)
      else if ($2 ~ /Uso|Argument|Texto|InvalidOperation|EmAndamento/) kind = "Argumento"
      for (i = 5; i <= count; ++i)
        if (index(tolower($0), tolower(words[i])) == 0) kind = "sem " words[i] ": " $0
      $0 = "! " kind
    }
    { sub(/ +$/, ""); print }' "$c/caixa/chamadas.txt"
}

# What a half-written journal left is there too, and is no journal.
suffer_mishaps() {
  lay_out
  cp "$bin/Caixora_falsa.dll" "$c/caixa/Caixora.dll"
  sed -n 's/^> //p' tests/languages/provas.txt >"$c/caixa/comandos.txt"
  echo 'caixora-diario 1' >"$c/caixa/diario.txt.tmp"
  program=run_probe
  run_example | grep '^< '
  mishaps
}

set +e  # kept inside: a condition would let the function go on after an error
(
  set -e
  source "$script"
  build
  ! declare -F build_probe >/dev/null || build_probe
) >"$out/build.log" 2>&1 </dev/null
status=$?
set -e
[ $status -eq 0 ] || { cat "$out/build.log"; fail "não compilou"; }

if grep -q '^simple=1' "$script"; then
  expected=tests/languages/venda.txt
  sell_once >"$got"
else
  expected=tests/languages/pdv.txt
  {
    sell_and_recover
    crash_on_the_way
    inherit_journals
  } >"$got"
fi
diff -u "$expected" "$got" || fail "difere de $expected"
if grep -q '^build_probe()' "$script"; then
  expected=tests/languages/provas.txt
  suffer_mishaps >"$got"
  grep -v '^#' "$expected" | diff -u - "$got" || fail "difere de $expected"
fi
echo "$language: como esperado"
