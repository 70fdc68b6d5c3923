module pdv

go 1.19

require caixora v0.0.0

replace caixora => ../../bindings/go
