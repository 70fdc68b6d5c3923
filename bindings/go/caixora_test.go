package caixora

import (
	"context"
	"errors"
	"math"
	"os"
	"path/filepath"
	"reflect"
	"strings"
	"testing"
	"time"
)

func TestLerCentavos(t *testing.T) {
	for texto, esperado := range map[string]Centavos{
		"12,50": 1250, "12,5": 1250, "12": 1200, "0,01": 1, "2147483647,99": ValorMaximo,
	} {
		if v, err := LerCentavos(texto); v != esperado || err != nil {
			t.Errorf("%q: %d, %v", texto, v, err)
		}
	}
	for _, texto := range []string{
		"", "12,505", "12,", ",50", "1.000", "12.50", "-1,00", "+1", " 1", "1,2,3", "2147483648",
		"92233720368547758080",
	} {
		if v, err := LerCentavos(texto); err == nil {
			t.Errorf("%q foi aceito: %d", texto, v)
		}
	}
}

func TestCodificar(t *testing.T) {
	for texto, esperado := range map[string]string{
		"": "\x00", "Ação €¬~": "A\xE7\xE3o \x80\xAC~\x00", "Ÿ\u00A0ÿ": "\x9F\xA0\xFF\x00",
	} {
		if b, err := codificar("s", texto, ""); string(b) != esperado || err != nil {
			t.Errorf("%q: %q, %v", texto, b, err)
		}
	}
	for texto, esperado := range map[string]string{
		"a😀":      `s: o caractere "😀" (U+1F600) não existe em Windows-1252`,
		"\u0081":  `s: o caractere U+0081 não existe em Windows-1252`,
		"a\x00":   `s: o caractere U+0000 não é aceito`,
		"a\rb":    `s: o caractere U+000D não é aceito`,
		"a\nb":    `s: o caractere U+000A não é aceito`,
		"a¬b":     `s: o caractere "¬" (U+00AC) não é aceito`,
		"caf\xE9": `s: o byte 0xE9 não faz parte de um texto em UTF-8`,
	} {
		if b, err := codificar("s", texto, "¬"); err == nil || err.Error() != esperado {
			t.Errorf("%q: %q, %v", texto, b, err)
		}
	}
}

func TestDecodificar(t *testing.T) {
	for b := 0; b < 256; b++ {
		s := decodificar([]byte{byte(b)})
		volta, err := codificar("s", s, "")
		indefinido := strings.IndexByte("\x81\x8D\x8F\x90\x9D", byte(b)) >= 0
		recusado := b == 0 || b == '\r' || b == '\n' || indefinido
		if recusado != (err != nil) || err == nil && volta[0] != byte(b) {
			t.Errorf("%02X: %q, %v", b, s, err)
		}
		if indefinido && s != string(rune(b)) {
			t.Errorf("%02X: %q", b, s)
		}
	}
}

func TestInterpretar(t *testing.T) {
	aprovada := interpretar("S;1;OK\r\nC;7;050;a;b;c;d;e;1;f;g;h;i;j;k;l;m\r\nI;x\r\nI;y;z")
	campos := Campos{"7", "050", "a", "b", "c", "d", "e", "1", "f", "g", "h", "i", "j", "k", "l"}
	if aprovada.Codigo != 1 || aprovada.Mensagem != "OK" || aprovada.Campos != campos ||
		!reflect.DeepEqual(aprovada.Comprovante, []string{"x", "y;z"}) || !aprovada.Aprovada() {
		t.Errorf("%+v", aprovada)
	}
	if v, ok := aprovada.ValorCentavos(); v != 50 || !ok {
		t.Errorf("%d, %v", v, ok)
	}
	for _, valor := range []string{"", "+50", "5 ", "99999999999999999999"} {
		if v, ok := (Resultado{Campos: Campos{ValorCentavos: valor}}).ValorCentavos(); ok {
			t.Errorf("%q: %d", valor, v)
		}
	}
	for texto, mensagem := range map[string]string{
		"": "", "S;0;": "", "S;0;a\r\nb": "a\r\nb", "S;3;a": "S;3;a", "texto": "texto",
	} {
		if r := interpretar(texto); r.Codigo != 0 || r.Mensagem != mensagem || r.Aprovada() {
			t.Errorf("%q: %+v", texto, r)
		}
	}
	for texto, local := range map[string]bool{
		"S;2;COMANDO COM SUCESSO\r\nC;17;;;;;;;1;;;;;;;":  true,
		"S;2;COMANDO COM SUCESSO\r\nC;17;;;;;4;;1;;;;;;;": false,
		"S;1;COMANDO COM SUCESSO\r\nC;17;;;;;;;1;;;;;;;":  false,
		"S;2;COMANDO\r\nC;17;;;;;;;1;;;;;;;":              false,
	} {
		if r := interpretar(texto); r.RespostaLocal() != local || r.Aprovada() == local {
			t.Errorf("%q: %+v", texto, r)
		}
	}
}

