package caixora

import (
	"context"
	"errors"
	"fmt"
	"strings"
	"sync"
	"time"
)

// InicioFluxo são os argumentos do fluxo interativo. O que significam é assunto do Trevix.
type InicioFluxo struct {
	Funcao    uint32
	Valor     Centavos
	Campo3    uint32
	Campo4    string
	Campo6    string
	Campo7    string
	Campo8    string
	Campo9    string
	Campo10   uint32
	FuncaoFim uint32 // a função de encerramento; com a da venda, outra venda começaria
}

// Etapa é a da função da DLL com que o fluxo terminou.
type Etapa string

const (
	EtapaInicia   Etapa = "Inicia"
	EtapaAguarda  Etapa = "Aguarda"
	EtapaContinua Etapa = "Continua"
	EtapaFinaliza Etapa = "Finaliza"
	EtapaCancelar Etapa = "Cancelar"
)

// ResultadoFluxo é como terminou o fluxo interativo.
type ResultadoFluxo struct {
	Concluido bool // veio o retorno, e a finalização deu 0 ou 39
	Codigo    int  // o código da DLL na etapa; 39 é apenas o envio que não foi feito
	Etapa     Etapa
	Retorno   string            // o texto com "[RETORNO]"; vindo, o Trevix terminou a transação
	Campos    map[string]string // as partes "CHAVE:valor" do retorno
	Motivo    string            // de não ter concluído, ou do código
}

// ErrCancelar, devolvido por perguntar, cancela o fluxo. Fluxo o devolve como está.
var ErrCancelar = errors.New("fluxo cancelado pelo operador")

// ErrFluxoEmCurso é o erro de iniciar um fluxo durante outro, que seria encerrado no meio.
var ErrFluxoEmCurso = errors.New("já há um fluxo interativo em curso")

const pausaDoFluxo = 200 * time.Millisecond

var fluxoEmCurso sync.Mutex

var motivoDoCodigo = map[int]string{
	30: "não há a linha CAMINHO em ConfigQJ.ini",
	31: "CAMINHO está vazio em ConfigQJ.ini",
	32: "não há Trevix.exe legível na pasta",
	33: "o Trevix foi iniciado e não está em execução",
	34: "falha ao iniciar o Trevix",
	35: "o arquivo de resposta não pôde ser criado",
	36: "falha ao gravar ou trocar o arquivo de resposta",
	37: "ConfigQJ.ini não pôde ser lido",
	38: "o valor não tem a forma 0,00",
	39: "não há Email.exe na pasta do Trevix; o envio não foi feito",
	40: "CNPJ inválido",
	41: "o Trevix está sendo atualizado",
	42: "o programa não está como administrador",
	43: "um Trevix em execução não pôde ser encerrado",
}

func motivo(codigo int) string {
	if m, ok := motivoDoCodigo[codigo]; ok || codigo == 0 {
		return m
	}
	return fmt.Sprintf("código %d", codigo)
}

