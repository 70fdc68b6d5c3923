package caixora

import (
	"fmt"
	"strconv"
	"strings"
)

// Centavos é um valor em reais contado em centavos inteiros: 1250 é R$ 12,50.
type Centavos int64

// ValorMaximo é o maior valor que a DLL aceita: R$ 2.147.483.647,99.
const ValorMaximo Centavos = 214748364799

// LerCentavos lê "12,50", "12,5" ou "12". Mais de duas casas são recusadas, e não arredondadas; o
// ponto também, pois "1.000" pode ser mil ou um.
func LerCentavos(texto string) (Centavos, error) {
	recusar := func(motivo string) (Centavos, error) {
		return 0, &ArgumentoInvalido{"dValor", fmt.Sprintf("%q %s", texto, motivo)}
	}
	inteiros, casas, temVirgula := strings.Cut(texto, ",")
	if !digitos(inteiros) || temVirgula && !digitos(casas) {
		return recusar(`não tem a forma "12,50"`)
	}
	if len(casas) > 2 {
		return recusar("tem mais de duas casas decimais")
	}
	n, err := strconv.ParseInt(inteiros+casas+"00"[len(casas):], 10, 64)
	if err != nil || Centavos(n) > ValorMaximo {
		return recusar(fmt.Sprintf("passa do máximo, %s", ValorMaximo))
	}
	return Centavos(n), nil
}

// String escreve o valor como "12,50".
func (v Centavos) String() string {
	if v < 0 {
		return "-" + (-v).String()
	}
	return fmt.Sprintf("%d,%02d", int64(v/100), int64(v%100))
}

func digitos(s string) bool {
	return s != "" && strings.Trim(s, "0123456789") == ""
}
