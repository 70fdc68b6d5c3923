package caixora

import (
	"fmt"
	"math"
)

// argumento de uma função da DLL: os bits de um número, ou um texto com o zero final.
type argumento struct {
	bits  uintptr
	texto []byte
}

// argumentos reúne, na ordem da DLL, os argumentos de uma chamada. Fica com o primeiro erro; com
// ele, nada é chamado.
type argumentos struct {
	cfg   *Configuracao
	lista []argumento
	err   error
}

func (c *Caixora) argumentos() *argumentos { return &argumentos{cfg: &c.cfg} }

func (a *argumentos) recusar(nome, formato string, args ...any) *argumentos {
	if a.err == nil {
		a.err = &ArgumentoInvalido{nome, fmt.Sprintf(formato, args...)}
	}
	return a
}

func (a *argumentos) textoSem(proibidos, nome, s string) *argumentos {
	bytes, err := codificar(nome, s, proibidos)
	if err != nil && a.err == nil {
		a.err = err
	}
	a.lista = append(a.lista, argumento{texto: bytes})
	return a
}

func (a *argumentos) texto(nome, s string) *argumentos { return a.textoSem("", nome, s) }

func (a *argumentos) cnpjs() *argumentos {
	return a.texto("sCNPJCliente", a.cfg.CNPJCliente).texto("sCNPJParceiro", a.cfg.CNPJParceiro)
}

func (a *argumentos) numero(n uint32) *argumentos {
	a.lista = append(a.lista, argumento{bits: uintptr(n)})
	return a
}

func (a *argumentos) inteiro(nome string, n, minimo int) *argumentos {
	if n < minimo || n > math.MaxInt32 {
		a.recusar(nome, "%d não vai de %d a %d", n, minimo, math.MaxInt32)
	}
	return a.numero(uint32(n))
}

// Uma venda ou um desfecho sem cupom não poderia ser reconhecido depois.
func (a *argumentos) cupom(cupom int) *argumentos { return a.inteiro("iCupom", cupom, 1) }

func (a *argumentos) leitor() *argumentos { return a.inteiro("iLeitor", a.cfg.Leitor, 1) }

// conferirValor é o limite de todos os valores, também dos que vão como texto.
func (a *argumentos) conferirValor(nome string, valor, minimo Centavos) *argumentos {
	if valor < minimo || valor > ValorMaximo {
		a.recusar(nome, "R$ %s não vai de R$ %s a R$ %s", valor, minimo, ValorMaximo)
	}
	return a
}

// valor vai em reais, como double. A divisão dá o double mais próximo, que a DLL lê de volta como
// os mesmos centavos.
func (a *argumentos) valor(valor, minimo Centavos) *argumentos {
	a.conferirValor("dValor", valor, minimo)
	a.lista = append(a.lista, argumento{bits: uintptr(math.Float64bits(float64(valor) / 100))})
	return a
}
