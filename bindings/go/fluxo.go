package caixora

import (
	"errors"
	"fmt"
	"strconv"
	"time"
)

// Situacao é como terminou VenderEConfirmar.
type Situacao string

const (
	Confirmada Situacao = "confirmada"
	Recusada   Situacao = "recusada" // certamente não houve venda
	Desfeita   Situacao = "desfeita"
)

// Desfecho de uma venda.
type Desfecho string

const (
	DesfechoConfirmar Desfecho = "confirmar"
	DesfechoDesfazer  Desfecho = "desfazer"
)

// ResultadoVenda é o que VenderEConfirmar devolve.
type ResultadoVenda struct {
	Situacao  Situacao // vazia quando o erro deixou a venda em aberto, ou quando nada foi vendido
	Resultado Resultado
	Motivo    string // de uma recusada ou desfeita
}

// VendaEmAberto é o erro de uma venda sem desfecho: já estava no diário, ou Confirmar e
// Desfazimento foram recusados em todas as tentativas. Conclua-a com ConcluirVenda.
type VendaEmAberto struct {
	Cupom    int
	Falta    Desfecho // vazio quando ainda cabe ao PDV decidir
	Mensagem string
	Causa    error // o que levou a desfazer, ou impediu o desfecho, quando foi um erro
}

func (e *VendaEmAberto) Error() string {
	falta := "confirmar ou desfazer"
	if e.Falta != "" {
		falta = string(e.Falta)
	}
	return fmt.Sprintf("cupom %d em aberto, falta %s: %s", e.Cupom, falta, e.Mensagem)
}

func (e *VendaEmAberto) Unwrap() error { return e.Causa }

// ValorDivergente é o erro de uma aprovação de outro valor ou cupom que o pedido. A venda foi
// desfeita.
type ValorDivergente struct {
	Cupom         int
	Valor         Centavos
	CupomRecebido string
	ValorRecebido string // como veio, em centavos
}

func (e *ValorDivergente) Error() string {
	return fmt.Sprintf("pedido o cupom %d de %d centavos, aprovado o cupom %q de %q centavos; "+
		"o desfazimento é do cupom pedido: se a resposta é de outro cupom, verifique-o no GP",
		e.Cupom, int64(e.Valor), e.CupomRecebido, e.ValorRecebido)
}

const resultadoIncerto = "resultado incerto: "

// VenderEConfirmar vende, chama aoAprovar e confirma. Em aoAprovar, registre a venda e imprima o
// comprovante; se ele devolve um erro, ou entra em pânico, a venda é desfeita e o erro é devolvido
// como está. Toda venda aprovada ou incerta tem um desfecho, ou fica no diário e em
// VendaEmAberto. Com outra venda no diário, nada é vendido: conclua-a antes. Até o desfecho, as
// demais operações são recusadas com VendaEmAndamento, também dentro de aoAprovar.
//
// Um erro com Situacao preenchida não desmente a situação: é o do aoAprovar, um ValorDivergente, ou
// um diário que não pôde ser gravado.
func (c *Caixora) VenderEConfirmar(venda Venda, aoAprovar func(Resultado) error) (
	ResultadoVenda, error) {
	args := venda.argumentos(c)
	if aoAprovar == nil {
		args.recusar("aoAprovar", "é nil")
	}
	if args.err != nil {
		return ResultadoVenda{}, args.err
	}
	cupom := venda.cupom
	abrir := func() error { return c.diario.abrir(cupom, venda.valor) }
	if err := ocupar(pendencia{}, cupom, abrir); err != nil {
		return ResultadoVenda{}, err
	}
	defer desocupar()
	r, duracao := c.pagarMedindo(venda.funcao, args)
	switch {
	case !r.Aprovada() && (r.Codigo > 0 || incerta(r, duracao)):
		return c.desfazer(cupom, r, resultadoIncerto+r.Mensagem, nil)
	case !r.Aprovada():
		return ResultadoVenda{Recusada, r, r.Mensagem}, c.diario.remover(cupom)
	case !confere(r, venda):
		err := &ValorDivergente{cupom, venda.valor, r.Cupom, r.Campos.ValorCentavos}
		return c.desfazer(cupom, r, err.Error(), err)
	}
	if err := c.diario.mudar(cupom, EstadoAprovada); err != nil {
		return c.desfazer(cupom, r, err.Error(), err)
	}
	voltou := false
	defer func() {
		if !voltou { // um pânico, que segue seu caminho; se não for desfeita, fica no diário
			_, _ = c.desfazer(cupom, r, "pânico em aoAprovar", nil)
		}
	}()
	err := aoAprovar(r)
	voltou = true
	if err != nil {
		return c.desfazer(cupom, r, err.Error(), err)
	}
	// A venda já está nos registros do PDV: confirma-se mesmo que o diário não possa mudar. Um erro
	// aqui faria passar por falha uma venda confirmada.
	_ = c.diario.mudar(cupom, EstadoConfirmar)
	if err := c.repetirDesfecho(cupom, DesfechoConfirmar); err != nil {
		return ResultadoVenda{Resultado: r}, err
	}
	return ResultadoVenda{Situacao: Confirmada, Resultado: r}, c.diario.remover(cupom)
}

