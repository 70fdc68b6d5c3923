//go:build windows && amd64

package caixora

import (
	"errors"
	"runtime"
	"syscall"
	"unsafe"
)

// funcoes são as que o pacote usa. Todas são procuradas ao carregar: descobrir que falta o
// Desfazimento depois de uma venda seria tarde.
var funcoes = []string{
	"VendeCredito", "VendeCreditoVista", "VendeCreditoParcLoja", "VendeCreditoParcAdm",
	"VendeDebito", "VendeDebitoAVista", "MenuPrivate", "VendeCarteiraDigitalPix", "ParceleMais",
	"VendeFrotaCompleto", "LinkPagamento", "ListarLinkPagamentoPago", "ManutencaoLinkPagamento",
	"Confirmar", "Desfazimento", "Cancelar", "Reimpressao", "ReimpressaoDireto", "Adm", "Relatorio",
	"RecargaCelular", "Atv", "SolicitarCPF", "SolicitarCNPJ", "SolicitarDocumento", "Teste",
	"IniciaFuncaoQJInterativo", "AguardaFuncaoQJInterativo", "ContinuaFuncaoQJInterativo",
	"FinalizaFuncaoQJInterativo", "CancelarFluxoQJInterativo",
}

var (
	oleaut32         = syscall.NewLazyDLL("oleaut32.dll")
	sysStringByteLen = oleaut32.NewProc("SysStringByteLen")
	sysFreeString    = oleaut32.NewProc("SysFreeString")
)

type dll struct {
	enderecos map[string]uintptr
}

func carregar(caminho string) (biblioteca, error) {
	for _, p := range []*syscall.LazyProc{sysStringByteLen, sysFreeString} {
		if err := p.Find(); err != nil {
			return nil, &DLLIndisponivel{"oleaut32.dll", "falta " + p.Name, err}
		}
	}
	modulo, err := syscall.LoadDLL(caminho)
	if err != nil {
		return nil, &DLLIndisponivel{caminho, motivoDeNaoCarregar(err), err}
	}
	d := &dll{make(map[string]uintptr, len(funcoes))}
	for _, nome := range funcoes {
		p, err := modulo.FindProc(nome)
		if err != nil {
			return nil, &DLLIndisponivel{caminho, "falta a função " + nome, err}
		}
		d.enderecos[nome] = p.Addr()
	}
	return d, nil
}

func motivoDeNaoCarregar(err error) string {
	const erroFormato syscall.Errno = 193 // ERROR_BAD_EXE_FORMAT
	switch {
	case errors.Is(err, syscall.ERROR_MOD_NOT_FOUND), errors.Is(err, syscall.ERROR_FILE_NOT_FOUND):
		return "não foi encontrada; ponha-a ao lado do programa"
	case errors.Is(err, erroFormato):
		return "não é uma DLL de 64 bits"
	}
	return "não pôde ser carregada: " + err.Error()
}

// chamar supõe a trava. Um double vai por seus bits: em windows/amd64, syscall põe os quatro
// primeiros argumentos tanto nos registradores inteiros quanto em XMM0 a XMM3, e dValor nunca vem
// depois do quarto.
func (d *dll) chamar(funcao string, args []argumento) uintptr {
	palavras := make([]uintptr, len(args))
	for i, a := range args {
		palavras[i] = a.bits
		if a.texto != nil {
			// Os bytes estão no heap, que não se move: args chega por uma interface, e escapa.
			palavras[i] = uintptr(unsafe.Pointer(&a.texto[0]))
		}
	}
	retorno, _, _ := syscall.SyscallN(d.enderecos[funcao], palavras...)
	runtime.KeepAlive(args)
	return retorno
}

// texto copia e libera o BSTR, que guarda bytes Windows-1252 e não UTF-16.
func (d *dll) texto(funcao string, args []argumento) []byte {
	bstr := d.chamar(funcao, args)
	defer sysFreeString.Call(bstr)
	tamanho, _, _ := sysStringByteLen.Call(bstr)
	copia := make([]byte, uint32(tamanho))
	copy(copia, unsafe.Slice((*byte)(apontar(bstr)), len(copia)))
	return copia
}

func (d *dll) codigo(funcao string, args []argumento) int {
	return int(int32(d.chamar(funcao, args)))
}

func (d *dll) constante(funcao string) string {
	inicio := apontar(d.chamar(funcao, nil))
	tamanho := 0
	for *(*byte)(unsafe.Add(inicio, tamanho)) != 0 {
		tamanho++
	}
	return decodificar(unsafe.Slice((*byte)(inicio), tamanho))
}

// apontar dá o ponteiro de um endereço de memória da DLL, que o coletor de lixo não conhece nem
// move.
func apontar(endereco uintptr) unsafe.Pointer {
	return *(*unsafe.Pointer)(unsafe.Pointer(&endereco))
}
