"""What can be told of a package by reading it: contents.py <folder> <project> [documents]"""
import hashlib
import json
import os
import pathlib
import re
import sys

package, project = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
files = [path for path in package.rglob("*") if path.is_file()]
faults = []


def expect(condition, fault):
    if not condition:
        faults.append(fault)


# Nothing tells where it was built, or by whom.
names = [str(project), os.environ.get("HOME", "") + "/", os.uname().nodename, "/usr/lib/gcc"]
names += [user for user in [os.environ.get("USER", "root")] if user != "root"]
for path in files:
    content = path.read_bytes()
    for name in filter(lambda name: len(name) > 3, names):
        for form in (name.encode(), name.encode("utf-16-le")):
            expect(form not in content, f"{path}: {name}")

for folder, source in (("bindings", "bindings"), ("exemplos", "examples"), ("include", "include")):
    ours = {path.relative_to(project / source): path.read_bytes()
            for path in (project / source).rglob("*")
            if path.is_file() and path.name != "CMakeLists.txt"}
    theirs = {path.relative_to(package / folder): path.read_bytes() for path in files
              if path.is_relative_to(package / folder) and path.name != "LEIA-ME.txt"}
    expect(ours == theirs, f"{folder} is not {source}")

for text in ("LEIA-ME.txt", "exemplos/LEIA-ME.txt", "simuladores/instalar_simuladores.cmd"):
    content = (package / text).read_bytes()
    expect(content.count(b"\n") == content.count(b"\r\n") > 0, f"{text}: line ends")
    expect("ã" in content.decode("windows-1252") and b"@VERSAO@" not in content, text)

bom = json.loads((package / "caixora.cdx.json").read_text(encoding="utf-8"))
components = {each["bom-ref"]: each for each in bom["components"]}
links = {each["ref"]: each.get("dependsOn", []) for each in bom["dependencies"]}
for reference, component in components.items():
    if "hashes" in component:
        digest = hashlib.sha256((package / reference).read_bytes()).hexdigest()
        expect(component["hashes"][0]["content"] == digest, f"{reference}: hash")
        expect("libgcc" in links[reference], f"{reference}: components")
    else:
        expect(component["licenses"] and component["supplier"]["name"], f"{reference}: licence")
        expect(re.match(r"\d+\.", component["version"]), f"{reference}: version")
expect({str(path.relative_to(package)) for path in files if path.suffix in (".dll", ".exe")} ==
       {name for name, each in components.items() if "hashes" in each}, "programs without components")
expect({"CLI11", "nlohmann-json"} <= set(links["bin/caixora_host.exe"]), "caixora_host: components")
expect({ref for refs in links.values() for ref in refs} <= set(components), "unknown components")

if "documents" in sys.argv[3:]:
    pages = {page.name: page.read_text(encoding="utf-8")
             for page in (package / "docs").glob("*.html")}
    expect({"guia.html", "simuladores.html", "caixora_h.html"} <= set(pages), "pages")
    for page, text in pages.items():
        anchors = set(re.findall(r'\bid="([^"]+)"', text))
        for link in re.findall(r'\b(?:href|src)="([^"]+)"', text):
            target, _, anchor = link.partition("#")
            if link.startswith(("data:", "https://keepachangelog")):
                continue
            expect(not target or (package / "docs" / target).exists(), f"{page}: {link}")
            expect(target or anchor in anchors, f"{page}: {link}")
    exports = re.findall(r"^ +(\w+) +@\d+$", (project / "src/api/caixora.def").read_text(), re.M)
    for export in exports:
        expect(f'id="{export.lower()}"' in pages.get("caixora_h.html", ""), f"caixora_h.html: {export}")
    expect((package / "docs/guia.pdf").read_bytes().startswith(b"%PDF-"), "guia.pdf")

print(*faults, sep="\n", end="\n" if faults else "")
sys.exit(1 if faults else 0)
