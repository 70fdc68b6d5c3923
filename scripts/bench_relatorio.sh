#!/usr/bin/env bash
# Measures how long the report takes for a detailed log of 10 MiB, the size at which logs are set
# aside; fails above two seconds.
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
install_missing
[ -e build/release/build.ninja ] ||
  cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DCAIXORA_BUILD_TESTS=OFF >/dev/null
cmake --build build/release --target relatorio -- --quiet
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
tests/relatorio/dia.py --detalhado --mib 10 >"$folder/Caixora.log"
python3 - build/release/bin/relatorio "$folder" <<'PYTHON'
import resource
import subprocess
import sys
import time

program, folder = sys.argv[1:]
best = 1e9
for _ in range(5):
    begin = time.monotonic()
    subprocess.run([program, "--saida", folder + "/p.html", folder + "/Caixora.log"], check=True,
                   stdout=subprocess.DEVNULL)
    best = min(best, time.monotonic() - begin)
memory = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024
print(f"relatorio, 10 MiB: {best:.2f} s, {memory:.0f} MiB de memória")
sys.exit(best > 2)
PYTHON
