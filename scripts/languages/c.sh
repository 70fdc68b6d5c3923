# C: examples/venda.c, cross-built with MinGW-w64. It makes one sale and confirms it; there is no
# journal, so --cair and --retomar do not apply.
simple=1

build() {
  need_packages gcc-mingw-w64-x86-64-posix
  local source=$root/examples/venda.c exe=$out/venda.exe
  if [ "$exe" -nt "$source" ] && [ "$exe" -nt "$root/include/caixora.h" ]; then
    return
  fi
  mkdir -p "$out"
  x86_64-w64-mingw32-gcc-posix -std=c11 -O1 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \
    -static -I"$root/include" "$source" -o "$exe" -loleaut32
}

run() { wine "$out/venda.exe" "$@"; }
