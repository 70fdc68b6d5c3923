package caixora

import (
	"fmt"
	"strings"
	"unicode"
	"unicode/utf8"
)

// c1 são os caracteres dos bytes 0x80 a 0x9F de Windows-1252. Os demais bytes valem o caractere de
// mesmo número. Zero: o byte não é caractere nenhum.
var c1 = [32]rune{
	'€', 0, '‚', 'ƒ', '„', '…', '†', '‡', 'ˆ', '‰', 'Š', '‹', 'Œ', 0, 'Ž', 0,
	0, '‘', '’', '“', '”', '•', '–', '—', '˜', '™', 'š', '›', 'œ', 0, 'ž', 'Ÿ',
}

var byteDe = func() map[rune]byte {
	m := make(map[rune]byte, len(c1))
	for i, r := range c1 {
		if r != 0 {
			m[r] = byte(0x80 + i)
		}
	}
	return m
}()

// TextoInvalido é o erro de um texto que não pode ser entregue à DLL. Nada foi chamado.
type TextoInvalido struct {
	Argumento string // o nome do argumento na DLL
	Caractere rune   // utf8.RuneError quando o texto não é UTF-8
	Motivo    string
}

func (e *TextoInvalido) Error() string { return e.Argumento + ": " + e.Motivo }

// codificar converte para Windows-1252, com o zero final que a DLL espera. São recusados, além dos
// proibidos, o NUL, que encerraria o texto, e CR e LF, que criariam linhas no pedido.
func codificar(argumento, s, proibidos string) ([]byte, error) {
	recusar := func(r rune, formato string, args ...any) ([]byte, error) {
		return nil, &TextoInvalido{argumento, r, fmt.Sprintf(formato, args...)}
	}
	bytes := make([]byte, 0, len(s)+1)
	for i, r := range s {
		if r == utf8.RuneError {
			if _, n := utf8.DecodeRuneInString(s[i:]); n == 1 {
				return recusar(r, "o byte 0x%02X não faz parte de um texto em UTF-8", s[i])
			}
		}
		if r == 0 || r == '\r' || r == '\n' || strings.ContainsRune(proibidos, r) {
			return recusar(r, "o caractere %s não é aceito", descrever(r))
		}
		b, existe := byteDe[r]
		switch {
		case existe:
		case r < 0x80, r >= 0xA0 && r <= 0xFF:
			b = byte(r)
		default:
			return recusar(r, "o caractere %s não existe em Windows-1252", descrever(r))
		}
		bytes = append(bytes, b)
	}
	return append(bytes, 0), nil
}

func descrever(r rune) string {
	if unicode.IsGraphic(r) {
		return fmt.Sprintf("\"%c\" (U+%04X)", r, r)
	}
	return fmt.Sprintf("U+%04X", r)
}

// decodificar aceita todo byte: os cinco que não são caracteres viram o controle de mesmo número.
func decodificar(bytes []byte) string {
	var s strings.Builder
	s.Grow(len(bytes))
	for _, b := range bytes {
		r := rune(b)
		if b >= 0x80 && b < 0xA0 && c1[b-0x80] != 0 {
			r = c1[b-0x80]
		}
		s.WriteRune(r)
	}
	return s.String()
}
