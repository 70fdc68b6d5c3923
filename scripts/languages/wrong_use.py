#!/usr/bin/env python3
"""Uses the bridge wrongly in every way that it should survive, and checks its replies.

    wrong_use.py <command that starts the bridge...>

Nothing that is sent here may reach the GP.
"""
import json
import os
import subprocess
import sys
import tempfile

CNPJS = {"sCNPJCliente": "12.345.678/0001-95", "sCNPJParceiro": "11.222.333/0001-81"}


def request(function, args):
    return json.dumps({"id": "p1", "funcao": function, "args": args}, ensure_ascii=False).encode()


def sale(without=(), **changes):
    args = CNPJS | {"dValor": "12,50", "iCupom": 17, "iLeitor": 1} | changes
    return request("VendeCreditoVista", {k: v for k, v in args.items() if k not in without})


def link(count, items, **changes):
    return request("LinkPagamento", CNPJS | {
        "iParcelas": 1, "dValor": "31,50", "iCupom": 17, "iQtdeItens": count, "sItens": items,
        "sCampo011": "", "sCampo012": "", "iLeitor": 1} | changes)


def answer(text):
    return request("ContinuaFuncaoQJInterativo", {"sInformacao": text})


# Lines with a part of the error that each must get; the id is echoed.
REFUSED = [
    (sale(dValor="12,505"), 'dValor: falta um texto como "12,50"'),
    (sale(dValor="1.000,00"), "dValor"),
    (sale(dValor="1250"), 'dValor: falta um texto como "12,50"'),
    (sale(dValor="-1"), "dValor"),
    (sale(dValor=""), "dValor"),
    (sale(dValor=","), "dValor"),
    (sale(dValor="12,"), "dValor"),
    (sale(dValor="1e3"), "dValor"),
    (sale(dValor=" 12,50"), "dValor"),
    (sale(dValor="2147483648"), "dValor"),
    (sale(dValor="99999999999999999999"), "dValor"),
    (sale(dValor="0,00"), "dValor: uma venda é de ao menos um centavo"),
    (sale(dValor=12.5), "dValor: falta um texto"),
    (sale(dValor=12), "dValor: falta um texto"),
    (sale(dValor=None), "dValor"),
    (sale(centavos=1250), "dValor e centavos: falta escolher um só"),
    (sale(without=["dValor"], centavos=12.5), "centavos: falta um número inteiro"),
    (sale(without=["dValor"], centavos="1250"), "centavos"),
    (sale(without=["dValor"], centavos=-1), "centavos"),
    (sale(without=["dValor"], centavos=0), "centavos: uma venda"),
    (sale(without=["dValor"], centavos=214748364800), "centavos"),
    (sale(without=["dValor"], centavos=2**63), "centavos"),
    (sale(iCupom="17"), "iCupom: falta um número inteiro de 1 a 2147483647"),
    (sale(iCupom=0), "iCupom"),
    (sale(iCupom=-2147483648), "iCupom"),
    (sale(iCupom=2147483648), "iCupom"),
    (sale(iCupom=2**32 + 17), "iCupom"),
    (sale(iCupom=2**64 - 1), "iCupom"),
    (sale(iCupom=17.0), "iCupom"),
    (sale(iCupom=True), "iCupom"),
    (sale(iCupom=[17]), "iCupom"),
    (sale(iLeitor=2147483648), "iLeitor"),
    (sale(sCNPJCliente=12345678000195), "sCNPJCliente: falta um texto"),
    (sale(sCNPJCliente="12😀"), 'sCNPJCliente: o caractere "😀" (U+1F600)'),
    (sale(sCNPJCliente="日"), 'o caractere "日" (U+65E5) não existe'),
    (sale(sCNPJCliente="a\u0081"), "U+0081 não existe"),
    (sale(sCNPJCliente="1\0"), "U+0000 não pode"),
    (sale(sCNPJCliente="1\r\n800-001 = 1"), "U+000D não pode"),
    (sale(sCNPJParceiro="1\n"), "sCNPJParceiro: o caractere U+000A"),
    (sale(without=["iLeitor"]), "Falta o argumento iLeitor"),
    (sale(without=["dValor"]), "Falta o argumento dValor"),
    (sale(iParcelas=1), 'Argumento desconhecido: "iParcelas"'),
    (sale(dvalor="1"), 'Argumento desconhecido: "dvalor"'),
    (request("Confirmar", CNPJS | {"iCupom": 0}), "iCupom"),
    (request("Confirmar", CNPJS | {"iCupom": 1, "centavos": 1}), "centavos"),
    (request("VendeCreditoVista", ["a", "b", "1,00", 17]), "args: são 5"),
    (request("VendeCreditoVista", ["a", "b", "1,00", 17, 1, 1]), "args: são 5"),
    (request("VendeCreditoVista", ["a"] * 100_000), "args: são 5"),
    (request("VendeCreditoVista", ["a", "b", 1.0, 17, 1]), "dValor"),
    (request("VendeCreditoVista", "a"), "args: falta um objeto ou uma lista"),
    (request("Atv", None), "args"),
    (request("Teste", ["a"]), "args: são 0"),
    (request("Nada", {}), 'funcao: não há "Nada"'),
    (request("teste", {}), "funcao"),
    (request(7, {}), "funcao: falta o nome"),
    (request("Pasta", ["C:\\"]), "funcao"),
    (link(3, "a¬b¬1¬1,00¬0,00¬1,00|c¬d¬1¬1,00¬0,00¬1,00"), "iQtdeItens: sItens tem 2"),
    (link(0, "a¬b¬1¬1,00¬0,00¬1,00"), "iQtdeItens: sItens tem 1"),
    (link(1, ""), "iQtdeItens: sItens tem 0"),
    (link(1, "a", sCampo011="Pão 🍞"), "sCampo011: o caractere"),
    (answer("1¬2"), 'sInformacao: o caractere "¬" separa os campos'),
    (answer("sim\n"), "sInformacao: o caractere U+000A"),
    (answer(1), "sInformacao: falta um texto"),
    (b'{"id":"p1","funcao":"Teste","arg":{}}', 'Chave desconhecida: "arg"'),
    (b'{"id":"p1"}', "funcao: falta"),
]

