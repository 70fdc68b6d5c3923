# The example PDV in Go. Its modules have no dependencies: nothing is fetched but Debian's compiler.

build() {
  need_packages golang-go
  mkdir -p "$out"
  go_tool test caixora
  GOOS=windows GOARCH=amd64 go_tool vet caixora .
  GOOS=windows GOARCH=amd64 go_tool build -trimpath -o "$out/pdv.exe" .
}
build_probe() {
  GOOS=windows GOARCH=amd64 go_tool vet ../../tests/languages/provas.go
  GOOS=windows GOARCH=amd64 go_tool build -o "$out/provas.exe" ../../tests/languages/provas.go
}

go_tool() {
  (
    cd "$root/examples/go"
    export GOFLAGS=-mod=mod GOPROXY=off GOCACHE=$kit/go-cache GOPATH=$kit/go
    go "$@"
  )
}

run() { wine "$out/pdv.exe" "$@"; }
run_probe() { wine "$out/provas.exe"; }
