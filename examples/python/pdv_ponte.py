#!/usr/bin/env python3
"""PDV de exemplo pela ponte: qualquer linguagem, e um programa de 32 bits também, usa a
Caixora.dll por um processo filho que recebe e devolve uma linha de JSON por chamada.

    pdv_ponte.py [--cair | --retomar] [comando da ponte...]

Sem comando, "caixora_host --ponte". Só a biblioteca padrão do Python 3.9 ou mais novo.
"""
import json
import os
import subprocess
import sys
import time

DIARIO = "diario.txt"
CNPJS = {"sCNPJCliente": "12.345.678/0001-95", "sCNPJParceiro": "11.222.333/0001-81"}
LEITOR = {"iLeitor": 1}
TENTATIVAS = 10
PAUSA = 2.0


class Erro(Exception):
    """Algo que o operador precisa saber; o texto é para ele."""


class PendenciaAberta(Erro):
    """Um desfecho foi recusado: a DLL trataria a próxima operação como se fosse ele."""


class VendaEmAberto(Erro):
    """A venda ainda não tem desfecho; está no diário."""


class ValorDivergente(Erro):
    """O GP aprovou outro valor, ou outro cupom; foi desfeito o cupom pedido."""


class PonteCaiu(Erro):
    """A ponte terminou no meio de uma chamada: não se sabe o que houve com ela."""


class Ponte:
    """O processo filho. Uma chamada por vez."""

    def __init__(self, comando):
        self.processo = subprocess.Popen(comando, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                         encoding="utf-8")
        self.numero = 0
        self.pendente = None  # (cupom, função) de um desfecho recusado
        self.em_venda = None  # cupom de vender_e_confirmar ou de concluir_venda

    def chamar(self, funcao, **args):
        self.numero += 1
        pedido = {"id": self.numero, "funcao": funcao, "args": args}
        try:
            self.processo.stdin.write(json.dumps(pedido) + "\n")
            self.processo.stdin.flush()
            linha = self.processo.stdout.readline()
        except BrokenPipeError:
            linha = ""
        if not linha.endswith("\n"):
            raise PonteCaiu("A ponte terminou; o motivo está na saída de erro")
        resposta = json.loads(linha)
        if resposta["id"] != self.numero:
            raise PonteCaiu("A ponte respondeu a outro pedido")
        if "erro" in resposta:  # uso errado: a DLL não foi chamada
            raise Erro(resposta["erro"])
        return resposta

    def ocupar(self, cupom):
        self.recusar_venda_em_andamento()
        self.em_venda = cupom

    def recusar_venda_em_andamento(self):
        if self.em_venda is not None:
            raise Erro(f"há uma venda em andamento: cupom {self.em_venda}")

    def recusar_pendencia(self, desfecho=None):
        if self.pendente not in (None, desfecho):
            cupom, funcao = self.pendente
            raise PendenciaAberta(f"Cupom {cupom}: {funcao} foi recusado; repita-o")

    def pagar(self, funcao, **args):
        self.recusar_venda_em_andamento()
        return self.pagar_na_venda(funcao, **args)

    def pagar_na_venda(self, funcao, **args):
        self.recusar_pendencia()
        return self.chamar(funcao, **CNPJS, **args)

    def dar_desfecho(self, funcao, cupom):
        """Confirmar ou Desfazimento; use concluir_venda, que também cuida do diário."""
        self.recusar_pendencia((cupom, funcao))
        self.pendente = cupom, funcao
        resposta = self.chamar(funcao, **CNPJS, iCupom=cupom)
        if resposta["ok"]:
            self.pendente = None
        return resposta


# ---- Diário: as vendas em aberto, em disco; o mesmo arquivo em todas as linguagens ----

ESTADOS = {  # e os desfechos que cada um admite
    "iniciada": ("desfazer",), "aprovada": ("confirmar", "desfazer"), "confirmar": ("confirmar",),
    "desfazer": ("desfazer",)}
FUNCOES = {"confirmar": "Confirmar", "desfazer": "Desfazimento"}


