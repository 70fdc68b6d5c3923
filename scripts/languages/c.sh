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

# Through a file: the services and the GP that it starts would hold a pipe open for ever. With the
# GP closed the first sale starts it and is refused before anything is sent: only that is repeated.
run() {
  local status attempt
  for attempt in 1 2; do
    status=0
    wine "$out/venda.exe" 12.345.678/0001-95 11.222.333/0001-81 12,50 101 \
      >"$out/stdout" 2>&1 </dev/null || status=$?
    LC_ALL=C grep -q '^GP N.O ATIVO' "$out/stdout" || break
    sleep 2
  done
  iconv -f WINDOWS-1252 -t UTF-8 "$out/stdout"
  return $status
}
