// The checks of what an interactive flow needs: configuration, companion, sender.
#include <algorithm>

#include "interactive/config_file.h"
#include "interactive/finish.h"
#include "interactive/launcher.h"
#include "interactive/session.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/text.h"
#include "system/file.h"
#include "system/programs.h"
#include "system/wide_text.h"
#include "tools/diagnosis_checks.h"
#include "tools/diagnosis_machine.h"
#include "tools/image_file.h"

namespace caixora {
namespace {

constexpr std::string_view kBom = "\xEF\xBB\xBF";
constexpr char kRightLine[] =
    "Escreva uma linha CAMINHO=C:\\Trevix, com a pasta do Trevix.exe: em "
    "maiúsculas, sem espaços, sem aspas, sem barra no fim.";
constexpr char kSaveAsAnsi[] = "No Bloco de Notas, salve com a codificação ANSI.";

// Without what an editor or a hurried hand puts around a word.
std::string_view Bare(std::string_view text) {
  if (text.starts_with(kBom)) text.remove_prefix(kBom.size());
  for (std::string_view before; before != text;) {
    before = text;
    text = Trim(text);
    if (text.starts_with('"') || text.starts_with('\'')) text.remove_prefix(1);
    if (text.ends_with('"') || text.ends_with('\'')) text.remove_suffix(1);
  }
  return text;
}

bool IsWideText(std::string_view bytes) {
  return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF") ||
         bytes.find('\0') != bytes.npos;
}

// Accents as UTF-8: every byte above ASCII is part of a whole sequence of two.
bool HasUtf8Accents(std::string_view text) {
  bool found = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (static_cast<unsigned char>(text[i]) < 0x80) continue;
    const bool pair =
        (text[i] & 0xE0) == 0xC0 && i + 1 < text.size() && (text[i + 1] & 0xC0) == 0x80;
    if (!pair) return false;
    found = true;
    ++i;
  }
  return found;
}

// A line that was meant to hold the key and does not, as the library reads it.
void JudgeLine(std::string_view line, Finding& finding) {
  const std::string_view key = line.substr(0, line.find('='));
  const std::string shown = Join({"A linha [", Shown(line), "] não conta: "});
  if (Lowered(Bare(key)) != Lowered(kPathKey)) {
    if (Lowered(Bare(line)).starts_with(Lowered(kPathKey)) && line.find('=') == line.npos)
      finding.Warn(shown + "falta o \"=\" depois de CAMINHO.", kRightLine);
    return;
  }
  if (key.starts_with(kBom))
    finding.Warn(shown + "há um BOM antes de CAMINHO, posto por quem salvou o arquivo como UTF-8.",
                 kSaveAsAnsi);
  else if (Bare(key) == key && key != kPathKey)
    finding.Warn(shown + "CAMINHO não está em maiúsculas.", kRightLine);
  else if (Trim(key) != key)
    finding.Warn(shown + "há espaços em volta de CAMINHO.", kRightLine);
  else if (key != kPathKey)
    finding.Warn(shown + "há aspas em volta de CAMINHO.", kRightLine);
  else if (line.size() <= key.size() + 1)
    finding.Warn(shown + "não há nada depois do \"=\".", kRightLine);
}

// Oddities of the value that counts, from bad to harmless. Those that the file system forgives are
// warnings.
void JudgePath(const std::string& path, Finding& finding) {
  const Status bad = OpensForReading(CompanionUnder(path)) ? Status::kWarning : Status::kFailure;
  const auto odd = [&](std::string_view what) {
    finding.Add(bad, Join({"O valor tem ", what, "."}), kRightLine);
  };
  if (path.find('"') != path.npos || path.find('\'') != path.npos) odd("aspas");
  if (Trim(path) != path) odd("espaços no começo ou no fim");
  if (Lowered(path).ends_with(".exe")) odd("o nome do programa, e devia ter só a pasta");
  if (path.find('/') != path.npos) odd("\"/\" no lugar de \"\\\"");
  if (path.find('%') != path.npos)
    odd("\"%\": variáveis do Windows não são trocadas pelo seu valor");
  if (std::any_of(path.begin(), path.end(),
                  [](char c) { return static_cast<unsigned char>(c) < ' '; }))
    odd("caracteres de controle");
  if (HasUtf8Accents(path)) {
    odd("acentos em UTF-8, e devia tê-los em Windows-1252");
    finding.Add(bad, {}, kSaveAsAnsi);
  }
  if (path.ends_with('\\'))
    finding.Add(bad, "O valor termina em barra: o log fica dentro da pasta, e não ao lado dela.",
                kRightLine);
  if (path.starts_with("\\\\")) {
    finding.Warn("O valor é uma pasta de rede: o fluxo para quando a rede falta.",
                 "Instale o Trevix em um disco do próprio computador.");
  } else if (path.size() < 3 || path[1] != ':' || (path[2] != '\\' && path[2] != '/')) {
    finding.Add(bad, "O valor não começa por uma unidade, como C:\\: depende do diretório atual.",
                kRightLine);
  } else {
    const DriveKind kind = KindOfDrive(path[0]);
    if (kind == DriveKind::kNone)
      finding.Fail(Join({"A unidade ", path.substr(0, 2), " não existe para este usuário."}),
                   "Corrija CAMINHO. Uma unidade de rede mapeada não existe para um programa "
                   "executado como administrador.");
    else if (kind != DriveKind::kFixed)
      finding.Warn(Join({"A unidade ", path.substr(0, 2),
                         " não é um disco do computador: o fluxo "
                         "para quando ela falta."}),
                   "Instale o Trevix em um disco do próprio computador.");
  }
}

bool NeedsPath(const Checkout& checkout, Finding& finding) {
  if (checkout.config.path && !checkout.config.path->empty()) return true;
  finding.Warn("Não verificado: não se sabe a pasta do Trevix.", "Corrija antes o item config.");
  return false;
}

}  // namespace

