# Shared by the other scripts, which run from the project's folder. They end where this part is
# missing ("|| exit"), which takes "set -e" away from the lines here: these end by themselves.
set -euo pipefail
project=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")") || exit
# A Windows of our own, never the one that the user's WINEPREFIX names: folders there are deleted.
CAIXORA_WINEPREFIX=$(realpath -m -- "${CAIXORA_WINEPREFIX:-$project/build/wineprefix}") || exit
export CAIXORA_WINEPREFIX WINEPREFIX=$CAIXORA_WINEPREFIX
export WINEDEBUG=-all
# No dialogs about missing parts, no display even where there is one, and our taskkill instead of
# Wine's, which refuses /T.
export WINEDLLOVERRIDES='mscoree,mshtml,winex11.drv,winewayland.drv=;winemenubuilder.exe=;taskkill.exe=n'
# Accented arguments reach Windows programs only from a UTF-8 locale.
export LC_ALL=C.UTF-8
cd "$project" || exit

stop() {
  echo "$1" >&2
  exit 1
}

# Debian's wine finds no 64-bit programs without wine64; others bring them along.
has_wine() {
  command -v wine wineserver >/dev/null &&
    { [ -e /usr/lib/wine/wine64 ] || [ ! -e /usr/lib/wine/wineapploader ]; }
}

has_package() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

install_missing() {  # [packages...] beside those of every build
  local packages=() package
  command -v cmake >/dev/null || packages+=(cmake)
  command -v ninja >/dev/null || packages+=(ninja-build)
  command -v g++ >/dev/null || packages+=(g++)
  command -v x86_64-w64-mingw32-g++-posix >/dev/null || packages+=(g++-mingw-w64-x86-64-posix)
  has_wine || packages+=(wine wine64)
  [ -e /usr/src/googletest/CMakeLists.txt ] || packages+=(googletest)
  [ -e /usr/include/CLI/CLI.hpp ] || packages+=(libcli11-dev)
  [ -e /usr/include/nlohmann/json.hpp ] || packages+=(nlohmann-json3-dev)
  for package in "$@"; do
    has_package "$package" || packages+=("$package")
  done
  [ ${#packages[@]} -gt 0 ] || return 0

  local as_root=(env DEBIAN_FRONTEND=noninteractive)
  [ "$(id -u)" -eq 0 ] || as_root=(sudo "${as_root[@]}")
  echo "Instalando: ${packages[*]}"
  # Lists that cannot be brought up to date may still name the packages. One test at a time: the
  # installer does not wait for another.
  type -P apt-get >/dev/null && type -P "${as_root[0]}" >/dev/null &&
    { flock "$project" "${as_root[@]}" apt-get update -qq || true; } &&
    flock "$project" "${as_root[@]}" apt-get install -y -qq --no-install-recommends \
      "${packages[@]}" >/dev/null ||
    stop "Faltam pacotes, que só o administrador da máquina pode instalar. Peça a ele:
  apt-get update && apt-get install --no-install-recommends ${packages[*]}"
}

build() {  # preset [targets...]
  # What was built before its folder was moved or copied names the old one everywhere.
  grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "build/$1/CMakeCache.txt" || rm -rf "build/$1"
  [ -e "build/$1/build.ninja" ] || cmake --preset "$1" >/dev/null
  # Tests that run side by side all come by here.
  flock "build/$1" cmake --build --preset "$1" ${2:+--target "${@:2}"} -- --quiet |
    sed '/^ninja: no work to do\.$/d'
}

# Makes or takes up the Windows, with drives C: to F:, and ends what an earlier run left in it. From
# here on "wine" starts programs as administrator. The server stays up between programs (each start
# then takes a fraction of the time) until this script ends.
make_prefix() {
  # Ours has this file, which is empty until Windows is complete.
  local ours=$WINEPREFIX/.caixora drive
  if [ -e "$WINEPREFIX" ] && [ ! -e "$ours" ] && ! rmdir "$WINEPREFIX" 2>/dev/null; then
    stop "$WINEPREFIX não foi feita por estes scripts, que apagam pastas dentro dela.
Apague-a, ou indique outra em CAIXORA_WINEPREFIX."
  fi
  build windows taskkill administrador

  trap 'wineserver -k >/dev/null 2>&1 || true' EXIT
  wineserver -k >/dev/null 2>&1 || true
  if [ ! -s "$ours" ]; then
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    : >"$ours"
    { wineboot -i && wineserver -w; } >"$WINEPREFIX/wineboot.log" 2>&1 </dev/null ||
      stop "O Wine não preparou $WINEPREFIX:
$(cat "$WINEPREFIX/wineboot.log")"
    echo completa >"$ours"
  fi
  for drive in d e f; do
    mkdir -p "$WINEPREFIX/drive_$drive"
    ln -sfn "../drive_$drive" "$WINEPREFIX/dosdevices/$drive:"
  done
  cp build/windows/bin/{taskkill,administrador}.exe "$WINEPREFIX/drive_c/windows/system32/"
  export CAIXORA_WINE=${CAIXORA_WINE:-$(command -v wine)}
  [[ $PATH == "$project/scripts/administrador:"* ]] || PATH=$project/scripts/administrador:$PATH
  # The first program starts services, which would keep this script's output open after its end.
  { wineserver -p && wine cmd /c exit; } >/dev/null 2>&1 </dev/null ||
    stop "O Wine não executa programas em $WINEPREFIX."
}