# The same, but for lines whose id cannot be told: null is echoed.
UNREADABLE = [
    (b"", "JSON inválido"),
    (b"\r", "JSON inválido"),
    (b"{", "JSON inválido"),
    (b"Teste", "JSON inválido"),
    (b"\0", "JSON inválido"),
    (b'{"id":1,"funcao":"Teste"} {}', "JSON inválido"),
    (b"{'id':1}", "JSON inválido"),
    (b'{"id":1,"funcao":"Teste\xe7"}', "JSON inválido"),
    (b'{"id":1,"funcao":"\xc0\xaf"}', "JSON inválido"),
    (b'{"id":1,"funcao":"\xed\xa0\x80"}', "JSON inválido"),
    (b'{"id":1,"funcao":"\\ud800"}', "JSON inválido"),
    (b'{"id":1,"id":2,"funcao":"Teste"}', 'Chave repetida: "id"'),
    (b'{"id":1,"args":{"iCupom":1,"iCupom":2}}', 'Chave repetida: "iCupom"'),
    (b'{"id":1,"\\u0069d":2}', 'Chave repetida: "id"'),
    (b'{"id":1e999}', "número fora do alcance"),
    (b"[" * 500_000, "níveis demais"),
    (b'{"id":' * 100_000, "níveis demais"),
    (b"[]", "O pedido não é um objeto"),
    (b"7", "O pedido não é um objeto"),
    (b"null", "O pedido não é um objeto"),
    (b" " * (1 << 20) + b"{}", "A linha tem mais de 1048576 bytes"),
    (b"x" * (64 << 20), "A linha tem mais de 1048576 bytes"),
]

# Right use at the edges of the wrong: lines with the reply that each must get.
ANSWERED = [
    (b'{"funcao":"Teste"}', {"id": None, "ok": True, "texto": "OK"}),
    (b'\xef\xbb\xbf{"id":{"a":["\xe2\x82\xac",null]},"funcao":"Teste","args":[]}\r',
     {"id": {"a": ["€", None]}, "ok": True, "texto": "OK"}),
    (b'{"id":-1.5,"funcao":"Teste","args":{}}', {"id": -1.5, "ok": True, "texto": "OK"}),
    (b'{"id":false,"funcao":"Teste"}' + b" " * 1_000_000,
     {"id": False, "ok": True, "texto": "OK"}),
]


class Bridge:
    def __init__(self, command, folder=None):
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=self.errors, cwd=folder)

    def ask(self, line):
        self.process.stdin.write(line + b"\n")
        self.process.stdin.flush()
        return self.read()

    def read(self):
        line = self.process.stdout.readline()
        return json.loads(line.decode("utf-8", "strict")) if line else None

    def end(self, rest=b""):
        """What it writes and its status once the input has ended, and its standard error."""
        try:
            self.process.stdin.write(rest)
            self.process.stdin.close()
        except BrokenPipeError:
            pass
        output = self.process.stdout.read()
        status = self.process.wait()
        self.errors.seek(0)
        return output, status, self.errors.read().decode("cp1252")


def expect(line, right, got):
    if not right:
        sys.exit(f"A ponte respondeu a {line[:200]!r}: {got}")


def check_replies(command):
    bridge = Bridge(command)
    for rows, identity in ((REFUSED, "p1"), (UNREADABLE, None)):
        for line, part in rows:
            reply = bridge.ask(line)
            expect(line, reply and set(reply) == {"id", "ok", "erro"} and reply["id"] == identity
                   and reply["ok"] is False and part in reply["erro"], reply)
    for line, reply in ANSWERED:
        got = bridge.ask(line)
        expect(line, got == reply, got)
    # "€" is a character of Windows-1252: it is the library that refuses this one.
    got = bridge.ask(sale(sCNPJCliente="€"))
    expect(b"euro", not got["ok"] and got["mensagem"] == "CNPJ DO CLIENTE INVÁLIDO", got)
    ended = bridge.end()
    expect(b"end", ended == (b"", 0, ""), ended)


def check_unfinished_line(command):
    output, status, _ = Bridge(command).end(sale())
    reply = json.loads(output)
    expect(b"unfinished", status == 0 and "no meio da linha" in reply["erro"], reply)


def check_unwritable_log(command):
    """The library ends the process: the pipe closes, and its words are not among the replies."""
    with tempfile.TemporaryDirectory() as folder:
        open(os.path.join(folder, "Log"), "w").close()
        bridge = Bridge(command, folder)
        got = bridge.ask(b'{"funcao":"Teste"}')
        expect(b"Teste", got["ok"], got)
        got = bridge.ask(request("CancelarFluxoQJInterativo", {}))
        expect(b"log", got is None, got)
        output, status, errors = bridge.end()
        expect(b"log", (output, status) == (b"", 1) and "criar o log" in errors,
               (output, status, errors))


if __name__ == "__main__":
    check_replies(sys.argv[1:])
    check_unfinished_line(sys.argv[1:])
    check_unwritable_log(sys.argv[1:])
