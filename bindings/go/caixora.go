// Package caixora faz vendas com cartão e pagamentos eletrônicos (TEF) pela Caixora.dll.
//
//	pdv, err := caixora.Nova(caixora.Configuracao{
//		CNPJCliente:  "12.345.678/0001-95",
//		CNPJParceiro: "11.222.333/0001-81",
//		Diario:       "diario.txt",
//	})
//	// ...
//	venda, err := pdv.VenderEConfirmar(caixora.CreditoVista(1250, 101),
//		func(r caixora.Resultado) error { return imprimir(r.Comprovante) })
//
// Toda chamada bloqueia a goroutine até terminar, sem tempo máximo enquanto o cliente está diante
// do terminal: faça-a fora da goroutine da tela. O estado da DLL é do processo inteiro; por isso
// uma trava do pacote deixa passar uma chamada de cada vez, qualquer que seja o objeto.
//
// A DLL existe apenas para Windows de 64 bits: compile com GOOS=windows GOARCH=amd64. Nas outras
// plataformas o pacote compila, e Nova devolve um erro.
package caixora

import (
	"math"
	"path/filepath"
	"time"
)

// Configuracao é o que vale para todas as operações de um PDV.
type Configuracao struct {
	CNPJCliente  string // o lojista: 14 dígitos, com ou sem pontuação
	CNPJParceiro string // o fabricante do PDV
	Leitor       int    // o número do terminal; 0 vale 1
	DLL          string // vazio vale "Caixora.dll", pela busca normal do Windows

	// Diario é o arquivo das vendas em aberto. Vazio, não há diário: depois de uma queda ninguém
	// saberá qual venda ficou sem desfecho.
	Diario string

	Tentativas int           // de confirmar ou desfazer; 0 vale 10
	Pausa      time.Duration // entre as tentativas; 0 vale 2 s
}

// Caixora é o acesso à DLL com uma configuração. Pode ser usado por várias goroutines.
type Caixora struct {
	cfg    Configuracao
	dll    biblioteca
	diario *diario // nil: sem diário
}

// biblioteca é a DLL carregada. Os nomes são os das funções dela.
type biblioteca interface {
	texto(funcao string, args []argumento) []byte
	codigo(funcao string, args []argumento) int
	constante(funcao string) string
}

// Nova carrega a DLL e confere a configuração. A DLL fica carregada até o fim do processo.
func Nova(cfg Configuracao) (*Caixora, error) {
	if cfg.Leitor == 0 {
		cfg.Leitor = 1
	}
	if cfg.DLL == "" {
		cfg.DLL = "Caixora.dll"
	}
	if cfg.Tentativas == 0 {
		cfg.Tentativas = 10
	}
	if cfg.Pausa == 0 {
		cfg.Pausa = 2 * time.Second
	}
	switch {
	case cfg.Leitor < 1 || cfg.Leitor > math.MaxInt32:
		return nil, &ArgumentoInvalido{"iLeitor", "deve ir de 1 a 2147483647"}
	case cfg.Tentativas < 0:
		return nil, &ArgumentoInvalido{"Tentativas", "não pode ser negativo"}
	case cfg.Pausa < 0:
		return nil, &ArgumentoInvalido{"Pausa", "não pode ser negativa"}
	}
	c := &Caixora{cfg: cfg}
	if err := c.argumentos().cnpjs().err; err != nil {
		return nil, err
	}
	if cfg.Diario != "" {
		// O diretório atual pode mudar durante a vida do processo; o diário, não.
		caminho, err := filepath.Abs(cfg.Diario)
		if err != nil {
			return nil, err
		}
		c.diario = &diario{caminho}
	}
	var err error
	c.dll, err = carregar(cfg.DLL)
	if err != nil {
		return nil, err
	}
	return c, nil
}

// DLLIndisponivel é o erro de Nova quando a DLL não pode ser usada.
type DLLIndisponivel struct {
	DLL    string
	Motivo string
	Causa  error // o erro do sistema, se houve
}

func (e *DLLIndisponivel) Error() string { return e.DLL + ": " + e.Motivo }

func (e *DLLIndisponivel) Unwrap() error { return e.Causa }

// ArgumentoInvalido é o erro de um argumento fora do que a função aceita. Nada foi chamado.
type ArgumentoInvalido struct {
	Argumento string
	Motivo    string
}

func (e *ArgumentoInvalido) Error() string { return e.Argumento + ": " + e.Motivo }
