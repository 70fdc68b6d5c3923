package caixora

import (
	"strconv"
	"strings"
)

// Campos são os quinze campos de uma aprovação, como textos.
type Campos struct {
	Cupom         string
	ValorCentavos string
	Bandeira      string
	Rede          string
	Autorizacao   string
	NSU           string
	Tipo          string
	Parcelas      string
	Controle      string // para Cancelar
	Campo170000   string
	CodigoRede    string
	Campo740000   string
	Campo741000   string
	Campo742000   string
	Campo031000   string
}

// Resultado é a resposta de uma função de pagamento.
type Resultado struct {
	Codigo   int // 0 recusa, falha ou incerto, 1 aprovada com comprovante, 2 aprovada sem
	Mensagem string
	Campos
	Comprovante []string // as linhas
	Bruto       string   // o texto inteiro
}

// Aprovada diz se o GP aprovou.
func (r Resultado) Aprovada() bool { return r.Codigo > 0 && !r.RespostaLocal() }

// RespostaLocal diz se a resposta é da própria DLL: é o sucesso de Confirmar e de Desfazimento, "o
// pedido foi gravado". Vinda de outra operação, não é aprovação.
func (r Resultado) RespostaLocal() bool {
	return r.Codigo == 2 && r.Mensagem == "COMANDO COM SUCESSO" &&
		r.Campos == Campos{Cupom: r.Cupom, Parcelas: "1"}
}

// ValorCentavos é o valor da resposta; falso quando ela não traz um número.
func (r Resultado) ValorCentavos() (Centavos, bool) {
	n, err := strconv.ParseInt(r.Campos.ValorCentavos, 10, 64)
	return Centavos(n), err == nil && digitos(r.Campos.ValorCentavos)
}

// recusa diz se a resposta tem a forma "S;0;<mensagem>"; um texto de outra forma nada diz.
func (r Resultado) recusa() bool { return strings.HasPrefix(r.Bruto, "S;0;") }

// interpretar separa a resposta. Um texto de outra forma dá código 0 e vai inteiro para a mensagem.
func interpretar(bruto string) Resultado {
	r := Resultado{Mensagem: bruto, Bruto: bruto}
	switch {
	case strings.HasPrefix(bruto, "S;0;"):
		r.Mensagem = bruto[4:]
		return r
	case strings.HasPrefix(bruto, "S;1;"):
		r.Codigo = 1
	case strings.HasPrefix(bruto, "S;2;"):
		r.Codigo = 2
	default:
		return r
	}
	linhas := strings.Split(bruto[4:], "\r\n")
	r.Mensagem = linhas[0]
	if len(linhas) > 1 && strings.HasPrefix(linhas[1], "C;") {
		r.Campos = separarCampos(linhas[1][2:])
	}
	for _, linha := range linhas[1:] {
		if strings.HasPrefix(linha, "I;") {
			r.Comprovante = append(r.Comprovante, linha[2:])
		}
	}
	return r
}

func separarCampos(registro string) Campos {
	var c Campos
	posicoes := []*string{
		&c.Cupom, &c.ValorCentavos, &c.Bandeira, &c.Rede, &c.Autorizacao, &c.NSU, &c.Tipo,
		&c.Parcelas, &c.Controle, &c.Campo170000, &c.CodigoRede, &c.Campo740000, &c.Campo741000,
		&c.Campo742000, &c.Campo031000,
	}
	for _, campo := range posicoes {
		*campo, registro, _ = strings.Cut(registro, ";")
	}
	return c
}
