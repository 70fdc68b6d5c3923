#!/usr/bin/env bash
# Installs what is missing, builds, and runs a credit sale through the real DLL against the
# simulated GP; with the argument "interativo", an interactive flow with the simulated companion
# instead.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
[ $# -eq 0 ] || [ "$*" = interativo ] || stop 'Uso: scripts/demo.sh [interativo]'
install_missing
build windows caixora clientorvane_simulador Trevix Email caixora_host
make_prefix

c=$WINEPREFIX/drive_c
bin=$PWD/build/windows/bin
rm -rf "$WINEPREFIX"/drive_[c-f]/Tef_Dial "$c"/{caixa,Lumetra,Trevix}
mkdir -p "$c/caixa" "$c/Lumetra" "$c/Tef_Dial/Req" "$c/Tef_Dial/Resp" "$c/Trevix"
cp "$bin/Caixora.dll" "$bin/caixora_host.exe" "$c/caixa/"
cd "$c/caixa"

if [ "${1:-}" = interativo ]; then
  cp "$bin/Trevix.exe" "$bin/Email.exe" "$c/Trevix/"
  printf 'CAMINHO=C:\\Trevix\r\n' >ConfigQJ.ini
  echo '== Fluxo interativo: duas perguntas, respondidas com 3 e 1'
  wine caixora_host.exe Fluxo 20 11.222.333/0001-81 1 "" 12,50 000545 20210325 009 652 7 "" 3 1
  echo '== Registro recebido pelo programa de envio (Email.exe)'
  cat "$c/Trevix/Email_recebido.txt"
  exit
fi

cp "$bin/clientorvane_simulador.exe" "$c/Lumetra/"
: >"$c/Tef_Dial/Tef_Dial.exe"
echo '== GP parado: a biblioteca o inicia e pede nova tentativa'
wine caixora_host.exe Atv 12.345.678/0001-95 11.222.333/0001-81 1 1 || true
echo '== Venda de R$ 12,50 no crédito à vista, depois confirmada'
wine caixora_host.exe VendeCreditoVista 12.345.678/0001-95 11.222.333/0001-81 12,50 17 1 \
  + Confirmar 12.345.678/0001-95 11.222.333/0001-81 17
echo '== Pedidos que o GP recebeu'
iconv -f WINDOWS-1252 -t UTF-8 "$c/Lumetra/Pedidos.txt"
echo '== Log da biblioteca'
iconv -f WINDOWS-1252 -t UTF-8 "$c/Lumetra/Log/Caixora.log"
echo
