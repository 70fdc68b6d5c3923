# Free Pascal for 64-bit Windows: Debian has the compiler and the sources of its run-time library,
# but not that library built for Windows.
build() {
  need_packages fpc fpc-source
  local units
  units=$kit/fpc-$(fpc -iV)-win64
  [ -e "$units/done" ] || build_run_time "$units"
  mkdir -p "$out"
  compile examples/pascal/pdv.dpr
}
build_probe() { compile tests/languages/provas.dpr; }

# Without the folder of the units the compiler is content with those that it compiled before.
compile() {
  fpc -n -Twin64 -l- -v0ewn -O2 -Fu"$root/bindings/pascal" -Fu"$kit/fpc-$(fpc -iV)-win64" \
    -FU"$out" -FE"$out" "$root/$1"
}

build_run_time() {
  local units=$1 source folder unit
  source=/usr/share/fpcsrc/$(fpc -iV)/rtl
  local options=(-n -Twin64 -l- -v0 -O2 -Sg -FU"$units")
  for folder in inc x86_64 win win64 win/wininc objpas objpas/sysutils objpas/classes; do
    options+=(-Fi"$source/$folder" -Fu"$source/$folder")
  done
  rm -rf "$units"
  mkdir -p "$units"
  for unit in win64/system inc/fpintres objpas/objpas inc/iso7185 inc/ctypes win64/buildrtl; do
    # -Us: this one is the system unit. The many warnings are about the library's own sources.
    fpc "${options[@]}" $([ "$unit" != win64/system ] || echo -Us) "$source/$unit.pp" \
      >"$units/log" 2>&1 || { tail "$units/log"; return 1; }
  done
  touch "$units/done"
}

run() { wine "$out/pdv.exe" "$@"; }
run_probe() { wine "$out/provas.exe"; }
