#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests: the core natively under
# sanitizers, then again, with the edge and the real DLL, under Wine, then the example of each
# language.
#
#   --sem-linguagens  leaves the examples out
#   --disco-cheio     mounts a small disk (as root) for the one test that fills it, else skipped
#
# Other arguments go to ctest.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
arguments=()
full_disk=
for argument in "$@"; do
  case $argument in
    --sem-linguagens) arguments+=(-LE linguagens) ;;
    --disco-cheio) full_disk=$WINEPREFIX/drive_f ;;
    *) arguments+=("$argument") ;;
  esac
done

install_missing chromium llvm python3 unzip
build native
build windows
make_prefix
if [ -n "$full_disk" ]; then
  mountpoint -q "$full_disk" || mount -t tmpfs -o size=64k caixora-disco-cheio "$full_disk" ||
    stop 'Sem permissão para montar o disco pequeno: repita sem --disco-cheio.'
  trap 'wineserver -k >/dev/null 2>&1 || true; umount -l "$full_disk"' EXIT
fi
# One run, and one count, over both build folders.
printf 'subdirs("native" "windows")\n' >build/CTestTestfile.cmake
# What needs Windows goes one by one, but for the languages, which have two of their own; the native
# tests run beside them. Most of them wait most of the time.
ctest --test-dir build --output-on-failure -j "$(($(nproc) + 1))" "${arguments[@]}"
