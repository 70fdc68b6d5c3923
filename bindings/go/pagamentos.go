package caixora

import (
	"fmt"
	"sync"
	"time"
)

var (
	// trava guarda a DLL, cujo estado é do processo e não do objeto, e as variáveis abaixo.
	trava sync.Mutex
	// pendente é o desfecho que a DLL recusou. A operação seguinte seria respondida por ela como se
	// fosse esse desfecho: sem aprovação nenhuma.
	pendente pendencia
	// emAndamento é o cupom da venda que ainda não teve o seu desfecho, ou 0.
	emAndamento int
)

// pendencia de um cupom; o cupom 0 é de nenhuma.
type pendencia struct {
	cupom    int
	desfecho Desfecho
}

// PendenciaAberta é o erro de uma operação pedida enquanto há um desfecho recusado. Nada foi
// chamado. Repita o mesmo desfecho desse cupom, ou desista dele com EsquecerPendencia.
type PendenciaAberta struct {
	Cupom int
	Falta Desfecho
}

func (e *PendenciaAberta) Error() string {
	return fmt.Sprintf("o cupom %d tem um desfecho recusado e pendente, falta %s", e.Cupom, e.Falta)
}

// VendaEmAndamento é o erro de uma operação pedida durante VenderEConfirmar ou ConcluirVenda, de
// dentro de aoAprovar ou de outra goroutine. Nada foi chamado.
type VendaEmAndamento struct{ Cupom int }

func (e *VendaEmAndamento) Error() string {
	return fmt.Sprintf("há uma venda em andamento: cupom %d", e.Cupom)
}

// exigirLivre supõe a trava. Durante uma pendência, só o mesmo desfecho do mesmo cupom segue; outra
// operação passa uma pendência vazia.
func exigirLivre(p pendencia) error {
	if emAndamento != 0 {
		return &VendaEmAndamento{emAndamento}
	}
	if pendente.cupom != 0 && pendente != p {
		return &PendenciaAberta{pendente.cupom, pendente.desfecho}
	}
	return nil
}

// ocupar recusa as demais operações até desocupar. O que verificar recusa não chega a começar.
func ocupar(p pendencia, cupom int, verificar func() error) error {
	trava.Lock()
	defer trava.Unlock()
	if err := exigirLivre(p); err != nil {
		return err
	}
	if err := verificar(); err != nil {
		return err
	}
	emAndamento = cupom
	return nil
}

func desocupar() {
	trava.Lock()
	defer trava.Unlock()
	emAndamento = 0
}

// EsquecerPendencia desiste de repetir um desfecho recusado. A venda continua em aberto no GP.
// Uma venda em andamento ainda repete o seu: durante ela, devolve VendaEmAndamento.
func (c *Caixora) EsquecerPendencia() error {
	trava.Lock()
	defer trava.Unlock()
	if err := exigirLivre(pendente); err != nil {
		return err
	}
	c.dll.constante("Teste")
	pendente = pendencia{}
	return nil
}

// Teste devolve "OK". A DLL esqueceria um desfecho recusado: se há um, devolve PendenciaAberta.
func (c *Caixora) Teste() (string, error) {
	trava.Lock()
	defer trava.Unlock()
	if err := exigirLivre(pendencia{}); err != nil {
		return "", err
	}
	return c.dll.constante("Teste"), nil
}

// pagar chama uma função de pagamento que não seja um desfecho.
func (c *Caixora) pagar(funcao string, a *argumentos) (Resultado, error) {
	if a.err != nil {
		return Resultado{}, a.err
	}
	trava.Lock()
	defer trava.Unlock()
	if err := exigirLivre(pendencia{}); err != nil {
		return Resultado{}, err
	}
	return c.receber(funcao, a), nil
}

// pagarMedindo é da venda em andamento. A duração não inclui a espera pela trava.
func (c *Caixora) pagarMedindo(funcao string, a *argumentos) (Resultado, time.Duration) {
	trava.Lock()
	defer trava.Unlock()
	inicio := time.Now()
	r := c.receber(funcao, a)
	return r, time.Since(inicio)
}

// receber supõe a trava.
func (c *Caixora) receber(funcao string, a *argumentos) Resultado {
	return interpretar(decodificar(c.dll.texto(funcao, a.lista)))
}

// Confirmar confirma a venda do cupom. A que está no diário é recusada: use ConcluirVenda. O
// sucesso é uma RespostaLocal: o pedido foi gravado. Uma recusa deixa uma pendência; veja
// PendenciaAberta.
func (c *Caixora) Confirmar(cupom int) (Resultado, error) {
	return c.desfechoAvulso(cupom, DesfechoConfirmar)
}

// Desfazimento desfaz a venda do cupom; responde como Confirmar.
func (c *Caixora) Desfazimento(cupom int) (Resultado, error) {
	return c.desfechoAvulso(cupom, DesfechoDesfazer)
}

func (c *Caixora) desfechoAvulso(cupom int, desfecho Desfecho) (Resultado, error) {
	a := c.argumentos().cnpjs().cupom(cupom)
	if a.err != nil {
		return Resultado{}, a.err
	}
	trava.Lock()
	defer trava.Unlock()
	if err := exigirLivre(pendencia{cupom, desfecho}); err != nil {
		return Resultado{}, err
	}
	if c.diario != nil {
		vendas, err := c.VendasEmAberto()
		if err != nil {
			return Resultado{}, err
		}
		if procurar(vendas, cupom) >= 0 {
			a.recusar("iCupom", "%d está em aberto no diário: use ConcluirVenda", cupom)
			return Resultado{}, a.err
		}
	}
	return c.darDesfecho(cupom, desfecho, a), nil
}

// darDesfecho supõe a trava.
func (c *Caixora) darDesfecho(cupom int, desfecho Desfecho, a *argumentos) Resultado {
	funcao := "Confirmar"
	if desfecho == DesfechoDesfazer {
		funcao = "Desfazimento"
	}
	r := c.receber(funcao, a)
	pendente = pendencia{}
	if !desfechoFeito(r) {
		pendente = pendencia{cupom, desfecho}
	}
	return r
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
