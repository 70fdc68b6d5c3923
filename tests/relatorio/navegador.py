#!/usr/bin/env python3
"""A página do relatório em um Chromium de verdade: navegador.py <relatorio> [--fotos <pasta>]

Fala com ele pelo protocolo de depuração, por dois canos, sem biblioteca alguma.
"""
import base64
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
FLAGS = ("--headless --no-sandbox --disable-gpu --no-first-run --disable-background-networking "
         "--disable-component-update --hide-scrollbars --remote-debugging-pipe").split()
INJECTED = ("<script>document.title='caiu'</script>", "<img src=x onerror=\"document.title='caiu'\">",
            "</script></pre></details><script>document.title='caiu'</script>", "<!--", "]]>",
            "\" onmouseover=\"document.title='caiu'", "<svg onload=document.title='caiu'>",
            "<meta http-equiv=refresh content='0;url=http://exemplo.invalid/'>",
            "<link rel=stylesheet href=http://exemplo.invalid/x.css>", "{{titulo}}", "&lt;b&gt;")


class Browser:
    def __init__(self, folder):
        to_read, self.writes = os.pipe()
        self.reads, to_write = os.pipe()

        def pipes():  # by way of others: an end may be 3 or 4 already, and closed at the start
            for end, number in ((to_read, 103), (to_write, 104), (103, 3), (104, 4)):
                os.dup2(end, number)

        self.process = subprocess.Popen(
            ["chromium", *FLAGS, f"--user-data-dir={folder}"], close_fds=False, preexec_fn=pipes,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_read)
        os.close(to_write)
        self.buffer, self.number, self.session, self.events = b"", 0, None, []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(domain + ".enable")

    def message(self):
        while b"\0" not in self.buffer:
            part = os.read(self.reads, 1 << 16)
            if not part:
                sys.exit("o Chromium terminou")
            self.buffer += part
        text, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(text)

    def call(self, method, **params):
        self.number += 1
        request = {"id": self.number, "method": method, "params": params}
        if self.session:
            request["sessionId"] = self.session
        os.write(self.writes, json.dumps(request).encode() + b"\0")
        while True:
            said = self.message()
            if said.get("id") == self.number:
                if "error" in said:
                    sys.exit(f"{method}: {said['error']}")
                return said["result"]
            self.events.append(said)

    def open(self, path):
        self.call("Page.navigate", url=path.as_uri())
        while not any(e.get("method") == "Page.loadEventFired" for e in self.events):
            self.events.append(self.message())

    def js(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            sys.exit(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def size(self, width, height, dark=False):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=width < 600)
        self.call("Emulation.setEmulatedMedia",
                  features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def photo(self, path):
        data = self.call("Page.captureScreenshot", format="png")["data"]
        path.write_bytes(base64.b64decode(data))


failures = []


def check(what, seen, expected):
    if seen != expected:
        failures.append(f"{what}: {seen!r}, e não {expected!r}")


def make_page(report, folder):
    log = subprocess.run([sys.executable, HERE / "dia.py"], stdout=subprocess.PIPE, check=True).stdout
    lines = "\r\n".join("I;" + text for text in INJECTED)
    evil = (f"\r\n07/03/2024 18:59:58 ::1.0.0.0:: RETORNO: S;0;{INJECTED[1]}\r\n{lines}"
            f"\r\n07/03/2024 18:59:59 ::1.0.0.0:: {INJECTED[0]}")
    (folder / "dia.log").write_bytes(log + evil.encode("cp1252"))
    page = folder / "dia.html"
    subprocess.run([report, "--saida", page, folder / "dia.log"], check=True,
                   stdout=subprocess.DEVNULL)
    return page


FILTER = """(async (changes) => {
  const form = document.querySelector('.filters');
  form.reset();
  await new Promise((done) => setTimeout(done));
  for (const [name, value] of Object.entries(changes.fields)) form[name].value = value;
  for (const box of form.querySelectorAll('[name=o]'))
    if (changes.outcome !== undefined) box.checked = box.value === changes.outcome;
  form.a.checked = changes.open === true;
  form.dispatchEvent(new Event('input', {bubbles: true}));
  const before = form.querySelector('output');
  await new Promise((done) => setTimeout(done, 200));
  const fit = [...document.querySelectorAll('.call:not(.gone)')];
  return {
    shown: [...document.querySelectorAll('.call')].filter((c) => c.offsetParent !== null).length,
    fit: fit.length, said: before.textContent,
    coupons: [...new Set(fit.map((c) => c.dataset.c))],
    outcomes: [...new Set(fit.map((c) => c.dataset.o))],
    bright: new Set([...document.querySelectorAll('.hour a:not(.off)')]
      .map((a) => a.getAttribute('href'))).size,
  };
})"""


def run(report, photos):
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as name:
        folder = pathlib.Path(name)
        page = make_page(report, folder)
        browser = Browser(folder / "perfil")
        browser.size(1180, 900)
        browser.open(page)
        filtered = lambda **changes: browser.js(
            f"{FILTER}({json.dumps({'fields': {}, **changes})})")

        total = browser.js("document.querySelectorAll('.call').length")
        everything = filtered()
        check("sem filtro", (everything["fit"], everything["shown"], everything["said"]),
              (total, 200, f"{total} chamadas"))
        check("uma barra por chamada", everything["bright"], total)
        check("largura das barras", browser.js(
            "[...document.querySelectorAll('.hour .all')].every((b) => "
            "b.getBoundingClientRect().width > 0)"), True)
        check("fases na tabela", browser.js(
            "document.querySelectorAll('.call.o0 .bar, .call .bar.o0 .p2').length > 50"), True)
        coupon = filtered(fields={"c": "7003"})
        check("por cupom", (coupon["coupons"], coupon["fit"] == coupon["shown"] == coupon["bright"]),
              (["7003"], True))
        check("por desfecho", filtered(outcome="1")["outcomes"], ["1"])
        check("por texto, nas linhas", filtered(fields={"t": "GP INATIVO, ENVIANDO"})["outcomes"],
              ["2"])
        check("por texto que não há", filtered(fields={"t": "nada disso"})["shown"], 0)
        check("em aberto", filtered(open=True)["fit"],
              browser.js("document.querySelectorAll('.open-sales ul li').length"))
        filtered()
        check("mais chamadas", browser.js(
            "document.querySelector('.next button').click(), "
            "document.querySelectorAll('.call.on').length"), total)
        check("abre pela linha", browser.js(
            "(async () => { const call = document.querySelector('.call[data-c=\"7003\"]');"
            "call.querySelector('td').click();"
            "await new Promise((done) => setTimeout(done, 100));"
            "return call.querySelector('pre').offsetHeight > 0 && "
            "call.querySelector('pre i').textContent.slice(0, 10); })()"), "07/03/2024")
        check("abre pelo endereço", browser.js(
            "new Promise((done) => { location.hash = '#c0'; setTimeout(() => done("
            "document.querySelector('#c0').classList.contains('opened')), 100); })"), True)

        check("nada do log foi executado", browser.js("document.title"),
              "Relatório do log, 07/03/2024")
        check("nada do log é elemento", browser.js(
            "document.querySelectorAll('img, link, iframe, object, script:not(head > script), "
            "pre :not(i, b), [onerror], [onload], [onmouseover]').length"), 0)
        text = browser.js("document.body.textContent")
        check("o log como está", [line for line in INJECTED if line not in text], [])
        check("cartão reduzido", "4111" in text, False)

        for width in (360, 768, 1180):
            browser.size(width, 800)
            check(f"rolagem para o lado, {width}", browser.js(
                "document.documentElement.scrollWidth"), width)
        browser.size(700, 1000)
        browser.call("Emulation.setEmulatedMedia", media="print")
        check("no papel, o que falhou está explicado e o mais em uma linha", browser.js(
            "(() => { const opened = document.querySelectorAll('.opened').length;"
            "dispatchEvent(new Event('beforeprint'));"
            "const calls = [...document.querySelectorAll('.call:not(.opened)')];"
            "const said = [...document.querySelectorAll('.call:not([data-o=\"1\"]) .why')];"
            "const seen = [said.length > 10, said.every((why) => why.offsetHeight > 0),"
            "calls.length > 100, calls.every((call) => call.offsetHeight < 60),"
            "[...document.querySelectorAll('time')].every((t) => t.offsetHeight < 20)];"
            "dispatchEvent(new Event('afterprint'));"
            "return [...seen, document.querySelectorAll('.opened').length === opened]; })()"),
              [True] * 6)
        browser.call("Emulation.setEmulatedMedia", media="")
        requests = [e["params"]["request"]["url"] for e in browser.events
                    if e.get("method") == "Network.requestWillBeSent"]
        check("pedidos à rede", [url for url in requests if not url.startswith("file:")], [])
        check("arquivos lidos", len(requests), 1)
        errors = [e["params"] for e in browser.events
                  if e.get("method") in ("Runtime.exceptionThrown", "Log.entryAdded")]
        check("erros na página", errors, [])

        browser.call("Emulation.setScriptExecutionDisabled", value=True)
        browser.events.clear()
        browser.open(page)
        browser.call("Emulation.setScriptExecutionDisabled", value=False)
        check("sem script, toda chamada à vista", browser.js(
            "[...document.querySelectorAll('.call')].filter((c) => c.offsetHeight > 0).length"),
              total)
        if photos:
            take_photos(browser, page, photos)
        browser.process.kill()
        browser.process.wait()


def take_photos(browser, page, photos):
    photos.mkdir(parents=True, exist_ok=True)
    shots = (("claro", 1180, 1500, False, ""), ("escuro", 1180, 1500, True, "#c30"),
             ("aberta", 1180, 1200, False, "#c30"), ("telefone", 390, 1500, False, ""),
             ("telefone_aberta", 390, 1300, False, "#c30"))
    for name, width, height, dark, anchor in shots:
        browser.size(width, height, dark)
        browser.events.clear()
        browser.call("Page.navigate", url="about:blank")
        browser.open(page)
        if anchor:
            browser.js(f"new Promise((d) => {{ location.hash = '{anchor}'; setTimeout(d, 300); }})")
        browser.photo(photos / f"{name}.png")


if not shutil.which("chromium"):
    sys.exit("Falta o Chromium, que scripts/test.sh instala.")
run(sys.argv[1], pathlib.Path(sys.argv[3]) if "--fotos" in sys.argv else None)
if failures:
    sys.exit("\n".join(failures))
