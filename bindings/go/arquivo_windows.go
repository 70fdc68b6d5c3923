package caixora

import (
	"os"
	"syscall"
	"unsafe"
)

var moveFileEx = syscall.NewLazyDLL("kernel32.dll").NewProc("MoveFileExW")

// substituir troca o arquivo de uma vez e só volta com a troca no disco, o que os.Rename não
// promete.
func substituir(novo, caminho string) error {
	const substituirExistente, esperarODisco = 0x1, 0x8
	de, err := syscall.UTF16PtrFromString(novo)
	if err != nil {
		return err
	}
	para, err := syscall.UTF16PtrFromString(caminho)
	if err != nil {
		return err
	}
	trocou, _, erro := moveFileEx.Call(uintptr(unsafe.Pointer(de)), uintptr(unsafe.Pointer(para)),
		substituirExistente|esperarODisco)
	if trocou == 0 {
		return &os.LinkError{Op: "MoveFileEx", Old: novo, New: caminho, Err: erro}
	}
	return nil
}