def ler_diario():
    """{cupom: (centavos, estado)}"""
    try:
        with open(DIARIO, encoding="ascii", newline="") as arquivo:
            linhas = arquivo.read().replace("\r\n", "\n").split("\n")
    except FileNotFoundError:
        return {}
    except (OSError, UnicodeDecodeError) as erro:
        raise Erro(f"diário ilegível: {erro}") from erro
    if linhas[0] != "caixora-diario 1" or linhas[-1] != "":
        raise Erro("diário ilegível")
    vendas = {}
    for linha in linhas[1:-1]:
        cupom, _, resto = linha.partition(";")
        centavos, _, estado = resto.partition(";")
        if not (cupom.isdigit() and 1 <= int(cupom) <= 2**31 - 1 and int(cupom) not in vendas
                and centavos.isdigit() and 1 <= int(centavos) <= 214748364799
                and estado in ESTADOS):
            raise Erro("diário ilegível")
        vendas[int(cupom)] = (int(centavos), estado)
    return vendas


def gravar_diario(vendas):
    try:
        if not vendas:
            if os.path.exists(DIARIO):
                os.remove(DIARIO)
            return
        with open(DIARIO + ".tmp", "w", encoding="ascii", newline="\n") as arquivo:
            arquivo.write("caixora-diario 1\n")
            for cupom, (centavos, estado) in vendas.items():
                arquivo.write(f"{cupom};{centavos};{estado}\n")
            arquivo.flush()
            os.fsync(arquivo.fileno())
        os.replace(DIARIO + ".tmp", DIARIO)
    except OSError as erro:
        raise Erro(f"O diário não pôde ser gravado: {erro}") from erro


def marcar(cupom, estado):
    vendas = ler_diario()
    vendas[cupom] = (vendas[cupom][0], estado)
    gravar_diario(vendas)


def remover(cupom):
    vendas = ler_diario()
    vendas.pop(cupom, None)
    gravar_diario(vendas)


# ---- Venda com confirmação ----

def vender_e_confirmar(ponte, funcao, centavos, cupom, ao_aprovar, **args):
    """Vende e dá à venda um desfecho, e um só. Devolve ("confirmada", "recusada" ou "desfeita",
    motivo). Uma exceção de ao_aprovar desfaz a venda e segue adiante."""
    ponte.ocupar(cupom)
    try:
        return conduzir(ponte, funcao, centavos, cupom, ao_aprovar, args)
    finally:
        ponte.em_venda = None


def conduzir(ponte, funcao, centavos, cupom, ao_aprovar, args):
    ponte.recusar_pendencia()
    for aberta, (_, estado) in ler_diario().items():
        raise VendaEmAberto(f"Cupom {aberta} em aberto ({estado}): "
                            f"falta {' ou '.join(ESTADOS[estado])}, antes de outra venda")
    gravar_diario({cupom: (centavos, "iniciada")})
    inicio = time.monotonic()
    try:
        r = ponte.pagar_na_venda(funcao, centavos=centavos, iCupom=cupom, **LEITOR, **args)
    except PonteCaiu:
        raise  # fica no diário: ao abrir outra ponte, desfaça
    except Erro:
        remover(cupom)  # nada foi chamado
        raise
    duracao = time.monotonic() - inicio
    if not r["ok"]:
        if negativa_certa(r, duracao):
            remover(cupom)
            return "recusada", r["mensagem"]
        concluir(ponte, cupom, "desfazer")
        return "desfeita", "resultado incerto: " + r["mensagem"]
    campos = r["campos"]
    outro_cupom = numero(campos["cupom"]) != cupom
    if outro_cupom or numero(campos["valor_centavos"]) != centavos:
        concluir(ponte, cupom, "desfazer")
        raise ValorDivergente(
            f"Cupom {cupom}: pedidos {centavos} centavos, aprovados \"{campos['valor_centavos']}\""
            f", do cupom \"{campos['cupom']}\"; o desfazimento foi do cupom pedido"
            + (": verifique no GP o da resposta" if outro_cupom else ""))
    try:
        marcar(cupom, "aprovada")
        ao_aprovar(r)
    except BaseException:
        concluir(ponte, cupom, "desfazer")
        raise
    concluir(ponte, cupom, "confirmar")
    return "confirmada", ""


