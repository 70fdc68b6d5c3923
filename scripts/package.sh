#!/usr/bin/env bash
# Makes build/pacote/caixora-<version>-win64.zip and SHA256SUMS: the same bytes from each run, in
# whatever folder. Its times are those of SOURCE_DATE_EPOCH, or of the last commit.
#
#   --sem-documentos  without the pages that are made from the guide and the header
#   --de <folder>     of a build that is there already, into that folder
source "$(dirname "$(readlink -f "$0")")/lib.sh" || exit
documents=1
folder=
while [ $# -gt 0 ]; do
  case $1 in
    --sem-documentos) documents= ;;
    --de) folder=$(realpath "${2:?}") && shift ;;
    *) stop 'Uso: scripts/package.sh [--sem-documentos] [--de <pasta>]' ;;
  esac
  shift
done
umask 022
export TZ=UTC
# Sources without a history have no time: then it is the earliest that a ZIP can tell.
[ -n "${SOURCE_DATE_EPOCH:-}" ] || [ ! -e .git ] || SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-315532800}

packages=(llvm python3)
[ -z "$documents" ] || packages+=(pandoc weasyprint fonts-dejavu-core)
install_missing "${packages[@]}"
if [ -z "$folder" ]; then
  build pacote
  folder=$PWD/build/pacote
fi
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$folder/CMakeCache.txt")
name=caixora-$version-win64
content=$folder/conteudo
rm -rf "$content"
mkdir -p "$content"/{lib,simuladores,exemplos,docs}

# As Windows has texts: its code page, its line ends, the version filled in.
for_windows() {
  sed "s/@VERSAO@/$version/g; s/\$/\r/" "package/$1" |
    iconv -f UTF-8 -t WINDOWS-1252 >"$content/${2:-$1}"
}
for_windows LEIA-ME.txt
for_windows exemplos.txt exemplos/LEIA-ME.txt
for_windows instalar_simuladores.cmd simuladores/instalar_simuladores.cmd

llvm-dlltool --machine i386:x86-64 --input-def src/api/caixora.def --dllname Caixora.dll \
  --output-lib "$content/lib/Caixora.lib"

python3 package/components.py "$folder" "$content" "$version"

# Folders have the names of the package, pages those of this folder, and so do the links.
page() {  # title result folder-of-pictures [language], Markdown on the standard input
  sed 's/^<!-- .* -->$//; s#\.\./simulators/README\.md#simuladores.html#g
       s#\bexamples/#exemplos/#g; s#](\(\.\./docs/\)\?\([a-z-]*\)\.md#](\2.html#g' |
    pandoc --from gfm --to html5 --standalone --self-contained --metadata "pagetitle=$1" \
      --metadata lang="${4:-pt-BR}" --css "$project/package/documento.css" \
      --resource-path "$3" --output "$content/docs/$2.html"
}
if [ -n "$documents" ]; then
  for document in guia certificacao o-que-certificar glossario-do-log; do
    page "Caixora $version: $(sed -n '1s/^# //p' docs/$document.md)" $document docs \
      <docs/$document.md
  done
  # A PDF takes links to files as links to files of this machine: they stay words.
  sed -E 's/<a href="[^#"][^":]*"/<a/g' "$content/docs/guia.html" |
    weasyprint --quiet - "$content/docs/guia.pdf"
  page "Simuladores da Caixora $version" simuladores simulators <simulators/README.md
  python3 package/header_page.py include/caixora.h | page "caixora.h $version" caixora_h include en
fi

(cd "$folder" && cpack --config CPackConfig.cmake >cpack.log) || { cat "$folder/cpack.log"; exit 1; }
python3 package/zip.py "$folder/$name.zip"
(cd "$folder" && sha256sum "$name.zip" >SHA256SUMS)
echo "$folder/$name.zip"
