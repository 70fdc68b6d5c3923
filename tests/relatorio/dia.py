#!/usr/bin/env python3
"""Um dia inventado de um caixa, como Caixora.log: dia.py [--detalhado] [--mib N] > Caixora.log"""
import argparse
import datetime
import random
import sys

LOJA, PARCEIRO = "12345678000195", "11222333000181"
TROCA = "C:\\Tef_dial"
args = argparse.ArgumentParser()
args.add_argument("--detalhado", action="store_true")
args.add_argument("--mib", type=float, default=0, help="repete o dia até este tamanho")
args = args.parse_args()
random.seed(7)
out = sys.stdout.buffer
size, clock = 0, datetime.datetime(2024, 3, 7, 8, 2, 11)


def log(text, wait=0.003):
    global clock, size
    clock += datetime.timedelta(seconds=wait)
    line = f"\n{clock:%d/%m/%Y %H:%M:%S} ::1.0.0.0:: {text}".replace("\r", " ")
    size += out.write(line.replace("\n", "\r\n").encode("cp1252"))


def detail(text, wait=0.003):
    if args.detalhado:
        log(text + " (f)", wait)
    else:
        global clock
        clock += datetime.timedelta(seconds=wait)


def remove(path):
    log(f"Antes de Remover Arquivo - {path}")
    detail(f"Caminho Remover Arquivo: {path}")
    detail(f"Depois de Remover Arquivo - {path}")


def gp_runs():
    detail("Verificacao Execucao do Processo: Pavolin.exe")


def start(cnpj=LOJA):
    detail("ENTROU - ChamaTef")
    log("ENTROU - Verificação do caminho do EXE")
    log("SAIU - Verificação do caminho do EXE")
    detail("Validar Pasta TEF_DIAL")
    for drive in "CDEF":
        detail("Validando a Pasta TEF_DIAL")
        log(f"Caminho da Pasta Tef_dial: {drive}:\\Tef_Dial\\Tef_Dial.exe")
    log("Caminho da Pasta Tef_dial: ")
    detail(f"Caminho da Pasta Tef_dial: {TROCA}")
    log("VERSAO SISTEMA PARCEIRO: 7.8.9")
    log("CAMINHO DO ARQUIVO LOG: C:\\Pavolin TEF\\")
    log("VALIDANDO DADOS")
    detail(f"SomenteNumerosStr: {cnpj}")
    if cnpj != LOJA:
        log("CNPJ do cliente inválido(L): ")
        return False
    log("VALIDOU DADOS")
    log("LIMPANDO PASTAS TEF")
    remove(TROCA + "\\Req\\Intpos.001")
    remove(TROCA + "\\Resp\\Intpos.001")
    detail("ENTROU - Sleep 1000")
    log("Verificando CLIENT EM EXECUCAO", 1)
    gp_runs()
    return True


def request(name, rest):
    log("ENVIANDO COMANDO")
    colon = "" if name == "Desfazimento" else " sCNPJCliente:"
    log(f"[METODO] {name}:{colon}{LOJA} - sCNPJParceiro:{PARCEIRO}{rest}")
    log("Gerando Arquivo Intpos.001")
    detail("Gerou Arquivo Intpos.001")


def pickup(polls):
    log("VERIFICANDO SE O CLIENT PROCESSOU O INTPOS DA PASTA REQ")
    for poll in range(polls):
        detail("Sleep 100")
        detail(f"Abrindo Intpos.001{TROCA}\\Req\\intpos.001", 0.1)
        if poll + 1 < polls:
            detail("Verificando GP")


def wait(seconds, found=True):
    log("AGUARDANDO INTPOS NA PASTA RESP")
    for _ in range(int(seconds * 5)):
        detail("Sleep 200")
        detail(f"Abrindo {TROCA}\\Resp\\Intpos.001", 0.2)
        log("Arquivo NULL")
        gp_runs()
    if found:
        detail("Sleep 200")
        log("LOCALIZOU ARQUIVO NA PASTA RESP", 0.2)
        gp_runs()


def answer(text, coupon=None, message=None):
    log("LEU ARQUIVO NA PASTA RESP, RECUPERANDO DADOS")
    if coupon:
        log(f"LINHA001: 001-000 = {coupon}")
    log(f"LINHA030: 030-000 = {message}")
    log("PROCESSOU ARQUIVO")
    log("REMOVENDO ARQUIVO")
    remove(TROCA + "\\Resp\\Intpos.001")
    detail("Antes de Gerar o Retorno")
    log("RETORNO: " + text)


