module caixora

go 1.19