// Fluxo conduz uma transação pelo Trevix, chamando perguntar a cada pergunta. Um erro de perguntar
// cancela o fluxo e é devolvido como está, ErrCancelar entre eles; um pânico também cancela antes
// de seguir. O contexto é consultado a cada consulta e depois de cada resposta: encerrado, o fluxo
// é cancelado e o erro do contexto é devolvido. Uma transação que a DLL não completa não é um erro:
// veja Concluido e Motivo.
func (c *Caixora) Fluxo(ctx context.Context, inicio InicioFluxo,
	perguntar func(pergunta string) (resposta string, err error)) (ResultadoFluxo, error) {
	argsInicio := c.argumentosDoFluxo(inicio, inicio.Funcao)
	argsFim := c.argumentosDoFluxo(inicio, inicio.FuncaoFim)
	if inicio.FuncaoFim == 0 || inicio.FuncaoFim == inicio.Funcao {
		argsInicio.recusar("FuncaoFim", "%d não é uma função de encerramento", inicio.FuncaoFim)
	}
	if perguntar == nil {
		argsInicio.recusar("perguntar", "é nil")
	}
	if err := primeiro(argsInicio.err, ctx.Err()); err != nil {
		return ResultadoFluxo{}, err
	}
	if !fluxoEmCurso.TryLock() {
		return ResultadoFluxo{}, ErrFluxoEmCurso
	}
	defer fluxoEmCurso.Unlock()
	codigo, err := c.iniciarFluxo(argsInicio)
	if err != nil {
		return ResultadoFluxo{}, err
	}
	if codigo != 0 {
		r := ResultadoFluxo{Codigo: codigo, Etapa: EtapaInicia, Motivo: motivo(codigo)}
		return r, nil
	}

	aberto := true
	cancelar := func(r ResultadoFluxo, err error) (ResultadoFluxo, error) {
		aberto = false
		if codigo := c.codigo("CancelarFluxoQJInterativo", nil); codigo != 0 {
			r.Motivo += "; o cancelamento falhou: " + motivo(codigo)
			if r.Codigo == 0 {
				r.Codigo, r.Etapa = codigo, EtapaCancelar
			}
		}
		return r, err
	}
	defer func() {
		if aberto { // um pânico de perguntar
			_, _ = cancelar(ResultadoFluxo{}, nil)
		}
	}()
	desistir := func(err error) (ResultadoFluxo, error) {
		return cancelar(ResultadoFluxo{Etapa: EtapaAguarda, Motivo: err.Error()}, err)
	}
	for {
		texto := c.aguardar()
		switch {
		case strings.HasPrefix(texto, erroAbortar):
			m := strings.TrimPrefix(texto, erroAbortar)
			return cancelar(ResultadoFluxo{Etapa: EtapaAguarda, Motivo: m}, nil)
		case strings.Contains(texto, "[RETORNO]"):
			aberto = false
			return c.finalizar(texto, argsFim), nil
		case texto == "":
			if err := esperar(ctx, pausaDoFluxo); err != nil {
				return desistir(fmt.Errorf("fluxo cancelado pelo PDV: %w", err))
			}
		default:
			resposta, err := perguntar(texto)
			if err == nil {
				err = ctx.Err()
			}
			argsResposta := c.argumentos().textoSem("¬", "sInformacao", resposta)
			if err := primeiro(err, argsResposta.err); err != nil {
				return desistir(err)
			}
			codigo := c.codigo("ContinuaFuncaoQJInterativo", argsResposta.lista)
			if codigo != 0 {
				r := ResultadoFluxo{Codigo: codigo, Etapa: EtapaContinua, Motivo: motivo(codigo)}
				return cancelar(r, nil)
			}
		}
	}
}

const erroAbortar = "[ERROABORTAR]#"

func (c *Caixora) argumentosDoFluxo(f InicioFluxo, funcao uint32) *argumentos {
	const separador = "¬"
	a := c.argumentos().numero(funcao).textoSem(separador, "sCNPJ", c.cfg.CNPJCliente)
	a.numero(f.Campo3).textoSem(separador, "sCampo4", f.Campo4)
	a.conferirValor("sValor", f.Valor, 0).texto("sValor", f.Valor.String())
	a.textoSem(separador, "sCampo6", f.Campo6).textoSem(separador, "sCampo7", f.Campo7)
	a.textoSem(separador, "sCampo8", f.Campo8).textoSem(separador, "sCampo9", f.Campo9)
	return a.numero(f.Campo10).texto("sCampo11", "")
}

func (c *Caixora) iniciarFluxo(a *argumentos) (int, error) {
	trava.Lock()
	defer trava.Unlock()
	if err := exigirLivre(pendencia{}); err != nil {
		return 0, err
	}
	return c.dll.codigo("IniciaFuncaoQJInterativo", a.lista), nil
}

func (c *Caixora) codigo(funcao string, args []argumento) int {
	trava.Lock()
	defer trava.Unlock()
	return c.dll.codigo(funcao, args)
}

func (c *Caixora) aguardar() string {
	trava.Lock()
	defer trava.Unlock()
	return decodificar(c.dll.texto("AguardaFuncaoQJInterativo", nil))
}

func (c *Caixora) finalizar(retorno string, a *argumentos) ResultadoFluxo {
	codigo := c.codigo("FinalizaFuncaoQJInterativo", a.lista)
	return ResultadoFluxo{
		Concluido: codigo == 0 || codigo == 39,
		Codigo:    codigo,
		Etapa:     EtapaFinaliza,
		Retorno:   retorno,
		Campos:    camposDoRetorno(retorno),
		Motivo:    motivo(codigo),
	}
}

func camposDoRetorno(retorno string) map[string]string {
	campos := map[string]string{}
	for _, parte := range strings.Split(retorno, "|") {
		if chave, valor, ok := strings.Cut(parte, ":"); ok {
			campos[chave] = valor
		}
	}
	return campos
}

// esperar volta antes, com o erro do contexto, se ele se encerra.
func esperar(ctx context.Context, pausa time.Duration) error {
	relogio := time.NewTimer(pausa)
	defer relogio.Stop()
	select {
	case <-ctx.Done():
		return ctx.Err()
	case <-relogio.C:
		return nil
	}
}
