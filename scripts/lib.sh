# Shared by the other scripts; they run from the project's folder.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Accented arguments reach Windows programs only from a UTF-8 locale.
export LC_ALL=C.UTF-8
export WINEPREFIX=${WINEPREFIX:-$PWD/build/wineprefix}
export WINEDEBUG=-all
# No dialogs about missing parts, and our taskkill instead of Wine's, which refuses /T.
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=;taskkill.exe=n'

install_missing() {
  local packages=()
  command -v cmake >/dev/null || packages+=(cmake)
  command -v ninja >/dev/null || packages+=(ninja-build)
  command -v g++ >/dev/null || packages+=(g++)
  command -v x86_64-w64-mingw32-g++-posix >/dev/null || packages+=(g++-mingw-w64-x86-64-posix)
  command -v wine >/dev/null && [ -e /usr/lib/wine/wine64 ] || packages+=(wine wine64)
  [ -e /usr/src/googletest/CMakeLists.txt ] || packages+=(googletest)
  for package in "$@"; do
    dpkg -s "$package" >/dev/null 2>&1 || packages+=("$package")
  done
  [ ${#packages[@]} -eq 0 ] && return
  local sudo=
  [ "$(id -u)" -eq 0 ] || sudo=sudo
  echo "Installing: ${packages[*]}"
  $sudo apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    "${packages[@]}" >/dev/null
}

build() {  # preset [targets...]
  [ -e "build/$1/build.ninja" ] || cmake --preset "$1" >/dev/null
  cmake --build --preset "$1" ${2:+--target "${@:2}"} -- --quiet
}

# A Windows of our own, with drives C: to F: and the taskkill that the library needs. Its server stays
# up between programs (each start then takes a fraction of the time) until this script ends.
make_prefix() {
  trap 'wineserver -k >/dev/null 2>&1 || true' EXIT
  if [ ! -e "$WINEPREFIX/system.reg" ]; then

    mkdir -p "$WINEPREFIX"
    wineboot -i
    wineserver -w
  fi >/dev/null 2>&1 </dev/null
  local drive
  for drive in d e f; do
    mkdir -p "$WINEPREFIX/drive_$drive"
    ln -sfn "../drive_$drive" "$WINEPREFIX/dosdevices/$drive:"
  done
  cp build/windows/bin/taskkill.exe "$WINEPREFIX/drive_c/windows/system32/taskkill.exe"
  # The first program starts services, which would keep this script's output open after its end.
  { wineserver -p && wine cmd /c exit; } >/dev/null 2>&1 </dev/null || true
}
