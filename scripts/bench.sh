#!/usr/bin/env bash
# Measures the library against floors in plain C, under Wine; see bench/bench.cc.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
install_missing
build windows
make_prefix
c=$WINEPREFIX/drive_c
rm -rf "$c/bench" "$c/Lumetra" "$c/Tef_Dial"
mkdir -p "$c/bench" "$c/Lumetra" "$c/Tef_Dial/Req" "$c/Tef_Dial/Resp"
cp build/windows/bin/clientorvane_simulador.exe "$c/Lumetra/"
: >"$c/Tef_Dial/Tef_Dial.exe"
bin=$PWD/build/windows/bin
cd "$c/bench"
wine "$c/Lumetra/clientorvane_simulador.exe" STARTAUTO >/dev/null 2>&1 </dev/null &
sleep 2
wine "$bin/bench.exe"
