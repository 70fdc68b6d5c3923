# The bridge: examples/python/pdv_ponte.py, outside Windows, with caixora_host.exe as its child.
# Before it, the bridge's replies to wrong use and, where there is a JDK,
# examples/java/PdvPonte.java.

build() {
  need_packages python3
  # Whoever brings a folder of programs has built them.
  [ -e "$bin/caixora_host.exe" ] || cmake --build --preset windows --target caixora_host -- --quiet
}

run() {
  local bridge=(wine "$bin/caixora_host.exe" --dll Caixora.dll --ponte)
  if [ $# -eq 0 ]; then
    python3 "$root/scripts/languages/wrong_use.py" wine "$bin/caixora_host.exe" --ponte || return
    if command -v java >/dev/null; then
      run_java "${bridge[@]}" || return
    fi
  fi
  python3 "$root/examples/python/pdv_ponte.py" "$@" "${bridge[@]}"
}

# It must print, and have others receive, what the other examples do; that is put aside for them.
run_java() {
  local folder=$WINEPREFIX/drive_c expected=$root/tests/languages/pdv.txt
  java -Dfile.encoding=UTF-8 "$root/examples/java/PdvPonte.java" "$@" >"$out/java.txt" || return
  sed '/^< /Q; 1d' "$expected" | diff - "$out/java.txt" >&2 || return
  iconv -f WINDOWS-1252 -t UTF-8 "$folder/Lumetra/Pedidos.txt" |
    sed -nE 's/\r//; s/^000-000 = *//p; s/^001-000 = //p' | paste -sd' ' |
    diff <(echo 'ATV 1 CRT 101 CNF 101 CRT 102 CRT 103 CNF 103 CRT 104 NCN 104') - >&2 || return
  rm "$folder/Lumetra/Pedidos.txt" "$folder"/Trevix/{Trevix_parametros,Email_recebido}.txt
}
