//go:build windows

// Um PDV em miniatura: venda confirmada, recusa, link de pagamento, venda desfeita e fluxo
// interativo. Com --cair, morre entre a aprovação e a confirmação; com --retomar, conclui o que a
// queda deixou em aberto.
package main

import (
	"context"
	"errors"
	"fmt"
	"os"
	"syscall"

	"caixora"
)

func main() {
	// trecho: abrir
	pdv, err := caixora.Nova(caixora.Configuracao{
		CNPJCliente:  "12.345.678/0001-95",
		CNPJParceiro: "11.222.333/0001-81",
		Leitor:       1,
		Diario:       "diario.txt",
	})
	// fim do trecho
	if err == nil {
		switch {
		case len(os.Args) == 1:
			err = demonstrar(pdv)
		case os.Args[1] == "--cair":
			err = cair(pdv)
		case os.Args[1] == "--retomar":
			err = retomar(pdv)
		default:
			err = errors.New("uso: pdv [--cair | --retomar]")
		}
	}
	if err != nil {
		fmt.Fprintln(os.Stderr, err)
		os.Exit(1)
	}
}

var errSemPapel = errors.New("Impressora sem papel")

func demonstrar(pdv *caixora.Caixora) error {
	if err := pdv.AguardarGP(10); err != nil {
		return err
	}
	fmt.Println("GP ativo")

	fmt.Println("== 1. Venda confirmada")
	// trecho: chamada
	if err := vender(pdv, caixora.CreditoVista(1250, 101), imprimir); err != nil {
		return err
	}
	// fim do trecho

	fmt.Println("== 2. Recusa")
	if err := vender(pdv, caixora.Debito(1002, 102), imprimir); err != nil {
		return err
	}

	fmt.Println("== 3. Link de pagamento com acentos")
	itens := []caixora.ItemLink{
		{Codigo: "7891", Descricao: "CAFÉ TORRADO", Quantidade: 2, Unitario: 1050, Total: 2100},
		{Codigo: "7892", Descricao: "AÇÚCAR", Quantidade: 1, Unitario: 1050, Total: 1050},
	}
	link := caixora.Link(1, 3150, 103, itens, "Pão & Cia", "")
	if err := vender(pdv, link, imprimir); err != nil {
		return err
	}

	fmt.Println("== 4. Venda desfeita")
	semPapel := func(r caixora.Resultado) error {
		if err := imprimir(r); err != nil {
			return err
		}
		return errSemPapel
	}
	err := vender(pdv, caixora.CreditoVista(4000, 104), semPapel)
	if !errors.Is(err, errSemPapel) {
		return fmt.Errorf("esperava %q, veio %v", errSemPapel, err)
	}

	fmt.Println("== 5. Fluxo interativo")
	return conversar(pdv)
}

// imprimir é onde um PDV registra a venda e imprime o comprovante.
func imprimir(r caixora.Resultado) error {
	valor, _ := r.ValorCentavos()
	_, err := fmt.Printf("Cupom %s: aprovada, R$ %s, %s, %d linhas de comprovante\n",
		r.Cupom, valor, r.Mensagem, len(r.Comprovante))
	return err
}

// trecho: venda

func vender(pdv *caixora.Caixora, venda caixora.Venda,
	aoAprovar func(caixora.Resultado) error) error {
	v, err := pdv.VenderEConfirmar(venda, aoAprovar)
	if err != nil {
		fmt.Println(err)
	}
	switch v.Situacao {
	case caixora.Recusada:
		fmt.Printf("Cupom %d: recusada, %s\n", venda.Cupom(), v.Motivo)
	case caixora.Confirmada, caixora.Desfeita:
		fmt.Printf("Cupom %d: %s\n", venda.Cupom(), v.Situacao)
	}
	return err
}

// fim do trecho

func conversar(pdv *caixora.Caixora) error {
	inicio := caixora.InicioFluxo{
		Funcao: 20, Valor: 1250, Campo3: 1, Campo6: "000545", Campo7: "20210325", Campo8: "009",
		Campo9: "652", Campo10: 7, FuncaoFim: 99,
	}
	respostas := []string{"3", "1"}
	perguntar := func(pergunta string) (string, error) {
		fmt.Println("Pergunta:", pergunta)
		if len(respostas) == 0 {
			return "", caixora.ErrCancelar
		}
		resposta := respostas[0]
		respostas = respostas[1:]
		fmt.Println("Resposta:", resposta)
		return resposta, nil
	}
	r, err := pdv.Fluxo(context.Background(), inicio, perguntar)
	if err != nil {
		return err
	}
	if !r.Concluido {
		return fmt.Errorf("fluxo não concluído: %s", r.Motivo)
	}
	fmt.Printf("Retorno: STATUS %s, VALOR %s, %s\n",
		r.Campos["STATUS"], r.Campos["VALOR"], r.Campos["MENSAGEM"])
	return nil
}

func cair(pdv *caixora.Caixora) error {
	fmt.Println("== Queda")
	return vender(pdv, caixora.CreditoVista(2000, 105), func(r caixora.Resultado) error {
		if err := imprimir(r); err != nil {
			return err
		}
		processo, err := syscall.GetCurrentProcess()
		if err != nil {
			return err
		}
		return syscall.TerminateProcess(processo, 9)
	})
}

// retomar confirma o que já estava decidido e desfaz o resto: este exemplo não guarda registros em
// que procurar uma venda aprovada.
func retomar(pdv *caixora.Caixora) error {
	fmt.Println("== Retomada")
	vendas, err := pdv.VendasEmAberto()
	if err != nil {
		return err
	}
	if len(vendas) == 0 {
		fmt.Println("Nada em aberto")
	}
	for _, v := range vendas {
		fmt.Printf("Cupom %d: em aberto (%s), R$ %s\n", v.Cupom, v.Estado, v.Valor)
		desfecho, feito := caixora.DesfechoDesfazer, "desfeita"
		if v.Estado == caixora.EstadoConfirmar {
			desfecho, feito = caixora.DesfechoConfirmar, "confirmada"
		}
		if err := pdv.ConcluirVenda(v.Cupom, desfecho); err != nil {
			return err
		}
		fmt.Printf("Cupom %d: %s\n", v.Cupom, feito)
	}
	return nil
}
