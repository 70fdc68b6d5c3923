#!/usr/bin/env bash
# Static checks: formatting, clang-tidy on the pure core, cppcheck on the rest. Warnings are errors in
# every build anyway.
source "$(dirname "$0")/lib.sh"
install_missing clang-format clang-tidy cppcheck

echo '== clang-format (to mend: clang-format -i <file>)'
# Golden tables in tests keep their own line lengths, so only the helpers there are checked.
clang-format --dry-run --Werror src/*/*.cc src/*/*.h simulators/*.cc simulators/*.h tools/*.cc \
  examples/*.c bench/*.c bench/*.h fuzz/*.cc tests/fake_machine.cc tests/fake_machine.h

echo '== clang-tidy'
cmake --preset native -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
core=$(sed -n '/^add_library(caixora_core/,/)/s/^ *\(src[^ )]*\).*/\1/p' CMakeLists.txt)
clang-tidy -p build/native --quiet $core 2>/dev/null

echo '== cppcheck'
rest=$(comm -23 <(ls src/*/*.cc simulators/*.cc tools/*.cc examples/*.c bench/*.cc bench/*.c | sort) <(sort <<<"$core"))
cppcheck --quiet --std=c++20 --platform=win64 --enable=warning,performance,portability \
  --inline-suppr --error-exitcode=1 -Isrc -Iinclude $rest
echo '== imports of the DLL: system libraries alone'
build windows caixora
x86_64-w64-mingw32-objdump -p build/windows/bin/Caixora.dll | sed -n 's/.*DLL Name: //p' |
  { ! grep -viE '^(advapi32|kernel32|msvcrt|oleaut32|shell32|version)\.dll$'; }
echo 'Nothing found.'
