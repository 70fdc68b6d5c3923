// The checks of the program that loads the library: the DLL itself, folder and code page.
#include <algorithm>
#include <iterator>

#include "interactive/config_file.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "system/file.h"
#include "system/version.h"
#include "tools/diagnosis_checks.h"
#include "tools/diagnosis_machine.h"
#include "tools/image_file.h"

namespace caixora {
namespace {

struct LibraryExport {
  std::string_view name;
  std::uint32_t ordinal;
};
constexpr LibraryExport kExports[] = {
#include "library_exports.inc"  // src/api/caixora.def
};

constexpr char kLibraryName[] = "Caixora.dll";
constexpr char kCopyAgain[] = "Copie de novo a Caixora.dll de 64 bits do pacote.";
constexpr std::size_t kMostBytes = std::size_t{64} * 1048576;
constexpr std::size_t kHeaderBytes = 1048576;

bool SameFolder(const Checkout& checkout) {
  return Lowered(checkout.folder) == Lowered(checkout.program_folder);
}

// What is wrong with an image for being loaded by a 64-bit program; empty: nothing.
std::string WhyNotLoadable(const ImageFile& image, std::size_t size) {
  using Shape = ImageFile::Shape;
  if (size == 0) return "está vazio";
  if (image.shape == Shape::kNoImage) return "não é uma DLL: tem outro conteúdo";
  if (image.machine == ImageFile::kX86)
    return "é de 32 bits, e um PDV de 64 bits não a carrega (erro 193)";
  if (image.shape == Shape::kTruncated)
    return Join({"está cortada: tem ", std::to_string(size), " bytes, e devia ter ",
                 image.announced_size > size ? std::to_string(image.announced_size) : "mais"});
  if (image.machine == ImageFile::kArm64) return "é para processadores ARM";
  if (image.machine != ImageFile::kX64) return "é para outro processador";
  if (!image.is_library) return "é um programa, e não uma DLL";
  if (image.shape == Shape::kDamaged) return "está danificada";
  return {};
}

void JudgeExports(const std::string& shown, const ImageFile& image, Finding& finding) {
  std::vector<std::string> missing, moved;
  for (const LibraryExport& wanted : kExports) {
    const auto found = std::find_if(image.exports.begin(), image.exports.end(),
                                    [&](const auto& each) { return each.name == wanted.name; });
    if (found == image.exports.end())
      missing.emplace_back(wanted.name);
    else if (found->ordinal != wanted.ordinal)
      moved.emplace_back(wanted.name);
  }
  if (missing.size() == std::size(kExports))
    finding.Fail(Join({shown, " é outra DLL, com o nome trocado: não tem nenhuma das funções."}),
                 kCopyAgain);
  else if (!missing.empty())
    finding.Fail(Join({shown, " não tem as funções ", Listed(missing), ": é de outra versão."}),
                 kCopyAgain);
  if (!moved.empty())
    finding.Warn(Join({shown, " tem outros números para as funções ", Listed(moved),
                       ": um PDV que as chama pelo número chamaria outras."}),
                 kCopyAgain);
}

// False when there is nothing of that name.
bool JudgeLibrary(const std::string& path, Finding& finding) {
  const std::string shown = Shown(path);
  const Found found = Look(path);
  if (found == Found::kMissing) return false;
  if (found == Found::kFolder) {
    finding.Fail(shown + " é uma pasta, e não a biblioteca.", kCopyAgain);
    return true;
  }
  std::string bytes;
  if (const SystemError error = ReadBytes(path, bytes, kMostBytes); error != SystemError::kNone) {
    finding.Fail(Join({shown, " não pode ser lida: ", Reason(error), "."}),
                 "Dê ao usuário do caixa permissão para ler a DLL, e veja o antivírus.");
    return true;
  }
  const ImageFile image = ReadImage(bytes);
  if (const std::string why = WhyNotLoadable(image, bytes.size()); !why.empty()) {
    finding.Fail(Join({shown, " ", why, "."}), kCopyAgain);
    return true;
  }
  JudgeExports(shown, image, finding);
  if (const SystemError error = TryToLoad(path); error != SystemError::kNone)
    finding.Fail(
        Join({shown, " não carrega: ", Reason(error), "."}),
        "Veja o antivírus e as políticas do Windows. Se não são eles, copie a DLL de novo.");
  const std::wstring wide = LibraryVersion(path.c_str());
  const std::string version(wide.begin(), wide.end());
  // The version resource's reader answers with these where there is none to read.
  const bool known = version.find('.') != version.npos;
  finding.Note(Join({shown, ": 64 bits, ", std::to_string(image.exports.size()), " funções, ",
                     known ? "versão " + version : std::string("sem número de versão"), "."}));
  return true;
}

// A host that the checkout may run, by the programs that lie in its folder.
void JudgeHosts(Finding& finding) {
  std::vector<std::string> narrow;
  bool has_wide = false;
  for (const ListedFile& file : ListFiles(".", "")) {
    const std::string name = Lowered(file.name);
    if (!name.ends_with(".exe") || name.starts_with("unins") || name == "caixora_host.exe")
      continue;
    std::string bytes;
    if (ReadBytes(file.name, bytes, kHeaderBytes) != SystemError::kNone) continue;
    const ImageFile image = ReadImage(bytes);
    if (image.machine == ImageFile::kX64 || image.runs_as_any)
      has_wide = true;
    else if (image.machine == ImageFile::kX86)
      narrow.push_back(Shown(file.name));
  }
  if (!narrow.empty() && !has_wide)
    finding.Warn(Join({"Nesta pasta só há programas de 32 bits: ", Listed(narrow),
                       ". Um PDV de 32 bits não carrega a DLL (erro 193)."}),
                 "Use o PDV de 64 bits, ou a ponte: caixora_host --ponte.");
}

}  // namespace

Finding CheckLibrary(const Checkout& checkout) {
  Finding finding;
  std::vector<std::string> folders = {checkout.program_folder};
  if (!SameFolder(checkout)) folders.push_back(checkout.folder);
  std::vector<std::string> paths, found;
  for (const std::string& folder : folders) paths.push_back(folder + "\\" + kLibraryName);
  if (!checkout.options.library.empty()) paths = {checkout.options.library};
  for (const std::string& path : paths)
    if (JudgeLibrary(path, finding)) found.push_back(path);

  if (found.empty()) {
    std::vector<std::string> shown;
    shown.reserve(paths.size());
    for (const std::string& path : paths) shown.push_back(Shown(path));
    finding.Fail(Join({"A biblioteca não foi achada. Procurada: ", Listed(shown), "."}),
                 "Copie a Caixora.dll de 64 bits para a pasta do executável do PDV.");
    for (const std::string& folder : folders)
      for (const ListedFile& file : ListFiles(folder, "Caixora"))
        if (Lowered(file.name).find(".dl") != std::string::npos)
          finding.Fail(Join({"Há um ", Shown(folder + "\\" + file.name), "."}),
                       Join({"Se é ela, dê-lhe o nome ", kLibraryName, "."}));
  } else if (checkout.options.folder_given && found.size() < paths.size() &&
             found.front() != paths.back()) {
    finding.Warn(Join({"Não há uma em ", Shown(checkout.folder), "."}),
                 "Se o executável do PDV está nessa pasta, copie para ela a Caixora.dll.");
  } else if (found.size() > 1) {
    const auto version = [](const std::string& path) { return LibraryVersion(path.c_str()); };
    if (version(found[0]) != version(found[1]))
      finding.Warn("As duas são de versões diferentes; vale a que está ao lado do executável.",
                   "Deixe só uma, ao lado do executável do PDV.");
  }
  JudgeHosts(finding);
  return finding;
}

Finding CheckCurrentFolder(const Checkout& checkout) {
  Finding finding;
  finding.Note(Join({"Diretório atual: ", Shown(checkout.folder),
                     ". Programa em: ", Shown(checkout.program_folder), "."}));
  if (!SameFolder(checkout) && Look(kLibraryName) == Found::kMissing) {
    finding.Warn(
        "São pastas diferentes: LD.txt, ConfigQJ.ini e o primeiro log são os do diretório "
        "atual.",
        "Ponha a pasta do PDV em \"Iniciar em\", no atalho, e fixe-a no começo do PDV. Um "
        "programa aberto como administrador, sem isso, começa em System32.");
    for (const char* const name : {kSwitchFile, kConfigFile})
      if (const std::string beside = checkout.program_folder + "\\" + name;
          Look(beside) == Found::kFile && Look(name) == Found::kMissing)
        finding.Warn(Shown(beside) + " não é lido.", {});
  }
  if (const SystemError error = TryToWriteIn("."); error != SystemError::kNone)
    finding.Warn(
        Join({"O diretório atual não aceita arquivos: ", Reason(error),
              ". LD.txt não pode ser criado."}),
        Join({"Dê ao usuário do caixa permissão para gravar em ", Shown(checkout.folder), "."}));
  finding.Note("As primeiras linhas de cada execução, antes de o GP ser achado, ficam aqui.");
  JudgeLog("", checkout, finding);
  return finding;
}

Finding CheckCodePage(const Checkout&) {
  Finding finding;
  const unsigned page = AnsiCodePage();
  const std::string number = std::to_string(page);
  if (page == 1252)
    finding.Note("A página de código do Windows é 1252, a dos textos da DLL.");
  else if (page == 65001)
    finding.Warn(
        "A página de código do Windows é UTF-8 (65001). A DLL usa 1252 mesmo assim.",
        "O PDV precisa converter seus textos para Windows-1252, e os resultados de volta.");
  else
    finding.Warn(Join({"A página de código do Windows é ", number,
                       ": pastas e textos com acentos saem trocados."}),
                 "Em Região, Administrativo, ponha o idioma de programas não Unicode em Português "
                 "(Brasil).");
  return finding;
}

}  // namespace caixora
