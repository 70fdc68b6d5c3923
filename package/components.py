"""Writes the bill of materials (CycloneDX 1.5) of the programs in the package, and the notices of
what is linked into them: components.py <build folder> <package folder> <version>

What a program takes is read from the linker's map of it and from the compiler's own dependencies;
versions come from the packages of this machine that the files belong to."""
import functools
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import time
import uuid

build, package, version = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
PROGRAMS = {"Caixora.dll": "bin", "caixora_host.exe": "bin",
            "clientorvane_simulador.exe": "simuladores", "Trevix.exe": "simuladores",
            "Email.exe": "simuladores"}


@functools.cache
def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


GNU, MINGW = "Free Software Foundation", "mingw-w64 project"
EXCEPTION = "GPL-3.0-or-later WITH GCC-exception-3.1"
# What is linked in or included: component, supplier, licence, notice. A file that is not here stops
# the package. LicenseRef-mingw-w64: further permissive licences, which the notice holds.
COMPONENTS = [
    (r"/lib(gcc|gcc_eh)\.a$|/crt(begin|end)\.o$", "libgcc", GNU, EXCEPTION, "gcc"),
    (r"/libstdc\+\+\.a$", "libstdc++", GNU, EXCEPTION, "gcc"),
    (r"/libssp\.a$", "libssp", GNU, EXCEPTION, "gcc"),
    (r"/lib(win)?pthread\.a$", "winpthreads", MINGW, "MIT AND BSD-3-Clause", "mingw-w64"),
    (r"/x86_64-w64-mingw32/lib/(lib\w+\.a|(dll)?crt2\.o)$", "mingw-w64-crt", MINGW,
     "ZPL-2.1 AND MIT AND BSD-3-Clause AND LicenseRef-mingw-w64", "mingw-w64"),
    (r"/CLI/CLI\.hpp$", "CLI11", "University of Cincinnati e Henry Schreiner",
     "BSD-3-Clause", "CLI11"),
    (r"/nlohmann/json\.hpp$", "nlohmann-json", "Niels Lohmann", "MIT", "nlohmann-json"),
]


def linked(map_text):
    """The files of the machine that a map names as linked, and the objects of this build."""
    members = re.findall(r"^(\S+\.a)\(([^)]+)\)$", map_text, re.M)
    loaded = re.findall(r"^LOAD (\S+\.o(?:bj)?)$", map_text, re.M)
    files = {os.path.normpath(path) for path in loaded + [archive for archive, _ in members]}
    own = {path.rsplit("/", 1)[-1] for path in loaded} | {member for _, member in members}
    return {path for path in files if path.startswith("/")}, own


# The headers that each object was compiled with, of the machine's libraries the main one of each.
headers = {}
for entry in output("ninja", "-C", str(build), "-t", "deps").split("\n\n"):
    name, _, dependencies = entry.partition(": #deps")
    found = re.findall(r"\S+/(CLI/CLI\.hpp|nlohmann/json\.hpp)\n", dependencies)
    headers.setdefault(name.rsplit("/", 1)[-1], set()).update("/usr/include/" + f for f in found)

components, programs, dependencies = {}, [], []
for program, folder in PROGRAMS.items():
    stem = "caixora" if program == "Caixora.dll" else program.rsplit(".", 1)[0]
    files, objects = linked((build / f"{stem}.map").read_text())
    files.update(*(headers.get(name, ()) for name in objects))
    taken = set()
    for path in sorted(files):
        row = next((row for row in COMPONENTS if re.search(row[0], path)), None)
        if row is None:
            sys.exit(f"{program}: {path} is of no known component")
        _, name, supplier, licence, notice = row
        debian = output("dpkg-query", "-S", path).split(":")[0]
        number = output("dpkg-query", "-W", "-f", "${Version}", debian)
        component = components.setdefault(name, {
            "type": "library", "bom-ref": name, "supplier": {"name": supplier}, "name": name,
            "version": re.match(r"[\d.]+", number)[0], "licenses": [{"expression": licence}],
            "properties": []})
        origin = {"name": "pacote-debian", "value": f"{debian} {number}"}
        if origin not in component["properties"]:
            component["properties"].append(origin)
        (package / "licencas").mkdir(exist_ok=True)
        shutil.copyfile(f"/usr/share/doc/{debian}/copyright", package / f"licencas/{notice}.txt")
        taken.add(name)
    content = (build / "bin" / program).read_bytes()
    reference = f"{folder}/{program}"
    programs.append({
        "type": "library" if program.endswith(".dll") else "application", "bom-ref": reference,
        "name": program, "version": version,
        "hashes": [{"alg": "SHA-256", "content": hashlib.sha256(content).hexdigest()}]})
    dependencies.append({"ref": reference, "dependsOn": sorted(taken)})

shutil.copyfile("/usr/share/common-licenses/GPL-3", package / "licencas/GPL-3.txt")
seconds = int(os.environ.get("SOURCE_DATE_EPOCH", "315532800"))
bom = {
    "bomFormat": "CycloneDX", "specVersion": "1.5", "version": 1,
    "metadata": {
        "timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(seconds)),
        "component": {"type": "library", "bom-ref": "caixora", "name": "Caixora",
                      "version": version}},
    "components": programs + sorted(components.values(), key=lambda each: each["name"]),
    "dependencies": [{"ref": "caixora", "dependsOn": sorted(each["ref"] for each in dependencies)}]
    + dependencies + [{"ref": name} for name in sorted(components)],
}
bom["serialNumber"] = f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, json.dumps(bom))}"
(package / "caixora.cdx.json").write_text(
    json.dumps(bom, ensure_ascii=False, indent=1) + "\n", encoding="utf-8")
