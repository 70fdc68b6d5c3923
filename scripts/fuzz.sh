#!/usr/bin/env bash
# Fuzzes each target for a number of seconds (60 by default), one after the other, or the targets
# named: scripts/fuzz.sh 1200 CheckAnswer
source "$(dirname "$0")/lib.sh"
seconds=${1:-60}
targets=("${@:2}")
[ ${#targets[@]} -gt 0 ] || targets=(CheckAnswer CheckRequest CheckTexts)

install_missing clang-14 libclang-rt-14-dev

for target in "${targets[@]}"; do
  out=build/fuzz/$target
  mkdir -p "$out/corpus"
  clang++-14 -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
    -Isrc -Iinclude -Itests "-DCHECK=$target" -o "$out/fuzz" fuzz/target.cc tests/properties.cc \
    tests/fake_machine.cc $(sed -n '/^add_library(caixora_core/,/)/s/^ *\(src[^ )]*\).*/\1/p' CMakeLists.txt)
  # Separators and keys that chance alone would find late.
  tr ' ' '\n' >"$out/words" <<<'"001-000_=_" "009-000_=_" "028-000_=_" "029-001_=_" "030-000_=_" "504-001_=_" "\xac" "|" "CAMINHO=" "DETALHADO" "%%" "\x1a" "\x0d\x0a"'
  sed -i 's/_/ /g' "$out/words"
  echo "== $target, $seconds s"
  "$out/fuzz" -max_total_time="$seconds" -max_len=8192 -dict="$out/words" -artifact_prefix="$out/" \
    -print_final_stats=1 "$out/corpus" 2>&1 | tail -n 12
done
