//go:build !windows

package caixora

import "os"

func substituir(novo, caminho string) error { return os.Rename(novo, caminho) }
