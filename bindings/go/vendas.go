package caixora

import (
	"fmt"
	"strconv"
	"strings"
)

// Venda é uma venda por fazer: a função, o valor, o cupom e o mais que ela peça. Crie-a com
// CreditoVista, Debito, Link...
type Venda struct {
	funcao string
	valor  Centavos
	cupom  int
	montar func(*argumentos) // os argumentos entre os CNPJs e o leitor
}

// Valor da venda.
func (v Venda) Valor() Centavos { return v.valor }

// Cupom da venda.
func (v Venda) Cupom() int { return v.cupom }

func (v Venda) argumentos(c *Caixora) *argumentos {
	a := c.argumentos().cnpjs()
	if v.montar == nil {
		return a.recusar("venda", "está vazia; crie-a com CreditoVista, Debito, Link...")
	}
	v.montar(a)
	return a.leitor()
}

func simples(funcao string, valor Centavos, cupom int) Venda {
	return Venda{funcao, valor, cupom, func(a *argumentos) { a.valor(valor, 1).cupom(cupom) }}
}

func parcelada(funcao string, parcelas int, valor Centavos, cupom int) Venda {
	return Venda{funcao, valor, cupom, func(a *argumentos) {
		a.inteiro("iParcelas", parcelas, 1).valor(valor, 1).cupom(cupom)
	}}
}

// Credito é a venda de VendeCredito: o GP pergunta a forma.
func Credito(valor Centavos, cupom int) Venda { return simples("VendeCredito", valor, cupom) }

// CreditoVista é a venda de VendeCreditoVista.
func CreditoVista(valor Centavos, cupom int) Venda {
	return simples("VendeCreditoVista", valor, cupom)
}

// CreditoParcLoja é a venda de VendeCreditoParcLoja: parcelada pela loja.
func CreditoParcLoja(parcelas int, valor Centavos, cupom int) Venda {
	return parcelada("VendeCreditoParcLoja", parcelas, valor, cupom)
}

// CreditoParcAdm é a venda de VendeCreditoParcAdm: parcelada pela administradora.
func CreditoParcAdm(parcelas int, valor Centavos, cupom int) Venda {
	return parcelada("VendeCreditoParcAdm", parcelas, valor, cupom)
}

// Debito é a venda de VendeDebito: o GP pergunta a forma.
func Debito(valor Centavos, cupom int) Venda { return simples("VendeDebito", valor, cupom) }

// DebitoAVista é a venda de VendeDebitoAVista.
func DebitoAVista(valor Centavos, cupom int) Venda {
	return simples("VendeDebitoAVista", valor, cupom)
}

// Private é a venda de MenuPrivate, o menu private label do GP.
func Private(valor Centavos, cupom int) Venda { return simples("MenuPrivate", valor, cupom) }

// CarteiraDigitalPix é a venda de VendeCarteiraDigitalPix.
func CarteiraDigitalPix(valor Centavos, cupom int) Venda {
	return simples("VendeCarteiraDigitalPix", valor, cupom)
}

// ProgramaParceleMais é a venda de ParceleMais.
func ProgramaParceleMais(valor Centavos, cupom int) Venda {
	return simples("ParceleMais", valor, cupom)
}

// ItemFrota são até seis textos, sem "-" e sem "|".
type ItemFrota []string

// FrotaCompleto é a venda de VendeFrotaCompleto. Textos vazios não são enviados.
func FrotaCompleto(valor Centavos, km, placa, matricula string, itens []ItemFrota,
	cupom int) Venda {
	return Venda{"VendeFrotaCompleto", valor, cupom, func(a *argumentos) {
		a.valor(valor, 1).texto("sKM", km).texto("sPlaca", placa).texto("sMatricula", matricula)
		textos := make([]string, len(itens))
		for i, item := range itens {
			if len(item) > 6 {
				a.recusar("sItens", "o item %d tem mais de seis textos", i+1)
			}
			textos[i] = a.juntar("-", item...)
			// A DLL deixaria de enviar, sem aviso, um item único e vazio.
			if strings.Join(item, "") == "" {
				a.recusar("sItens", "o item %d está vazio", i+1)
			}
		}
		a.itens(textos).cupom(cupom)
	}}
}

// ItemLink é um item de um link de pagamento.
type ItemLink struct {
	Codigo     string
	Descricao  string
	Quantidade int
	Unitario   Centavos
	Desconto   Centavos
	Total      Centavos
}

