#!/usr/bin/env bash
# Static checks: formatting, clang-tidy on the core and the Windows edge, cppcheck on the rest, the
# language as Microsoft's compilers take it, what the DLL imports, the public header by itself.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
install_missing clang clang-format clang-tidy cppcheck

echo '== clang-format (to mend: clang-format -i <file>)'
git ls-files '*.cc' '*.h' '*.hpp' '*.c' | xargs clang-format --dry-run --Werror

for preset in native windows; do
  cmake --preset $preset -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
done
mapfile -t core <build/native/core_sources.txt
mapfile -t exports <build/native/export_sources.txt
mapfile -t edge < <(ls src/windows/*.cc)
gcc_folder=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")
# clang does not find the headers of a GCC whose folder names its thread model.
mingw=(--target=x86_64-w64-mingw32 -isystem "$gcc_folder/include/c++"
  -isystem "$gcc_folder/include/c++/x86_64-w64-mingw32")

# Runs the command once a file, side by side; shows what it said where it failed.
each() {
  printf '%s\0' "${files[@]}" |
    xargs -0 -P "$(nproc)" -I{} bash -c 'said=$("$@" 2>&1) || { echo "$said"; exit 1; }' each "$@" {}
}

echo '== clang-tidy: core'
files=("${core[@]}" "${exports[@]}")
each clang-tidy -p build/native --quiet
echo '== clang-tidy: edge'
files=("${edge[@]}")
each clang-tidy -p build/windows --quiet "${mingw[@]/#/--extra-arg=}"

echo "== the language as clang takes it in Microsoft's mode, over the same headers"
# Which expect to be told who compiles them. runtime.cc is for GCC's run-time alone.
mapfile -t known < <(clang++ "${mingw[0]}" -std=c++20 -dM -E -x c++ /dev/null |
  sed -n 's/^#define \(__GCC_ATOMIC[^ ]*\) \(.*\)/-D\1=\2/p')
files=("${core[@]}" "${exports[@]}" "${edge[@]/src\/windows\/runtime.cc/src/windows/file.cc}")
each clang++ "${mingw[@]}" "${known[@]}" -D__GNUC__=12 -D__STRICT_ANSI__ -fms-extensions \
  -fms-compatibility -fms-compatibility-version=19.30 -fdelayed-template-parsing -std=c++20 \
  -fsyntax-only -Wall -Wextra -Werror -Isrc -Iinclude

echo '== cppcheck'
cppcheck --quiet --std=c++20 --platform=win64 --enable=warning,performance,portability \
  --inline-suppr --error-exitcode=1 -j "$(nproc)" -I. -Isrc -Iinclude -Ibindings/cpp \
  simulators/*.cc tools/*.cc examples/*.c bench/*.cc bench/*.c

echo '== public header: ASCII, C and C++ by itself, refused by 32-bit compilers'
if LC_ALL=C grep -n '[^ -~]' include/caixora.h; then exit 1; fi
for language in c11 c++20; do
  x86_64-w64-mingw32-g++-posix -x "${language%%[0-9]*}" -std=$language -pedantic-errors -Wall -Werror \
    -fsyntax-only include/caixora.h
done
{ clang --target=i686-w64-mingw32 -isystem /usr/x86_64-w64-mingw32/include -fsyntax-only -x c \
  include/caixora.h || true; } 2>&1 | grep -q 'error: "Caixora.dll is for 64-bit hosts'

echo '== the guide shows the examples as they are, its glossary every line of the log; no dead link'
scripts/guide.sh --confere
scripts/glossary.py
scripts/links.py

echo '== imports of the DLL: system libraries alone'
build windows caixora
x86_64-w64-mingw32-objdump -p build/windows/bin/Caixora.dll | sed -n 's/.*DLL Name: //p' |
  { ! grep -viE '^(advapi32|kernel32|msvcrt|oleaut32|shell32|version)\.dll$'; }
echo 'Nothing found.'