func TestIncerta(t *testing.T) {
	for _, caso := range []struct {
		texto   string
		duracao time.Duration
		incerta bool
	}{
		{"S;0;GP NÃO ATIVO", 1249 * time.Millisecond, false},
		{"S;0;GP NÃO ATIVO", 1250 * time.Millisecond, true},
		{"S;0;GP NAO ATIVO", 0, true},
		{"S;0;FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA", 0, true},
		{"S;0;FALHA INTERNA, A OPERACAO NAO FOI ENVIADA AO GP", time.Hour, false},
		{"S;0;", time.Hour, false},
		{"", 0, true},
		{"GP NÃO ATIVO", 0, true},
	} {
		if incerta(interpretar(caso.texto), caso.duracao) != caso.incerta {
			t.Errorf("%+v", caso)
		}
	}
}

func TestDiario(t *testing.T) {
	d := &diario{filepath.Join(t.TempDir(), "diario.txt")}
	conferir := func(esperado string, err error) {
		t.Helper()
		texto, erroDeLer := os.ReadFile(d.caminho)
		if string(texto) != esperado || (esperado == "") != os.IsNotExist(erroDeLer) || err != nil {
			t.Fatalf("%q, %v, %v", texto, erroDeLer, err)
		}
	}
	conferir("caixora-diario 1\n7;1250;iniciada\n", d.abrir(7, 1250))
	conferir("caixora-diario 1\n7;1250;confirmar\n", d.mudar(7, EstadoConfirmar))
	for _, cupom := range []int{7, 8} {
		var aberta *VendaEmAberto
		err := d.abrir(cupom, 5)
		if !errors.As(err, &aberta) || aberta.Cupom != 7 || aberta.Falta != DesfechoConfirmar {
			t.Errorf("%d: %v", cupom, err)
		}
	}
	conferir("", d.remover(7))
}

func TestDecidir(t *testing.T) {
	for estado, desfechos := range map[Estado][]Desfecho{
		EstadoIniciada:  {DesfechoDesfazer},
		EstadoAprovada:  {DesfechoConfirmar, DesfechoDesfazer},
		EstadoConfirmar: {DesfechoConfirmar},
		EstadoDesfazer:  {DesfechoDesfazer},
	} {
		aceitos := []Desfecho(nil)
		for _, desfecho := range []Desfecho{DesfechoConfirmar, DesfechoDesfazer} {
			d := &diario{filepath.Join(t.TempDir(), "diario.txt")}
			if err := primeiro(d.abrir(7, 1), d.mudar(7, estado)); err != nil {
				t.Fatal(err)
			}
			if d.decidir(7, desfecho, Estado(desfecho)) == nil {
				aceitos = append(aceitos, desfecho)
			}
		}
		if !reflect.DeepEqual(aceitos, desfechos) {
			t.Errorf("%s: %v", estado, aceitos)
		}
	}
}

// dllDeTeste responde com uma aprovação do que se pediu, e com o que estiver em respostas.
type dllDeTeste struct {
	respostas map[string]string
	chamadas  []string
}

func (d *dllDeTeste) texto(funcao string, _ []argumento) []byte {
	d.chamadas = append(d.chamadas, funcao)
	return []byte(d.respostas[funcao])
}

func (d *dllDeTeste) codigo(string, []argumento) int { return 30 }

func (d *dllDeTeste) constante(string) string { return "OK" }

const feito = "S;2;COMANDO COM SUCESSO\r\nC;7;;;;;;;1;;;;;;;"

func novaDeTeste(t *testing.T) (*Caixora, *dllDeTeste) {
	d := &dllDeTeste{respostas: map[string]string{
		"VendeDebito": "S;1;OK\r\nC;7;100;;;;;;1;;;;;;;", "Confirmar": feito, "Desfazimento": feito,
	}}
	cfg := Configuracao{Leitor: 1, Tentativas: 1}
	return &Caixora{cfg, d, &diario{filepath.Join(t.TempDir(), "diario.txt")}}, d
}