Finding CheckConfig(const Checkout& checkout) {
  Finding finding;
  const CheckoutConfig& config = checkout.config;
  const std::string looked_for = Shown(checkout.folder + "\\" + kConfigFile);
  if (config.opened != SystemError::kNone) {
    const Found found = Look(kConfigFile);
    const bool missing = found == Found::kMissing;
    const std::string why = missing ? " não existe. "
                            : found == Found::kFolder
                                ? " é uma pasta, e não um arquivo. "
                                : Join({" não abre: ", Reason(config.opened), ". "});
    finding.Fail(Join({looked_for, why, Returns(FlowCode::kNoConfigFile)}),
                 missing                   ? RemedyFor(FlowCode::kNoConfigFile)
                 : found == Found::kFolder ? "Apague a pasta, e ponha o arquivo no lugar dela."
                                           : "Feche o programa que usa o arquivo, e dê ao usuário "
                                             "do caixa permissão para lê-lo.");
    if (const std::string hidden = WithHiddenExtension(kConfigFile); !hidden.empty())
      finding.Fail(Join({"Há um ", Shown(hidden), ", que não conta."}),
                   Join({"Mostre as extensões no Windows, e renomeie-o para ", kConfigFile, "."}));
    const std::string beside = checkout.program_folder + "\\" + kConfigFile;
    if (missing && Look(beside) == Found::kFile)
      finding.Fail(
          Join({"Há um em ", Shown(beside), ", onde a biblioteca não procura."}),
          Join({"Mova-o para ", Shown(checkout.folder), ", ou inicie o PDV na pasta dele."}));
    if (missing) finding.Note("Uma loja sem fluxo interativo não precisa dele.");
    return finding;
  }

  finding.Note(Join({"Lido de ", looked_for, "."}));
  if (!config.whole) {
    finding.Fail(Join({"Não pôde ser lido até o fim. ", Returns(FlowCode::kNoConfigFile)}),
                 "Copie o arquivo para outro disco, e veja o antivírus.");
    return finding;
  }
  if (IsWideText(config.bytes))
    finding.Fail(Join({"O arquivo está em Unicode (UTF-16), e devia estar em Windows-1252. ",
                       Returns(FlowCode::kNoPathEntry)}),
                 kSaveAsAnsi);
  else if (config.bytes.starts_with(kBom))
    finding.Warn(
        "O arquivo começa com um BOM: foi salvo como UTF-8, e a primeira linha não é lida "
        "como está escrita.",
        kSaveAsAnsi);
  if (config.bytes.find('\x1A') != config.bytes.npos)
    finding.Warn("Há um byte 1A no arquivo: o que vem depois dele não é lido.", kSaveAsAnsi);
  std::string_view rest = config.text;
  for (std::string_view line; TakePiece(rest, '\n', line);) JudgeLine(line, finding);

  if (!config.path) {
    finding.Fail(Join({"Nenhuma linha CAMINHO com um valor. ", Returns(FlowCode::kNoPathEntry)}),
                 RemedyFor(FlowCode::kNoPathEntry));
    return finding;
  }
  finding.Note(Join({"CAMINHO vale [", Shown(*config.path), "]."}));
  const auto is_path = [](const ConfigPair& pair) { return pair.key == kPathKey; };
  const auto count = std::count_if(config.pairs.begin(), config.pairs.end(), is_path);
  if (count > 1)
    finding.Warn(Join({"Há ", std::to_string(count), " linhas CAMINHO: vale a última."}),
                 "Deixe só uma linha CAMINHO.");
  if (config.path->empty()) {
    finding.Fail(Join({"O valor está vazio. ", Returns(FlowCode::kEmptyPath)}),
                 RemedyFor(FlowCode::kEmptyPath));
    return finding;
  }
  const std::string cut = Join({kPathKey, "=", *config.path, "="});
  if (config.text.find(cut) != std::string::npos)
    finding.Warn("Há um segundo \"=\" na linha: o valor termina nele.", kRightLine);
  JudgePath(*config.path, finding);
  return finding;
}