def numero(texto):
    return int(texto) if texto.isascii() and texto.isdigit() else None


def negativa_certa(r, duracao):
    """A venda com certeza não foi feita. Um "GP NÃO ATIVO" antes de 1,25 s veio sem que nada
    fosse gravado; depois disso, o pedido pode ter sido atendido."""
    if not r["bruto"].startswith("S;0;"):
        return False
    if r["mensagem"] == "GP NÃO ATIVO":
        return duracao < 1.25
    return r["mensagem"] not in (
        "GP NAO ATIVO", "FALHA INTERNA, VERIFIQUE NO GP SE A OPERACAO FOI REALIZADA")


def concluir(ponte, cupom, estado):
    """Confirma ou desfaz, insistindo, e tira a venda do diário."""
    try:
        marcar(cupom, estado)
    except Erro:
        pass  # o desfecho não espera pelo disco: o estado que ficou no diário leva ao mesmo
    for tentativa in range(TENTATIVAS):
        if tentativa > 0:
            time.sleep(PAUSA)
        r = ponte.dar_desfecho(FUNCOES[estado], cupom)
        if r["ok"]:
            return remover(cupom)
    raise VendaEmAberto(f"Cupom {cupom} em aberto ({estado}): {r['mensagem']}")


def concluir_venda(ponte, cupom, desfecho):
    """Para uma venda que está no diário."""
    ponte.ocupar(cupom)
    try:
        ponte.recusar_pendencia((cupom, FUNCOES[desfecho]))
        vendas = ler_diario()
        if cupom not in vendas:
            raise Erro(f"Cupom {cupom} não está em aberto no diário")
        estado = vendas[cupom][1]
        if desfecho not in ESTADOS[estado]:
            raise Erro(f"Cupom {cupom} está como \"{estado}\": só se pode "
                       + " ou ".join(ESTADOS[estado]))
        concluir(ponte, cupom, desfecho)
    finally:
        ponte.em_venda = None


def aguardar_gp(ponte, tentativas):
    """Para a abertura do caixa: a DLL inicia um GP fechado, que leva um tempo para responder."""
    for tentativa in range(tentativas):
        if tentativa > 0:
            time.sleep(PAUSA)
        r = ponte.pagar("Atv", iCupom=1, **LEITOR)
        if r["ok"]:
            return
    raise Erro("O GP não está ativo: " + r["mensagem"])


# ---- Fluxo interativo ----

def fluxo(ponte, funcao, funcao_fim, args, perguntar):
    """Conduz o fluxo e devolve as partes CHAVE:valor do retorno. perguntar dá a resposta, ou None
    para cancelar."""
    ponte.recusar_venda_em_andamento()
    ponte.recusar_pendencia()
    r = ponte.chamar("IniciaFuncaoQJInterativo", uFuncao=funcao, **args)
    if not r["ok"]:
        raise Erro(r["mensagem"])
    try:
        while True:
            r = ponte.chamar("AguardaFuncaoQJInterativo")
            texto = r["texto"]
            if not r["ok"]:
                raise Erro(texto)
            if "[RETORNO]" in texto:
                break
            if not texto:
                time.sleep(0.2)
                continue
            resposta = perguntar(texto)
            if resposta is None:
                raise Erro("cancelado pelo operador")
            r = ponte.chamar("ContinuaFuncaoQJInterativo", sInformacao=resposta)
            if not r["ok"]:
                raise Erro(r["mensagem"])
    except PonteCaiu:
        raise
    except BaseException:
        ponte.chamar("CancelarFluxoQJInterativo")
        raise
    r = ponte.chamar("FinalizaFuncaoQJInterativo", uFuncao=funcao_fim, **args)
    if r["codigo"] not in (0, 39):  # 39: concluído, só o envio não foi feito
        raise Erro(r["mensagem"])
    return dict(parte.split(":", 1) for parte in texto.split("|") if ":" in parte)