func TestVendaEmAndamento(t *testing.T) {
	c, d := novaDeTeste(t)
	_, err := c.VenderEConfirmar(Debito(100, 7), func(Resultado) error {
		_, venda := c.VendeDebito(100, 8)
		_, completa := c.VenderEConfirmar(Debito(100, 8), func(Resultado) error { return nil })
		_, confirmar := c.Confirmar(7)
		_, cancelar := c.Cancelar(0, 7, "")
		_, fluxo := c.Fluxo(context.Background(), InicioFluxo{FuncaoFim: 99},
			func(string) (string, error) { return "", nil })
		concluir := c.ConcluirVenda(7, DesfechoDesfazer)
		for i, err := range []error{venda, completa, confirmar, cancelar, fluxo, concluir} {
			var andamento *VendaEmAndamento
			if !errors.As(err, &andamento) || andamento.Cupom != 7 {
				t.Errorf("%d: %v", i, err)
			}
		}
		return nil
	})
	if err != nil || !reflect.DeepEqual(d.chamadas, []string{"VendeDebito", "Confirmar"}) {
		t.Errorf("%v, %v", d.chamadas, err)
	}
}

func TestDesfechoAvulso(t *testing.T) {
	c, d := novaDeTeste(t)
	if err := c.diario.abrir(7, 100); err != nil {
		t.Fatal(err)
	}
	var invalido *ArgumentoInvalido
	if _, err := c.Confirmar(7); !errors.As(err, &invalido) || d.chamadas != nil {
		t.Errorf("%v, %v", d.chamadas, err)
	}
	defer c.EsquecerPendencia()
	d.respostas["Confirmar"] = "S;0;GP NÃO ATIVO"
	if _, err := c.Confirmar(9); err != nil {
		t.Fatal(err)
	}
	var pendencia *PendenciaAberta
	_, err := c.Desfazimento(9)
	if !errors.As(err, &pendencia) || *pendencia != (PendenciaAberta{9, DesfechoConfirmar}) {
		t.Errorf("%v", err)
	}
	d.respostas["Confirmar"] = feito
	if _, err := c.Confirmar(9); err != nil {
		t.Error(err)
	}
}

func TestCupomDivergente(t *testing.T) {
	for _, cupom := range []string{"", "8", "+7"} {
		c, d := novaDeTeste(t)
		d.respostas["VendeDebito"] = "S;1;OK\r\nC;" + cupom + ";100;;;;;;1;;;;;;;"
		var divergente *ValorDivergente
		r, err := c.VenderEConfirmar(Debito(100, 7), func(Resultado) error { return nil })
		if !errors.As(err, &divergente) || r.Situacao != Desfeita {
			t.Errorf("%q: %+v, %v", cupom, r, err)
		}
	}
}

func TestDiarioIlegivel(t *testing.T) {
	vendas, linha := interpretarDiario("caixora-diario 1\r\n2147483647;1;aprovada\r\n")
	if linha != 0 || !reflect.DeepEqual(vendas, []VendaNoDiario{{math.MaxInt32, 1, "aprovada"}}) {
		t.Errorf("%v, %d", vendas, linha)
	}
	for texto, esperada := range map[string]int{
		"": 1, "caixora-diario 2\n": 1, "caixora-diario 1": 1, "caixora-diario 1\n\n": 2,
		"caixora-diario 1\n1;1;iniciada":                 2,
		"caixora-diario 1\n1;1;iniciada\n1;1;iniciada\n": 3,
		"caixora-diario 1\n1;1;vendida\n":                2,
		"caixora-diario 1\n1;1\n":                        2,
		"caixora-diario 1\n1;1;iniciada;\n":              2,
		"caixora-diario 1\n0;1;iniciada\n":               2,
		"caixora-diario 1\n2147483648;1;iniciada\n":      2,
		"caixora-diario 1\n1;-1;iniciada\n":              2,
		"caixora-diario 1\n1;+1;iniciada\n":              2,
		"caixora-diario 1\n1;214748364800;iniciada\n":    2,
	} {
		if _, linha := interpretarDiario(texto); linha != esperada {
			t.Errorf("%q: linha %d", texto, linha)
		}
	}
}