Finding CheckCompanion(const Checkout& checkout) {
  Finding finding;
  if (!NeedsPath(checkout, finding)) return finding;
  const std::string& folder = *checkout.config.path;
  const std::string program = CompanionUnder(folder), shown = Shown(program);
  if (Look(folder) != Found::kFolder) {
    finding.Fail(
        Join({"Não há a pasta ", Shown(folder), ". ", Returns(FlowCode::kCompanionMissing)}),
        RemedyFor(FlowCode::kCompanionMissing));
    return finding;
  }
  if (!FileExists(ToWide(program)) || !OpensForReading(program)) {
    const Found found = Look(program);
    finding.Fail(Join({shown,
                       found == Found::kMissing  ? " não existe. "
                       : found == Found::kFolder ? " é uma pasta, e não um programa. "
                                                 : " não pode ser lido. ",
                       Returns(FlowCode::kCompanionMissing)}),
                 RemedyFor(FlowCode::kCompanionMissing));
  } else {
    std::string start;
    static_cast<void>(ReadBytes(program, start, 2));
    if (BeginsAsImage(start))
      finding.Note(shown + " está na pasta.");
    else
      finding.Fail(Join({shown, " não é um programa do Windows: está vazio ou danificado. ",
                         Returns(FlowCode::kCompanionNotRunning)}),
                   "Instale o Trevix de novo.");
  }
  if (const std::string mark = UpdateMarkUnder(folder); FileExists(ToWide(mark)))
    finding.Fail(
        Join({"Há a marca de atualização ", Shown(mark), ". ", Returns(FlowCode::kBeingUpdated)}),
        RemedyFor(FlowCode::kBeingUpdated));
  JudgeFolder(folder + kQuestionFolder, "O Trevix não tem onde pôr as perguntas.", finding);
  if (JudgeFolder(folder + kAnswerFolder, "A resposta ao Trevix não pode ser gravada (35).",
                  finding))
    if (const std::string left = folder + kAnswerFolder + kStagingFile;
        Look(left) != Found::kMissing)
      finding.Warn(Join({Shown(left),
                         " sobrou de uma chamada interrompida: o que ele tem vai à "
                         "frente da próxima resposta."}),
                   Join({"Sem fluxo em curso, apague ", Shown(left), "."}));
  // The start deletes what an earlier flow left; what it cannot delete is read as this flow's.
  for (const std::string& left :
       {folder + kQuestionFolder + kQuestionFile, folder + kAnswerFolder + kAnswerFile}) {
    if (Look(left) == Found::kMissing) continue;
    if (const SystemError error = TryToDelete(left); error != SystemError::kNone)
      finding.Fail(
          Join({Shown(left), " não pode ser apagado: ", Reason(error), ". O fluxo para nele."}),
          Join({"Feche o programa que o usa, tire o atributo \"somente leitura\", e apague ",
                Shown(left), "."}));
  }
  if (ImageRuns(kCompanionExe))
    finding.Warn("Trevix.exe está em execução: o início de um fluxo o encerra.",
                 "Se nenhum fluxo está em curso, feche o Trevix.");
  return finding;
}

Finding CheckSender(const Checkout& checkout) {
  Finding finding;
  if (!NeedsPath(checkout, finding)) return finding;
  const std::string sender = SenderUnder(*checkout.config.path);
  if (Look(sender) == Found::kFile)
    finding.Note(Shown(sender) + " está na pasta.");
  else
    finding.Warn(
        Join({Shown(sender), Look(sender) == Found::kFolder ? " é uma pasta" : " não existe",
              ": a transação termina, e o envio não é feito (39)."}),
        RemedyFor(FlowCode::kSenderMissing));
  return finding;
}

Finding CheckElevation(const Checkout&) {
  Finding finding;
  if (IsElevated())
    finding.Note("Este programa é administrador. O PDV também precisa ser.");
  else
    finding.Fail(
        Join({"Este programa não é administrador; um PDV aberto do mesmo modo também não. ",
              Returns(FlowCode::kNotElevated)}),
        "Marque \"Executar como administrador\" no atalho do PDV, e repita o diagnóstico em "
        "um console aberto assim.");
  return finding;
}

Finding CheckCancel(const Checkout& checkout) {
  Finding finding;
  std::string line;
  if (!ReadRawFolder(line)) {
    finding.Note("Sem ConfigQJ.ini, um cancelamento não muda a pasta em uso.");
    return finding;
  }
  const std::string first = Join({"A primeira linha de ConfigQJ.ini é [", Shown(line), "]. "});
  const std::string path = checkout.config.path.value_or("");
  if (!path.empty() && Lowered(line) == Lowered(path)) {
    finding.Note(first + "Depois de um cancelamento, a pasta continua a mesma.");
    return finding;
  }
  finding.Warn(
      Join({first, "Depois de um cancelamento, as perguntas são procuradas em ", Shown(line),
            kQuestionFolder,
            TakesLog(line) ? Join({", e o log vai para ", Shown(LogFolderUnder(line))}) : "",
            ", até o próximo início."}),
      Join({"Ponha na primeira linha só a pasta do Trevix",
            Look(path) != Found::kFolder ? "" : Join({", ", Shown(path)}),
            ", e a linha CAMINHO na segunda."}));
  return finding;
}

}  // namespace caixora
