#!/usr/bin/env python3
"""The console host in a terminal: the line that says what is awaited, and Ctrl-C.

    terminal_test.py <folder of the programs>
"""
import os
import pty
import re
import select
import sys
import tempfile
import time

LIMIT = 120  # seconds, for a program that hangs and not for a slow machine
CTRL_C = b"\x03"
FLOW = "Fluxo 20 11 3 x 12,05 6 7 8 9 10 y".split()

# Arguments; what is typed once a text is shown; the exit status; what the library was called for.
TRIALS = [
    # A sale is not given up at once, and what came after it is not called.
    ("VendeCredito 11 22 12,50 26 1 + Teste".split(),
     [(r"\(VendeCredito\): [2-9] s", CTRL_C), ("Desfazimento 11 22 26", CTRL_C)],
     7, "VendeCredito"),
    ("VendeCredito 11 22 12,50 27 1 + Teste".split(),
     [(r"\(VendeCredito\): 1 s", CTRL_C), ("chamada: Teste", b"")], 5, "VendeCredito"),
    (FLOW, [(r"cancelar\):", CTRL_C)], 5, "IniciaFuncaoQJInterativo CancelarFluxo"),
    (FLOW, [(r"cancelar\):", "ção¬\r".encode()), ("separa os campos", "ção\r".encode())],
     0, "IniciaFuncaoQJInterativo Continua FinalizaFuncaoQJInterativo"),
    # Questions that do not come.
    (["Fluxo", "22"] + FLOW[2:], [("pergunta do Trevix .*: 2 s", CTRL_C)],
     5, "IniciaFuncaoQJInterativo CancelarFluxo"),
    (["Pausa", "100000"], [("", CTRL_C)], 5, ""),
]


def run(programs, arguments, steps):
    """What was shown and the exit status."""
    child, terminal = pty.fork()
    if child == 0:
        os.execvp("wine", ["wine", f"{programs}/caixora_host.exe",
                           "--dll", f"{programs}/Caixora_falsa.dll", *arguments])
    shown, steps, end = "", list(steps), time.monotonic() + LIMIT
    while time.monotonic() < end:
        if steps and re.search(steps[0][0], shown):
            time.sleep(1)  # what is awaited next has begun
            os.write(terminal, steps.pop(0)[1])
        if not select.select([terminal], [], [], 0.1)[0]:
            continue
        try:
            shown += os.read(terminal, 65536).decode("utf-8", "replace")
        except OSError:  # its end
            return shown, steps, os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    sys.exit(f"{arguments}: em vão se esperou {steps[:1]}: {shown}")


def main():
    programs = os.path.abspath(sys.argv[1])
    os.environ["WINEPREFIX"] = os.environ["CAIXORA_WINEPREFIX"]
    for arguments, steps, status, calls in TRIALS:
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            shown, left, got = run(programs, arguments, steps)
            called = ""
            if os.path.exists("chamadas.txt"):
                with open("chamadas.txt", encoding="utf-8") as file:
                    called = " ".join(re.findall(r"^(\w+)\(", file.read(), re.M))
            os.chdir("/")
            if (left, got, called) != ([], status, calls):
                sys.exit(f"{arguments}: {got}, {called}, {left}: {shown}")


if __name__ == "__main__":
    main()
