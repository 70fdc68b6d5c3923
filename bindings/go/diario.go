package caixora

import (
	"errors"
	"fmt"
	"io/fs"
	"math"
	"os"
	"strconv"
	"strings"
	"sync"
)

// Estado de uma venda no diário.
type Estado string

const (
	EstadoIniciada  Estado = "iniciada"  // pode ter chegado ao GP
	EstadoAprovada  Estado = "aprovada"  // aoAprovar não terminou
	EstadoConfirmar Estado = "confirmar" // aoAprovar terminou bem
	EstadoDesfazer  Estado = "desfazer"
)

// VendaNoDiario é uma venda sem desfecho.
type VendaNoDiario struct {
	Cupom  int
	Valor  Centavos
	Estado Estado
}

// DiarioIlegivel é o erro de um diário que não se entende. Ele guarda vendas em aberto: nada é
// ignorado, e nada se vende até que alguém o examine.
type DiarioIlegivel struct {
	Caminho string
	Linha   int
}

func (e *DiarioIlegivel) Error() string {
	return fmt.Sprintf("diário ilegível: %s, linha %d", e.Caminho, e.Linha)
}

// FalhaDoDiario é o erro de um diário que não pôde ser lido ou gravado.
type FalhaDoDiario struct{ Causa error }

func (e *FalhaDoDiario) Error() string { return "diário: " + e.Causa.Error() }

func (e *FalhaDoDiario) Unwrap() error { return e.Causa }

// falta é o único desfecho que cabe em cada estado; em "aprovada", o PDV escolhe.
var falta = map[Estado]Desfecho{
	EstadoIniciada:  DesfechoDesfazer,
	EstadoConfirmar: DesfechoConfirmar,
	EstadoDesfazer:  DesfechoDesfazer,
}

const cabecalhoDoDiario = "caixora-diario 1"

// travaDiario guarda os arquivos: cada mudança lê e grava o texto inteiro.
var travaDiario sync.Mutex

// diario é o arquivo das vendas em aberto; nil, nada guarda. Os textos são os mesmos em todas as
// linguagens, e cada mudança troca o arquivo de uma vez: uma queda deixa o de antes ou o de depois.
type diario struct{ caminho string }

func (d *diario) abrir(cupom int, valor Centavos) error {
	return d.alterar(func(vendas []VendaNoDiario) ([]VendaNoDiario, error) {
		if len(vendas) > 0 {
			v := vendas[0]
			mensagem := "está no diário como " + string(v.Estado) + "; use ConcluirVenda"
			return nil, &VendaEmAberto{Cupom: v.Cupom, Falta: falta[v.Estado], Mensagem: mensagem}
		}
		return append(vendas, VendaNoDiario{cupom, valor, EstadoIniciada}), nil
	})
}

func (d *diario) mudar(cupom int, estado Estado) error {
	return d.alterarVenda(cupom, func(vendas []VendaNoDiario, i int) ([]VendaNoDiario, error) {
		vendas[i].Estado = estado
		return vendas, nil
	})
}

// decidir muda o estado, se o desfecho cabe no de agora.
func (d *diario) decidir(cupom int, desfecho Desfecho, estado Estado) error {
	return d.alterarVenda(cupom, func(vendas []VendaNoDiario, i int) ([]VendaNoDiario, error) {
		atual := vendas[i].Estado
		if unico := falta[atual]; unico != "" && unico != desfecho {
			return nil, &ArgumentoInvalido{"desfecho", fmt.Sprintf(
				"o cupom %d está no diário como %s: só cabe %s", cupom, atual, unico)}
		}
		vendas[i].Estado = estado
		return vendas, nil
	})
}

func (d *diario) remover(cupom int) error {
	return d.alterarVenda(cupom, func(vendas []VendaNoDiario, i int) ([]VendaNoDiario, error) {
		return append(vendas[:i], vendas[i+1:]...), nil
	})
}

