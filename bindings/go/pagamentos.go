package caixora

import (
	"fmt"
	"sync"
	"time"
)

var (
	// trava guarda a DLL, cujo estado é do processo e não do objeto, e pendente.
	trava sync.Mutex
	// pendente é o cupom do desfecho que a DLL recusou, ou 0. A operação seguinte seria respondida
	// pela DLL como se fosse esse desfecho: sem aprovação nenhuma.
	pendente int
)

// PendenciaAberta é o erro de uma operação pedida enquanto há um desfecho recusado. Nada foi
// chamado. Repita Confirmar ou Desfazimento desse cupom, ou desista dele com EsquecerPendencia.
type PendenciaAberta struct{ Cupom int }

func (e *PendenciaAberta) Error() string {
	return fmt.Sprintf("o desfecho do cupom %d foi recusado e está pendente", e.Cupom)
}

// exigirSemPendencia supõe a trava. Durante uma pendência, só o desfecho do cupom permitido segue.
func exigirSemPendencia(permitido int) error {
	if pendente != 0 && pendente != permitido {
		return &PendenciaAberta{pendente}
	}
	return nil
}

// EsquecerPendencia desiste de repetir um desfecho recusado. A venda continua em aberto no GP.
func (c *Caixora) EsquecerPendencia() {
	trava.Lock()
	defer trava.Unlock()
	c.dll.constante("Teste")
	pendente = 0
}

// Teste devolve "OK". Não mexe na pendência que este pacote guarda; para isso há EsquecerPendencia.
func (c *Caixora) Teste() string {
	trava.Lock()
	defer trava.Unlock()
	return c.dll.constante("Teste")
}

// pagar chama uma função de pagamento que não seja um desfecho.
func (c *Caixora) pagar(funcao string, a *argumentos) (Resultado, error) {
	r, _, err := c.pagarMedindo(funcao, a)
	return r, err
}

// pagarMedindo devolve também a duração da chamada, sem a espera pela trava. Com erro, a DLL não
// foi chamada.
func (c *Caixora) pagarMedindo(funcao string, a *argumentos) (Resultado, time.Duration, error) {
	if a.err != nil {
		return Resultado{}, 0, a.err
	}
	trava.Lock()
	defer trava.Unlock()
	if err := exigirSemPendencia(0); err != nil {
		return Resultado{}, 0, err
	}
	inicio := time.Now()
	bytes := c.dll.texto(funcao, a.lista)
	duracao := time.Since(inicio)
	return interpretar(decodificar(bytes)), duracao, nil
}

// Confirmar confirma a venda do cupom. O sucesso é uma RespostaLocal: o pedido foi gravado. Uma
// recusa deixa uma pendência; veja PendenciaAberta.
func (c *Caixora) Confirmar(cupom int) (Resultado, error) {
	return c.darDesfecho("Confirmar", cupom)
}

// Desfazimento desfaz a venda do cupom; responde como Confirmar.
func (c *Caixora) Desfazimento(cupom int) (Resultado, error) {
	return c.darDesfecho("Desfazimento", cupom)
}

func (c *Caixora) darDesfecho(funcao string, cupom int) (Resultado, error) {
	a := c.argumentos().cnpjs().cupom(cupom)
	if a.err != nil {
		return Resultado{}, a.err
	}
	trava.Lock()
	defer trava.Unlock()
	if err := exigirSemPendencia(cupom); err != nil {
		return Resultado{}, err
	}
	r := interpretar(decodificar(c.dll.texto(funcao, a.lista)))
	pendente = 0
	if !desfechoFeito(r) {
		pendente = cupom
	}
	return r, nil
}

// Um GP muito rápido pode gravar a resposta dele sobre a local.
func desfechoFeito(r Resultado) bool { return r.RespostaLocal() || r.Aprovada() }

// Cancelar cancela uma venda já confirmada. Valor 0 e controle vazio não são enviados; o controle é
// o campo Controle da venda.
func (c *Caixora) Cancelar(valor Centavos, cupom int, controle string) (Resultado, error) {
	a := c.argumentos().cnpjs().valor(valor, 0).inteiro("iCupom", cupom, 0)
	return c.pagar("Cancelar", a.texto("sControle", controle).leitor())
}

