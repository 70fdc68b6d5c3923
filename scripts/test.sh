#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests: the core natively under sanitizers,
# then again, with the edge and the real DLL, under Wine.
source "$(dirname "$0")/lib.sh"
install_missing
build native
build windows
make_prefix
# One run, and one count, over both build folders.
printf 'subdirs("native" "windows")\n' >build/CTestTestfile.cmake
ctest --test-dir build --output-on-failure "$@"