// Link é a venda de LinkPagamento.
func Link(parcelas int, valor Centavos, cupom int, itens []ItemLink,
	campo011, campo012 string) Venda {
	return Venda{"LinkPagamento", valor, cupom, func(a *argumentos) {
		a.inteiro("iParcelas", parcelas, 1).valor(valor, 1).cupom(cupom)
		textos := make([]string, len(itens))
		for i, item := range itens {
			nome := fmt.Sprintf("sItens, item %d", i+1)
			if item.Quantidade < 1 {
				a.recusar(nome, "a quantidade %d não é positiva", item.Quantidade)
			}
			for _, v := range []Centavos{item.Unitario, item.Desconto, item.Total} {
				a.conferirValor(nome, v, 0)
			}
			textos[i] = a.juntar("¬", item.Codigo, item.Descricao, strconv.Itoa(item.Quantidade),
				item.Unitario.String(), item.Desconto.String(), item.Total.String())
		}
		a.itens(textos).texto("sCampo011", campo011).texto("sCampo012", campo012)
	}}
}

// juntar faz um item. Nenhum texto pode ter o separador dos campos nem o dos itens.
func (a *argumentos) juntar(separador string, textos ...string) string {
	for _, s := range textos {
		if _, err := codificar("sItens", s, separador+"|"); err != nil && a.err == nil {
			a.err = err
		}
	}
	return strings.Join(textos, separador)
}

func (a *argumentos) itens(itens []string) *argumentos {
	return a.inteiro("iQtdeItens", len(itens), 0).texto("sItens", strings.Join(itens, "|"))
}

// VendeCredito faz a venda e devolve a resposta, sem confirmar; veja Credito. O mesmo vale para as
// demais: quem chama dá o desfecho, com Confirmar ou Desfazimento. VenderEConfirmar faz tudo.
func (c *Caixora) VendeCredito(valor Centavos, cupom int) (Resultado, error) {
	return c.vender(Credito(valor, cupom))
}

// VendeCreditoVista: veja CreditoVista.
func (c *Caixora) VendeCreditoVista(valor Centavos, cupom int) (Resultado, error) {
	return c.vender(CreditoVista(valor, cupom))
}

// VendeCreditoParcLoja: veja CreditoParcLoja.
func (c *Caixora) VendeCreditoParcLoja(parcelas int, valor Centavos, cupom int) (Resultado, error) {
	return c.vender(CreditoParcLoja(parcelas, valor, cupom))
}

// VendeCreditoParcAdm: veja CreditoParcAdm.
func (c *Caixora) VendeCreditoParcAdm(parcelas int, valor Centavos, cupom int) (Resultado, error) {
	return c.vender(CreditoParcAdm(parcelas, valor, cupom))
}

// VendeDebito: veja Debito.
func (c *Caixora) VendeDebito(valor Centavos, cupom int) (Resultado, error) {
	return c.vender(Debito(valor, cupom))
}

// VendeDebitoAVista: veja DebitoAVista.
func (c *Caixora) VendeDebitoAVista(valor Centavos, cupom int) (Resultado, error) {
	return c.vender(DebitoAVista(valor, cupom))
}

// MenuPrivate: veja Private.
func (c *Caixora) MenuPrivate(valor Centavos, cupom int) (Resultado, error) {
	return c.vender(Private(valor, cupom))
}

// VendeCarteiraDigitalPix: veja CarteiraDigitalPix.
func (c *Caixora) VendeCarteiraDigitalPix(valor Centavos, cupom int) (Resultado, error) {
	return c.vender(CarteiraDigitalPix(valor, cupom))
}

// ParceleMais: veja ProgramaParceleMais.
func (c *Caixora) ParceleMais(valor Centavos, cupom int) (Resultado, error) {
	return c.vender(ProgramaParceleMais(valor, cupom))
}

// VendeFrotaCompleto: veja FrotaCompleto.
func (c *Caixora) VendeFrotaCompleto(valor Centavos, km, placa, matricula string,
	itens []ItemFrota, cupom int) (Resultado, error) {
	return c.vender(FrotaCompleto(valor, km, placa, matricula, itens, cupom))
}

// LinkPagamento: veja Link.
func (c *Caixora) LinkPagamento(parcelas int, valor Centavos, cupom int, itens []ItemLink,
	campo011, campo012 string) (Resultado, error) {
	return c.vender(Link(parcelas, valor, cupom, itens, campo011, campo012))
}

func (c *Caixora) vender(v Venda) (Resultado, error) {
	return c.pagar(v.funcao, v.argumentos(c))
}
