//go:build !windows || !amd64

package caixora

func carregar(caminho string) (biblioteca, error) {
	motivo := "existe apenas para programas de 64 bits do Windows (GOOS=windows GOARCH=amd64)"
	return nil, &DLLIndisponivel{DLL: caminho, Motivo: motivo}
}
