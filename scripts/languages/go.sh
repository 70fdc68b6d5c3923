# The example PDV in Go. Its modules have no dependencies: nothing is fetched but Debian's compiler.

build() {
  need_packages golang-go
  (
    cd "$root/examples/go"
    export GOOS=windows GOARCH=amd64 GOFLAGS=-mod=mod GOPROXY=off
    export GOCACHE=$kit/go-cache GOPATH=$kit/go
    GOOS='' GOARCH='' go test caixora
    mkdir -p "$out"
    go vet caixora .
    go build -trimpath -o "$out/pdv.exe" .
  )
}

run() { wine "$out/pdv.exe" "$@"; }
