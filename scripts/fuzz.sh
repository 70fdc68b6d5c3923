#!/usr/bin/env bash
# Fuzzes each target for a number of seconds (60 by default), one after the other, or the targets
# named: scripts/fuzz.sh 1200 CheckAnswer
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
seconds=${1:-60}
targets=("${@:2}")
[ ${#targets[@]} -gt 0 ] || targets=(CheckAnswer CheckRequest CheckTexts)

install_missing clang libclang-rt-dev
cmake --preset native >/dev/null  # its list of sources may be an old one

# Where an allocation came from costs more to note than the rest of a run.
export ASAN_OPTIONS=malloc_context_size=0

for target in "${targets[@]}"; do
  out=build/fuzz/$target
  mkdir -p "$out/corpus"
  # The words below stand in for comparisons, which would cost half of each run to trace; branches
  # within the standard library tell nothing.
  printf 'fun:_Z%s*\n' St NSt NKSt >"$out/untraced"
  clang++ -std=c++20 -g -O2 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
    -fno-sanitize-coverage=trace-cmp -fsanitize-coverage-ignorelist="$out/untraced" \
    -Isrc -Iinclude -Itests "-DCHECK=$target" \
    -o "$out/fuzz" fuzz/target.cc tests/properties.cc tests/machine.cc \
    $(cat build/native/core_sources.txt)
  # Separators and keys that chance alone would find late.
  tr ' ' '\n' >"$out/words" <<<'"001-000_=_" "009-000_=_" "028-000_=_" "029-001_=_" "030-000_=_" "504-001_=_" "\xac" "|" "CAMINHO=" "DETALHADO" "%%" "\x1a" "\x0d\x0a"'
  sed -i 's/_/ /g' "$out/words"
  echo "== $target, $seconds s"
  "$out/fuzz" -max_total_time="$seconds" -max_len=512 -dict="$out/words" -artifact_prefix="$out/" \
    -print_final_stats=1 "$out/corpus" 2>&1 | tail -n 12
done
