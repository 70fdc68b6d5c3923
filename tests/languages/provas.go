//go:build windows

// Faz o que manda cada linha de comandos.txt e anota como terminou junto das chamadas.
package main

import (
	"context"
	"errors"
	"fmt"
	"os"
	"strconv"
	"strings"
	"time"

	"caixora"
)

var configuracao = caixora.Configuracao{CNPJCliente: "11", CNPJParceiro: "22",
	Diario: "diario.txt", Tentativas: 3, Pausa: time.Millisecond}

type ErroDoPdv struct{}

func (ErroDoPdv) Error() string { return "" }

func falharComo(passo string) error {
	return map[string]error{"falha": ErroDoPdv{}, "nada": caixora.ErrCancelar}[passo]
}

func main() {
	pdv, err := caixora.Nova(configuracao)
	if err != nil {
		panic(err)
	}
	comandos, _ := os.ReadFile("comandos.txt")
	for _, linha := range strings.Split(strings.TrimSpace(string(comandos)), "\n") {
		anotar("> " + linha)
		partes := append(strings.Fields(linha), "", "")
		texto, err := fazer(pdv, partes[0], partes[1], partes[2])
		if err != nil {
			anotar(fmt.Sprintf("! %T: %v", err, err))
		} else {
			anotar("= " + texto)
		}
	}
}

func anotar(linha string) {
	arquivo, err := os.OpenFile("chamadas.txt", os.O_APPEND|os.O_CREATE|os.O_WRONLY, 0o600)
	if err != nil {
		panic(err)
	}
	defer arquivo.Close()
	fmt.Fprintln(arquivo, linha)
}

func fazer(pdv *caixora.Caixora, acao, a, b string) (string, error) {
	n, _ := strconv.Atoi(a)
	switch acao {
	case "aguardar":
		return "feito", pdv.AguardarGP(n)
	case "vender":
		v, err := pdv.VenderEConfirmar(caixora.CreditoVista(1250, n), func(r caixora.Resultado) error {
			anotar("aprovada, " + r.Comprovante[len(r.Comprovante)-1])
			switch b {
			case "esquecer":
				return pdv.EsquecerPendencia()
			case "teste":
				_, err := pdv.Teste()
				return err
			case "trancar":
				return os.Mkdir("diario.txt.tmp", 0o700)
			}
			return falharComo(b)
		})
		return string(v.Situacao) + " " + v.Motivo, err
	case "confirmar":
		return "feito", pdv.ConcluirVenda(n, caixora.DesfechoConfirmar)
	case "desfazer":
		return "feito", pdv.ConcluirVenda(n, caixora.DesfechoDesfazer)
	case "esquecer":
		return "feito", pdv.EsquecerPendencia()
	case "atv":
		return resumir(pdv.Atv(n))
	case "confirmacao":
		return resumir(pdv.Confirmar(n))
	case "desfazimento":
		return resumir(pdv.Desfazimento(n))
	case "parcelas":
		return resumir(pdv.VendeCreditoParcLoja(n, 1010, 30))
	case "centavos":
		return resumir(pdv.VendeCredito(caixora.Centavos(n), 30))
	case "reais":
		valor, err := caixora.LerCentavos(a)
		if err != nil {
			return "", err
		}
		return resumir(pdv.VendeCredito(valor, 30))
	case "campo011":
		return link(pdv, "ação", caractere(a))
	case "itens":
		return link(pdv, caractere(a), "")
	case "campo4":
		return conversar(pdv, 20, "1", a)
	case "fluxo":
		return conversar(pdv, uint32(n), b, "")
	}
	fim := make(chan struct{})
	go func() {
		defer close(fim)
		_, _ = pdv.Atv(25)
	}()
	outro, err := caixora.Nova(configuracao)
	if err != nil {
		return "", err
	}
	defer func() { <-fim }()
	return resumir(outro.Atv(25))
}

func resumir(r caixora.Resultado, err error) (string, error) {
	return fmt.Sprint(r.Codigo, " ", r.Mensagem), err
}

// caractere é o de "u+81"; outro texto fica como está.
func caractere(texto string) string {
	if c, err := strconv.ParseInt(strings.TrimPrefix(texto, "u+"), 16, 32); err == nil {
		return string(rune(c))
	}
	return texto
}

func link(pdv *caixora.Caixora, descricao, campo011 string) (string, error) {
	itens := []caixora.ItemLink{{Codigo: "7", Descricao: descricao, Quantidade: 1, Unitario: 1,
		Total: 1050}}
	return resumir(pdv.LinkPagamento(2, 1010, 30, itens, campo011, ""))
}

func conversar(pdv *caixora.Caixora, funcao uint32, resposta, campo4 string) (string, error) {
	inicio := caixora.InicioFluxo{Funcao: funcao, Valor: 1205, Campo3: 3, Campo4: campo4,
		Campo6: "6", Campo7: "7", Campo8: "8", Campo9: "9", Campo10: 10, FuncaoFim: 99}
	f, err := pdv.Fluxo(context.Background(), inicio, func(string) (string, error) {
		return resposta, falharComo(resposta)
	})
	if errors.Is(err, caixora.ErrCancelar) {
		err = nil
	}
	concluido := map[bool]string{true: "concluído", false: "não concluído"}[f.Concluido]
	return fmt.Sprint(concluido, " ", f.Codigo, " ", f.Campos["MENSAGEM"]), err
}
