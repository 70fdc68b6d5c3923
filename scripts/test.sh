#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests: the core natively under sanitizers,
# then again, with the edge and the real DLL, under Wine.
source "$(dirname "$0")/lib.sh"
install_missing
build native
build windows
make_prefix
# A disk that is easily full, where mounting is allowed; else that one test is skipped.
if mount -t tmpfs -o size=64k caixora-full "$WINEPREFIX/drive_f" 2>/dev/null; then
  trap 'wineserver -k >/dev/null 2>&1 || true; umount -l "$WINEPREFIX/drive_f"' EXIT
fi
# One run, and one count, over both build folders.
printf 'subdirs("native" "windows")\n' >build/CTestTestfile.cmake
ctest --test-dir build --output-on-failure "$@"