func (d *diario) alterarVenda(cupom int,
	mudanca func([]VendaNoDiario, int) ([]VendaNoDiario, error)) error {
	return d.alterar(func(vendas []VendaNoDiario) ([]VendaNoDiario, error) {
		i := procurar(vendas, cupom)
		if i < 0 {
			return nil, &ArgumentoInvalido{"iCupom", fmt.Sprintf("%d não está no diário", cupom)}
		}
		return mudanca(vendas, i)
	})
}

func procurar(vendas []VendaNoDiario, cupom int) int {
	for i, v := range vendas {
		if v.Cupom == cupom {
			return i
		}
	}
	return -1
}

func (d *diario) alterar(mudanca func([]VendaNoDiario) ([]VendaNoDiario, error)) error {
	if d == nil {
		return nil
	}
	travaDiario.Lock()
	defer travaDiario.Unlock()
	vendas, err := d.ler()
	if err != nil {
		return err
	}
	if vendas, err = mudanca(vendas); err != nil {
		return err
	}
	if err := d.gravar(vendas); err != nil {
		return &FalhaDoDiario{err}
	}
	return nil
}

func (d *diario) ler() ([]VendaNoDiario, error) {
	bytes, err := os.ReadFile(d.caminho)
	if errors.Is(err, fs.ErrNotExist) {
		return nil, nil
	}
	if err != nil {
		return nil, &FalhaDoDiario{err}
	}
	vendas, linha := interpretarDiario(string(bytes))
	if linha > 0 {
		return nil, &DiarioIlegivel{d.caminho, linha}
	}
	return vendas, nil
}

// interpretarDiario devolve o número da primeira linha que não se entende, ou 0.
func interpretarDiario(texto string) ([]VendaNoDiario, int) {
	texto = strings.ReplaceAll(texto, "\r\n", "\n")
	linhas := strings.Split(texto, "\n")
	ultima := len(linhas) - 1
	if linhas[0] != cabecalhoDoDiario {
		return nil, 1
	}
	if linhas[ultima] != "" { // o arquivo foi cortado
		return nil, ultima + 1
	}
	var vendas []VendaNoDiario
	for i, linha := range linhas[1:ultima] {
		v, ok := interpretarLinha(linha)
		if !ok || procurar(vendas, v.Cupom) >= 0 {
			return nil, i + 2
		}
		vendas = append(vendas, v)
	}
	return vendas, 0
}

func interpretarLinha(linha string) (v VendaNoDiario, ok bool) {
	partes := strings.Split(linha, ";")
	if len(partes) != 3 {
		return v, false
	}
	cupom, cupomOk := numeroNoDiario(partes[0], math.MaxInt32)
	valor, valorOk := numeroNoDiario(partes[1], int64(ValorMaximo))
	estado := Estado(partes[2])
	switch estado {
	case EstadoIniciada, EstadoAprovada, EstadoConfirmar, EstadoDesfazer:
		return VendaNoDiario{int(cupom), Centavos(valor), estado}, cupomOk && valorOk
	}
	return v, false
}

func numeroNoDiario(s string, maximo int64) (int64, bool) {
	n, err := strconv.ParseInt(s, 10, 64)
	return n, err == nil && digitos(s) && n >= 1 && n <= maximo
}

func (d *diario) gravar(vendas []VendaNoDiario) error {
	if len(vendas) == 0 {
		err := os.Remove(d.caminho)
		if errors.Is(err, fs.ErrNotExist) {
			return nil
		}
		return err
	}
	texto := cabecalhoDoDiario + "\n"
	for _, v := range vendas {
		texto += fmt.Sprintf("%d;%d;%s\n", v.Cupom, int64(v.Valor), v.Estado)
	}
	novo := d.caminho + ".tmp"
	if err := gravarNoDisco(novo, texto); err != nil {
		return err
	}
	return substituir(novo, d.caminho)
}

func gravarNoDisco(caminho, texto string) (err error) {
	arquivo, err := os.Create(caminho)
	if err != nil {
		return err
	}
	defer func() { err = primeiro(err, arquivo.Close()) }()
	if _, err := arquivo.WriteString(texto); err != nil {
		return err
	}
	return arquivo.Sync()
}