def sale(coupon, cents, name="VendeCreditoVista", seconds=9.0, refusal=None):
    start()
    request(name, f" - dValor:{cents / 100:.6f} - iCupom:{coupon} - iLeitor:1")
    pickup(random.randint(1, 4))
    wait(seconds)
    if refusal:
        return answer("S;0;" + refusal, message=refusal)
    nsu = 100000 + coupon
    receipt = ["COMPROVANTE TEF", "LOJA DO <b>CENTRO</b>", "CARTAO 4111 1111 1111 1234",
               f"VALOR R$ {cents / 100:.2f}".replace(".", ","), f"NSU {nsu}  AUT 0{nsu}"]
    answer(f"S;1;TRANSACAO AUTORIZADA\r\nC;{coupon};{cents};VISTA;REDEX;0{nsu};{nsu};10;1;"
           f"CTL{nsu};;1;;;;\r\n" + "\r\n".join("I;" + line for line in receipt),
           coupon, "TRANSACAO AUTORIZADA")


def outcome(coupon, name="Confirmar"):
    start()
    request(name, f" - iCupom:{coupon}")
    log("CONFIRMACAO/DESFAZIMENTO: " + ("CONFIRMAR" if name == "Confirmar" else "CANCELAR"))
    clock_pause(1)
    wait(0)
    answer(f"S;2;COMANDO COM SUCESSO\r\nC;{coupon};;;;;;;1;;;;;;;", coupon, "COMANDO COM SUCESSO")


def clock_pause(seconds):
    global clock
    clock += datetime.timedelta(seconds=seconds)


def closed_gp():
    start()
    log("GP INATIVO, enviando comando C:\\Pavolin TEF\\Pavolin.exe STARTAUTO")


def gp_dies(coupon, cents):
    start()
    request("VendeDebitoAVista", f" - dValor:{cents / 100:.6f} - iCupom:{coupon} - iLeitor:1")
    pickup(2)
    wait(6, found=False)
    log("CLIENT NAO ESTA EM EXECUCAO")
    log("GP NAO ATIVO, APOS AGUARDAR ARQUIVO NA PASTA RESP")


def flow():
    log("ENTROU -  IniciaFuncaoQJInterativo()")
    log("Taskkill no Trevix para não ter outra instância em execução.")
    log("Iniciando Trevix - IniciaQJInterativo", 1.2)
    for question in ("Parcelas?", "1-Confirma 2-Cancela", "[RETORNO]|STATUS:0|NSU:4471|"):
        for _ in range(random.randint(8, 30)):
            log("ENTROU -  AguardaFuncaoQJInterativo()", 0.25)
        log("Lendo o arquivo: C:\\Trevix\\Req\\Req001.txt")
        log(question)
        log("Excluindo o arquivo : C:\\Trevix\\Req\\Req001.txt")
        if not question.startswith("["):
            log("ENTROU -  ContinuaFuncaoQJInterativo()", 2)
            log("sInformacao: 1")
            log("Informacao gravada: 1")
    log("ENTROU -  FinalizaFuncaoQJInterativo()", 1)
    log("Iniciando Trevix - FinalizaQJInterativo", 0.8)
    log("Finalizou Envio da Transacao - FinalizaQJInterativo", 2)


def day():
    global clock
    closed_gp()
    coupon = int(f"{clock:%d}") * 1000
    while clock.hour < 19 and (not args.mib or size < args.mib * 1048576):
        clock_pause(random.expovariate(1 / (150 if 11 <= clock.hour < 14 else 420)))
        coupon += 1
        cents = random.choice([990, 1250, 4990, 7825, 12000, 25990])
        name = random.choice(["VendeCreditoVista", "VendeDebitoAVista", "VendeCredito",
                              "VendeCarteiraDigitalPix"])
        label = "Carteira Digital/Pix" if name == "VendeCarteiraDigitalPix" else name
        kind = random.random()
        if kind < 0.08:
            sale(coupon, cents, label, random.uniform(4, 15), "TRANSACAO NAO AUTORIZADA")
        elif kind < 0.10:
            gp_dies(coupon, cents)
            clock_pause(20)
            closed_gp()
            clock_pause(15)
            outcome(coupon, "Desfazimento")
        elif kind < 0.12:
            start("123")
        elif kind < 0.14:
            flow()
        else:
            sale(coupon, cents, label, random.lognormvariate(2.2, 0.6))
            clock_pause(random.uniform(1, 4))
            if kind > 0.16:
                outcome(coupon, "Desfazimento" if kind > 0.98 else "Confirmar")
    clock = clock.replace(hour=8, minute=1, second=40) + datetime.timedelta(days=1)


day()
while args.mib and size < args.mib * 1048576:
    day()