# ---- O PDV ----

def reais(centavos):
    return f"{centavos // 100},{centavos % 100:02}"


def mostrar_aprovada(cupom, centavos, r):
    print(f"Cupom {cupom}: aprovada, R$ {reais(centavos)}, {r['mensagem']}, "
          f"{len(r['comprovante'])} linhas de comprovante", flush=True)


def vender(ponte, funcao, centavos, cupom, **args):
    situacao, motivo = vender_e_confirmar(
        ponte, funcao, centavos, cupom, lambda r: mostrar_aprovada(cupom, centavos, r), **args)
    print(f"Cupom {cupom}: {situacao}" + (f", {motivo}" if motivo else ""), flush=True)


def um_dia(ponte):
    aguardar_gp(ponte, 10)
    print("GP ativo")
    print("== 1. Venda confirmada")
    vender(ponte, "VendeCreditoVista", 1250, 101)
    print("== 2. Recusa")
    vender(ponte, "VendeDebito", 1002, 102)
    print("== 3. Link de pagamento com acentos")
    itens = [("7891", "CAFÉ TORRADO", "2", "10,50", "0,00", "21,00"),
             ("7892", "AÇÚCAR", "1", "10,50", "0,00", "10,50")]
    vender(ponte, "LinkPagamento", 3150, 103, iParcelas=1, iQtdeItens=len(itens),
           sItens="|".join("¬".join(item) for item in itens), sCampo011="Pão & Cia", sCampo012="")
    print("== 4. Venda desfeita")

    class SemPapel(Exception):
        pass

    def imprimir(r):
        mostrar_aprovada(104, 4000, r)
        raise SemPapel("Impressora sem papel")

    try:
        vender_e_confirmar(ponte, "VendeCreditoVista", 4000, 104, imprimir)
    except SemPapel as erro:
        print(erro)
        print("Cupom 104: desfeita", flush=True)
    print("== 5. Fluxo interativo")
    respostas = iter(["3", "1"])

    def perguntar(texto):
        resposta = next(respostas, None)
        print(f"Pergunta: {texto}\nResposta: {resposta}", flush=True)
        return resposta

    campos = fluxo(ponte, 20, 99, {
        "sCNPJ": CNPJS["sCNPJCliente"], "uCampo3": 1, "sCampo4": "", "sValor": "12,50",
        "sCampo6": "000545", "sCampo7": "20210325", "sCampo8": "009", "sCampo9": "652",
        "uCampo10": 7, "sCampo11": ""}, perguntar)
    print(f"Retorno: STATUS {campos['STATUS']}, VALOR {campos['VALOR']}, {campos['MENSAGEM']}")


def cair(ponte):
    def morrer(r):
        mostrar_aprovada(105, 2000, r)
        os._exit(9)

    print("== Queda", flush=True)
    vender_e_confirmar(ponte, "VendeCreditoVista", 2000, 105, morrer)


def retomar(ponte):
    print("== Retomada")
    vendas = ler_diario()
    if not vendas:
        print("Nada em aberto")
    for cupom, (centavos, estado) in vendas.items():
        print(f"Cupom {cupom}: em aberto ({estado}), R$ {reais(centavos)}", flush=True)
        # Este PDV não guarda as vendas: nenhuma aprovada está nos seus registros.
        desfecho = "confirmar" if estado == "confirmar" else "desfazer"
        concluir_venda(ponte, cupom, desfecho)
        print(f"Cupom {cupom}: {'confirmada' if desfecho == 'confirmar' else 'desfeita'}")


def main():
    sys.stdout.reconfigure(encoding="utf-8", newline="\n")
    argumentos = sys.argv[1:]
    modos = {"--cair": cair, "--retomar": retomar}
    modo = modos[argumentos.pop(0)] if argumentos and argumentos[0] in modos else um_dia
    try:
        modo(Ponte(argumentos or ["caixora_host", "--ponte"]))
    except (Erro, OSError) as erro:
        sys.stdout.flush()
        sys.exit(f"{type(erro).__name__}: {erro}")


if __name__ == "__main__":
    main()