// Reimpressao abre o menu de reimpressão do GP.
func (c *Caixora) Reimpressao() (Resultado, error) {
	return c.pagar("Reimpressao", c.argumentos().cnpjs().leitor())
}

// ReimpressaoDireto reimprime a transação deste NSU e desta data ("25/03/2021").
func (c *Caixora) ReimpressaoDireto(nsu, data string, cupom int) (Resultado, error) {
	a := c.argumentos().cnpjs().texto("sNSU", nsu).texto("data", data)
	return c.pagar("ReimpressaoDireto", a.inteiro("iCupom", cupom, 0).leitor())
}

// Adm abre o menu administrativo do GP. Valor 0 não é enviado.
func (c *Caixora) Adm(valor Centavos, cupom int) (Resultado, error) {
	a := c.argumentos().cnpjs().valor(valor, 0).inteiro("iCupom", cupom, 0)
	return c.pagar("Adm", a.leitor())
}

// Relatorio pede o relatório de transações.
func (c *Caixora) Relatorio(cupom int) (Resultado, error) {
	return c.pagar("Relatorio", c.argumentos().cnpjs().inteiro("iCupom", cupom, 0).leitor())
}

// RecargaCelular faz uma recarga de celular.
func (c *Caixora) RecargaCelular(cupom int) (Resultado, error) {
	return c.pagar("RecargaCelular", c.argumentos().cnpjs().inteiro("iCupom", cupom, 0).leitor())
}

// Atv pergunta se o GP está aí. Um GP que roda e não responde é esperado sem limite.
func (c *Caixora) Atv(cupom int) (Resultado, error) {
	return c.pagar("Atv", c.argumentos().cnpjs().inteiro("iCupom", cupom, 0).leitor())
}

// SolicitarCPF faz o GP pedir um CPF ao cliente.
func (c *Caixora) SolicitarCPF(cupom int) (Resultado, error) {
	return c.pagar("SolicitarCPF", c.argumentos().cnpjs().inteiro("iCupom", cupom, 0))
}

// SolicitarCNPJ faz o GP pedir um CNPJ ao cliente.
func (c *Caixora) SolicitarCNPJ(cupom int) (Resultado, error) {
	return c.pagar("SolicitarCNPJ", c.argumentos().cnpjs().inteiro("iCupom", cupom, 0))
}

// SolicitarDocumento faz o GP pedir um CPF ou um CNPJ ao cliente.
func (c *Caixora) SolicitarDocumento(cupom int) (Resultado, error) {
	return c.pagar("SolicitarDocumento", c.argumentos().cnpjs().inteiro("iCupom", cupom, 0))
}

// ManutencaoLinkPagamento abre a manutenção de links do GP.
func (c *Caixora) ManutencaoLinkPagamento() (Resultado, error) {
	return c.pagar("ManutencaoLinkPagamento", c.argumentos().cnpjs().leitor())
}

// ListarLinkPagamentoPago lista os links já pagos.
func (c *Caixora) ListarLinkPagamentoPago(valor Centavos, cupom int) (Resultado, error) {
	a := c.argumentos().cnpjs().valor(valor, 0).inteiro("iCupom", cupom, 0)
	return c.pagar("ListarLinkPagamentoPago", a.leitor())
}

// GPInativo é o erro de AguardarGP.
type GPInativo struct{ Mensagem string }

func (e *GPInativo) Error() string { return "o GP não respondeu: " + e.Mensagem }

// AguardarGP chama Atv até o GP responder, com a pausa da configuração entre as tentativas. É para
// a abertura do caixa: a primeira chamada encontra o GP fechado e o inicia.
func (c *Caixora) AguardarGP(tentativas int) error {
	inativo := &GPInativo{"nenhuma tentativa"}
	for i := 0; i < tentativas; i++ {
		if i > 0 {
			time.Sleep(c.cfg.Pausa)
		}
		r, err := c.Atv(1)
		if err != nil {
			return err
		}
		if r.Aprovada() {
			return nil
		}
		inativo.Mensagem = r.Mensagem
	}
	return inativo
}