// desfazer desfaz a venda; causa é o erro a devolver depois de desfeita.
func (c *Caixora) desfazer(cupom int, r Resultado, motivo string, causa error) (
	ResultadoVenda, error) {
	// Se o diário não pode mudar, o estado que ficou nele também leva a desfazer.
	_ = c.diario.mudar(cupom, EstadoDesfazer)
	if err := c.repetirDesfecho(cupom, DesfechoDesfazer); err != nil {
		if causa != nil {
			err.Causa = causa
		}
		return ResultadoVenda{Resultado: r, Motivo: motivo}, err
	}
	return ResultadoVenda{Desfeita, r, motivo}, primeiro(causa, c.diario.remover(cupom))
}

// repetirDesfecho chama Confirmar ou Desfazimento até ser feito. nil: foi.
func (c *Caixora) repetirDesfecho(cupom int, desfecho Desfecho) *VendaEmAberto {
	a := c.argumentos().cnpjs().cupom(cupom)
	aberto := &VendaEmAberto{Cupom: cupom, Falta: desfecho}
	for i := 0; i < c.cfg.Tentativas; i++ {
		if i > 0 {
			time.Sleep(c.cfg.Pausa)
		}
		trava.Lock()
		r := c.darDesfecho(cupom, desfecho, a)
		trava.Unlock()
		if desfechoFeito(r) {
			return nil
		}
		aberto.Mensagem = r.Mensagem
	}
	return aberto
}

// ConcluirVenda dá o desfecho a uma venda do diário e a tira dele. Depois de uma queda, quem decide
// é o PDV: "iniciada" e "desfazer" se desfazem; "confirmar" se confirma; "aprovada" se confirma
// apenas se a venda está nos registros do próprio PDV, e se não, se desfaz. Outro desfecho é
// recusado.
func (c *Caixora) ConcluirVenda(cupom int, desfecho Desfecho) error {
	var estado Estado
	switch desfecho {
	case DesfechoConfirmar:
		estado = EstadoConfirmar
	case DesfechoDesfazer:
		estado = EstadoDesfazer
	default:
		return &ArgumentoInvalido{"desfecho", fmt.Sprintf("%q não existe", string(desfecho))}
	}
	if c.diario == nil {
		return ErrSemDiario
	}
	marcar := func() error { return c.diario.decidir(cupom, desfecho, estado) }
	if err := ocupar(pendencia{cupom, desfecho}, cupom, marcar); err != nil {
		return err
	}
	defer desocupar()
	if err := c.repetirDesfecho(cupom, desfecho); err != nil {
		return err
	}
	return c.diario.remover(cupom)
}

// ErrSemDiario é o erro de consultar o diário sem que a configuração diga qual é.
var ErrSemDiario = errors.New("não há diário na configuração")

// VendasEmAberto lista as vendas do diário, na ordem em que foram iniciadas.
func (c *Caixora) VendasEmAberto() ([]VendaNoDiario, error) {
	if c.diario == nil {
		return nil, ErrSemDiario
	}
	travaDiario.Lock()
	defer travaDiario.Unlock()
	return c.diario.ler()
}

// incerta diz se uma resposta que não é aprovação deixa em dúvida se a venda foi feita.
func incerta(r Resultado, duracao time.Duration) bool {
	if !r.recusa() {
		return true
	}
	switch r.Mensagem {
	case "GP NÃO ATIVO":
		// Sem GP, a chamada termina após a espera inicial de 1000 ms, antes de gravar o pedido. Com
		// o GP caindo depois de gravado, ela leva ao menos 1300 ms.
		return duracao >= 1250*time.Millisecond
	case "GP NAO ATIVO", "FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA":
		return true
	}
	return false
}

func confere(r Resultado, venda Venda) bool {
	if valor, ok := r.ValorCentavos(); !ok || valor != venda.valor {
		return false
	}
	cupom, err := strconv.Atoi(r.Cupom)
	return err == nil && digitos(r.Cupom) && cupom == venda.cupom
}

// primeiro devolve o primeiro erro que não seja nil.
func primeiro(erros ...error) error {
	for _, err := range erros {
		if err != nil {
			return err
		}
	}
	return nil
}
