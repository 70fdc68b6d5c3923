#!/usr/bin/env bash
# Runs the commands of the guide in a checkout with the simulators, in the guide's order, and
# compares their exit statuses: 0, or what a comment before their block says, as
# "<!-- saídas: 1 0 -->". What another test runs already is listed below, with the file that must
# name it.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit

elsewhere=(
  'simuladores\instalar_simuladores.cmd|scripts/package-check.sh|instalar_simuladores.cmd'
)

install_missing
if [ -z "${bin:-}" ]; then  # a test brings the folder that it was built in
  bin=$PWD/build/windows/bin
  build windows caixora caixora_host clientorvane_simulador Trevix Email
fi
make_prefix
c=$WINEPREFIX/drive_c
out=$(mktemp -d)
trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$out"' EXIT
rm -rf "$WINEPREFIX"/drive_[c-f]/Tef_Dial "$c"/{caixa,Lumetra,Trevix,TrevixLog}
mkdir -p "$c"/caixa "$c"/{Lumetra,Tef_Dial,Trevix}/{Req,Resp}
: >"$c/Tef_Dial/Tef_Dial.exe"
cp "$bin"/{Caixora.dll,caixora_host.exe} "$c/caixa/"
cp "$bin/clientorvane_simulador.exe" "$c/Lumetra/"
cp "$bin"/{Trevix,Email}.exe "$c/Trevix/"
printf 'C:\\Trevix\r\nCAMINHO=C:\\Trevix\r\n' >"$c/caixa/ConfigQJ.ini"

run() {  # language of the block, command
  case $1:$2 in
    cmd:cd\ *) ;;
    cmd:caixora_host\ *) (cd "$c/caixa" && wine cmd /c "$2") </dev/null ;;
    cmd:C:\\Lumetra\\clientorvane_simulador\ *)  # is told to end by a key
      wine taskkill /f /im clientorvane_simulador.exe </dev/null || true
      (cd "$c/caixa" && wine cmd /c "$2") < <(printf q)
      ;;
    *) return 255 ;;
  esac
}

known_elsewhere() {
  local entry command file text
  for entry in "${elsewhere[@]}"; do
    IFS='|' read -r command file text <<<"$entry"
    [ "$command" != "$1" ] || { grep -qF -- "$text" "$file" && return; }
  done
  return 1
}

failed=0 count=0
declare -A compilers=()  # beside the rest, which mostly waits
check() {  # command, status, expected, what it said
  count=$((count + 1))
  [ "$2" -ne "$3" ] || return 0
  failed=1
  echo "docs/guia.md: $1"
  if [ "$2" -eq 255 ]; then
    echo '  não é executado por nenhum teste'
  else
    echo "  saiu com $2, e não $3:"
    sed 's/^/  /' "$4"
  fi
}

# Language, expected status, command.
while IFS=$'\t' read -r language expected command; do
  known_elsewhere "$command" && continue
  if [ "$language" = sh ]; then
    bash -c "${command/ -o / -o $out/}" >"$out/${#compilers[@]}" 2>&1 </dev/null &
    compilers[$!]="$out/${#compilers[@]}|$command"
    continue
  fi
  status=0
  run "$language" "$command" >"$out/said" 2>&1 || status=$?
  check "$command" $status "$expected" "$out/said"
done < <(awk '
  /^<!-- saídas: / { count = split($0, statuses, " ") }
  /^```(cmd|sh)$/ { language = substr($0, 4); line = 0; next }
  /^```/ { if (language != "") count = 0; language = ""; next }
  language != "" { ++line; print language "\t" (count > line + 2 ? statuses[line + 2] : 0) "\t" $0 }
' docs/guia.md)
for compiler in "${!compilers[@]}"; do
  status=0
  wait "$compiler" || status=$?
  check "${compilers[$compiler]#*|}" $status 0 "${compilers[$compiler]%%|*}"
done
[ $count -gt 0 ] || stop 'docs/guia.md não tem comandos'
[ $failed -eq 0 ] || exit 1
echo "docs/guia.md: $count comandos, como esperado"
