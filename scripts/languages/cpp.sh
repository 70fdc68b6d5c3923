# C++: bindings/cpp/caixora.hpp and examples/cpp/pdv.cc, cross-built with MinGW-w64.

build() {
  need_packages g++-mingw-w64-x86-64-posix
  compile pdv.exe examples/cpp/pdv.cc
}
build_probe() { compile provas.exe tests/languages/provas.cc; }

compile() {  # result in $out, source
  local header=$root/bindings/cpp/caixora.hpp source=$root/$2 exe=$out/$1
  if [ "$exe" -nt "$source" ] && [ "$exe" -nt "$header" ] &&
    [ "$exe" -nt "$root/include/caixora.h" ]; then
    return
  fi
  mkdir -p "$out"
  x86_64-w64-mingw32-g++-posix -std=c++20 -O1 -Wall -Wextra -Wpedantic -Wconversion -Wshadow \
    -Werror -static -I"$root/include" -I"$root/bindings/cpp" "$source" -o "$exe" -loleaut32
}

run() { wine "$out/pdv.exe" "$@"; }
run_probe() { wine "$out/provas.exe"; }
