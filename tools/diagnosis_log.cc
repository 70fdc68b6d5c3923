// The checks of the log: its switch, where it lies, and what it says of the last sales.
#include "support/log.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "support/file_helpers.h"
#include "support/text.h"
#include "system/file.h"
#include "system/time.h"
#include "tools/diagnosis_checks.h"
#include "tools/diagnosis_machine.h"
#include "tools/log_reader.h"

namespace caixora {
namespace {

constexpr std::string_view kNoLog = "não foi possível criar o log!";

// A log above the rotation by so much has not been moved aside when it should have been.
constexpr std::uint64_t kTooBig = (kRotationSizeMB + 1) * 1048576ull;
constexpr std::uint64_t kMuchOld = 1024 * 1048576ull;

// Rotated files that are read for open sales; older ones tell of sales long forgotten.
constexpr std::size_t kRotatedRead = 3;
// Of a log that nothing rotates, the end; of many open sales, the last.
constexpr std::size_t kMostBytes = std::size_t{2} * kRotationSizeMB * 1048576;
constexpr std::size_t kMostSales = 10;

// Seconds; the last sale of the log may still be at the printer.
constexpr LogTime kPatience = 900;

std::vector<ListedFile> RotatedLogsIn(const std::string& folder) {
  const std::string name = RotatedLogName({});
  std::vector<ListedFile> files = ListFiles(folder, name.substr(0, name.find('_') + 1));
  std::erase_if(files, [&](const ListedFile& file) {
    return !Lowered(file.name).ends_with(name.substr(name.find('.')));
  });
  return files;
}

// The last kMostBytes of the file.
SystemError ReadTail(const std::string& path, std::string& bytes) {
  File file;
  if (const SystemError error = file.Open(path, File::Use::kRead); error != SystemError::kNone)
    return error;
  std::array<char, 65536> chunk;
  for (std::size_t taken = 0;;) {
    const SystemError error = file.Read(chunk.data(), chunk.size(), taken);
    if (error != SystemError::kNone) return error;
    if (taken == 0 || bytes.size() + taken > 2 * kMostBytes)
      bytes.erase(0, bytes.size() - std::min(bytes.size(), kMostBytes));
    if (taken == 0) return error;
    bytes.append(chunk.data(), taken);
  }
}

// Why a switch file that should ask for something switches the log off.
std::string WhyOff(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return "começa com um BOM: foi salvo como UTF-8";
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
    return "foi salvo como Unicode (UTF-16)";
  const std::string_view line = bytes.substr(0, bytes.find_first_of("\r\n"));
  if (Trim(line).empty()) return "tem espaços na primeira linha";
  if (Trim(line) == "DETALHADO") return "tem espaços antes ou depois de DETALHADO";
  if (Lowered(Trim(line)) == "detalhado") return "tem letras minúsculas";
  return "não é vazio nem DETALHADO";
}

std::string Absolute(const std::string& path, const Checkout& checkout) {
  const bool relative = path.size() < 2 || (path[1] != ':' && !path.starts_with("\\\\"));
  if (path == ".") return checkout.folder;
  return relative ? Join({checkout.folder, "\\", path}) : path;
}

struct LogsRead {
  std::vector<std::string> names;
  std::size_t left_out = 0;
};

void ReadLogsUnder(const std::string& base, const Checkout& checkout, Log& log, LogsRead& read,
                   Finding& finding) {
  const std::string folder = LogFolderUnder(base);
  std::vector<std::string> names;
  for (const ListedFile& file : RotatedLogsIn(folder)) names.push_back(file.name);
  if (names.size() > kRotatedRead) {
    read.left_out += names.size() - kRotatedRead;
    names.erase(names.begin(), names.end() - kRotatedRead);
  }
  if (Look(folder + kLogFile) == Found::kFile) names.emplace_back(kLogFile);
  for (const std::string& name : names) {
    const std::string path = folder + name;
    std::string bytes;
    if (const SystemError error = ReadTail(path, bytes); error != SystemError::kNone) {
      finding.Warn(Join({Shown(path), " não pôde ser lido: ", Reason(error), "."}),
                   "Feche o programa que usa o log, e repita o diagnóstico.");
      continue;
    }
    const std::string shown = Shown(Absolute(path, checkout));
    log.Add(shown, bytes);
    read.names.push_back(shown);
  }
}

LogTime SecondsNow() {
  const LocalTime now = Now();
  const std::chrono::sys_days day = std::chrono::year(now.year) / static_cast<unsigned>(now.month) /
                                    static_cast<unsigned>(now.day);
  return std::chrono::seconds(day.time_since_epoch()).count() + LogTime{3600} * now.hour +
         LogTime{60} * now.minute + now.second;
}

void JudgeSale(const Log& log, const OpenSale& sale, Finding& finding) {
  const Call& call = log.calls()[sale.call];
  const bool waits = sale.why == OpenSale::Why::kApproved || !call.ends_in_log;
  const bool may_go_on =
      waits && sale.call + 1 == log.calls().size() && SecondsNow() - call.end < kPatience;
  const Status status = may_go_on ? Status::kWarning : Status::kFailure;
  const std::string which =
      Join({call.operation.empty() ? "Chamada sem nome no log" : call.operation, ", ",
            call.coupon ? "cupom " + std::to_string(*call.coupon) : "sem cupom conhecido", ", em ",
            DateText(call.begin), " às ", ClockText(call.begin), ": "});
  constexpr std::string_view kUndo =
      "Não repita a venda. Confira no GP se foi feita, e chame Desfazimento com o mesmo cupom.";
  switch (sale.why) {
    case OpenSale::Why::kApproved:
      finding.Add(status, which + "aprovada, sem confirmação nem desfazimento depois.",
                  "Veja no PDV se a venda vale. Se vale, chame Confirmar com o cupom dela; se não, "
                  "Desfazimento.");
      break;
    case OpenSale::Why::kUncertain:
      finding.Add(status, which + "o GP pode ter recebido o pedido, e não se sabe se o aprovou.",
                  kUndo);
      break;
    case OpenSale::Why::kMistakenReply:
      finding.Fail(
          which +
              "respondida pela própria DLL, por um desfecho que estava pendente. Não é uma "
              "aprovação.",
          RemedyFor("S;2;COMANDO COM SUCESSO"));
      break;
  }
}

}  // namespace

void JudgeLog(const std::string& base, const Checkout& checkout, Finding& finding) {
  const std::string folder = LogFolderUnder(base), path = folder + kLogFile;
  const std::string shown = Shown(Absolute(folder, checkout));
  const std::string shown_file = shown + kLogFile,
                    parent = Shown(Absolute(FolderOf(folder), checkout));
  const auto broken = [&](const std::string& what, const std::string& remedy) {
    if (checkout.log_mode == LogMode::kOff)
      finding.Warn(what + " Com o log desligado em LD.txt, isto ainda não encerra o PDV.", remedy);
    else
      finding.Fail(what + " Sem o log, a DLL encerra o PDV na primeira linha que escreve.", remedy);
  };
  finding.Note(Join({"O log vai para ", shown_file, "."}));
  switch (Look(folder)) {
    case Found::kFile:
      return broken(Join({shown, " não pode ser criada: Log é um arquivo, e não uma pasta."}),
                    Join({"Renomeie o arquivo Log em ", parent, ". A DLL cria a pasta."}));
    case Found::kMissing:
      if (const SystemError error = TryToMakeFolderIn(FolderOf(folder));
          error != SystemError::kNone)
        return broken(
            Join({"A pasta ", shown, " não existe e não pode ser criada: ", Reason(error), "."}),
            Join({"Veja se ", parent, " existe, e se o usuário do caixa pode criar pastas ali."}));
      return finding.Note("A pasta ainda não existe; a DLL a cria.");
    case Found::kFolder:
      break;
  }

  const Found found = Look(path);
  const SystemError error = found == Found::kFolder ? SystemError::kNone
                            : found == Found::kFile ? File().Open(path, File::Use::kReadAndAppend)
                                                    : TryToWriteIn(folder);
  if (found == Found::kFolder)
    return broken(Join({shown_file, " é uma pasta, e não um arquivo."}),
                  Join({"Apague a pasta ", shown_file, "."}));
  if (error != SystemError::kNone) {
    std::string what = Join({shown_file, " não abre para gravar: ", Reason(error), "."});
    std::vector<std::string> users = UsersOf(path);
    for (std::string& user : users) user = Shown(user);
    if (!users.empty()) what += Join({" Aberto por ", Listed(users), "."});
    return broken(what, RemedyFor(kNoLog));
  }
  if (found == Found::kMissing) return finding.Note("O arquivo ainda não existe; a DLL o cria.");

  File file;
  std::int64_t size = 0;
  if (file.Open(path, File::Use::kRead) == SystemError::kNone &&
      file.SeekToEnd(size) == SystemError::kNone)
    finding.Note(Join({"Abre para gravar; tem ", SizeText(static_cast<std::uint64_t>(size)), "."}));
  file.Close();
  const std::string limit = std::to_string(kRotationSizeMB) + " MiB";
  if (static_cast<std::uint64_t>(size) > kTooBig)
    finding.Warn(Join({"Passou de ", limit,
                       " e não foi trocado: outro programa o mantém aberto, "
                       "ou não é permitido renomeá-lo."}),
                 "Feche o PDV e o programa que usa o log, e renomeie o arquivo à mão.");
  std::uint64_t total = 0;
  const std::vector<ListedFile> rotated = RotatedLogsIn(folder);
  for (const ListedFile& old : rotated) total += old.size;
  if (!rotated.empty())
    finding.Note(Join(
        {"Arquivos antigos: ", std::to_string(rotated.size()), ", com ", SizeText(total), "."}));
  if (total > kMuchOld)
    finding.Warn("Os arquivos antigos nunca são apagados pela DLL.",
                 Join({"Guarde em outro lugar, ou apague, os mais antigos de ", shown, "."}));
}

Finding CheckLogSwitch(const Checkout& checkout) {
  Finding finding;
  const std::string path = kSwitchFile;
  if (const std::string hidden = WithHiddenExtension(path); !hidden.empty())
    finding.Warn(
        Join({"Há um ", Shown(hidden), ", que não conta."}),
        Join({"Mostre as extensões no Windows, e renomeie ", Shown(hidden), " para ", path, "."}));
  std::string bytes;
  const SystemError error = ReadBytes(path, bytes, kSwitchBytes);
  const std::string_view line = std::string_view(bytes).substr(0, bytes.find_first_of("\r\n"));
  const std::string start = Join({"LD.txt começa com [", Shown(line), "]: "});
  switch (checkout.log_mode) {
    case LogMode::kDetailed:
      finding.Note("LD.txt pede o log detalhado, com as linhas normais e as detalhadas.");
      break;
    case LogMode::kOrdinary:
      if (Look(path) == Found::kMissing)
        finding.Note("LD.txt não existe; a DLL o cria vazio. Log com as linhas normais.");
      else if (Look(path) == Found::kFolder)
        finding.Warn("LD.txt é uma pasta, e não conta. Log com as linhas normais.",
                     "Apague a pasta LD.txt.");
      else if (error != SystemError::kNone)
        finding.Warn(Join({"LD.txt não pode ser lido: ", Reason(error),
                           ". Log com as linhas normais, seja qual for o conteúdo."}),
                     "Feche o programa que usa LD.txt, e veja a permissão dele.");
      else if (!Trim(bytes).empty())
        finding.Warn(Join({start,
                           "a primeira linha está vazia, e só ela conta. Log com as linhas "
                           "normais."}),
                     "Deixe LD.txt vazio, ou ponha DETALHADO na primeira linha.");
      else
        finding.Note("LD.txt está vazio. Log com as linhas normais.");
      break;
    case LogMode::kOff:
      if (error != SystemError::kNone)
        finding.Warn(
            Join({"LD.txt abre e não pode ser lido: ", Reason(error), ". O log está desligado."}),
            "Apague LD.txt; a DLL cria outro.");
      else
        finding.Warn(
            Join({start, WhyOff(bytes), ". O log está desligado: nada é escrito."}),
            "Deixe LD.txt vazio, ou só com DETALHADO, em maiúsculas, sem espaços. No Bloco "
            "de Notas, salve com a codificação ANSI.");
      break;
  }
  return finding;
}

Finding CheckPaymentLog(const Checkout& checkout) {
  Finding finding;
  const std::string base = checkout.GpFolder();
  if (base.empty()) finding.Note("Sem GP, o log fica no diretório atual.");
  JudgeLog(base, checkout, finding);
  return finding;
}

Finding CheckFlowLog(const Checkout& checkout) {
  Finding finding;
  if (!checkout.config.path) {
    finding.Warn("Não verificado: não se sabe a pasta do Trevix.", "Corrija antes o item config.");
    return finding;
  }
  finding.Note("No fluxo interativo, \"Log\" é posto logo atrás do valor de CAMINHO.");
  JudgeLog(*checkout.config.path, checkout, finding);
  return finding;
}

Finding CheckOpenSales(const Checkout& checkout) {
  Finding finding;
  Log log;
  LogsRead read;
  std::vector<std::string> bases = {""};
  for (const std::string& base : {checkout.GpFolder(), checkout.config.path.value_or("")})
    if (std::find(bases.begin(), bases.end(), base) == bases.end()) bases.push_back(base);
  for (const std::string& base : bases) ReadLogsUnder(base, checkout, log, read, finding);
  if (read.names.empty()) {
    finding.Note("Não há log para ler: nada se sabe das vendas anteriores.");
    return finding;
  }
  log.Read();
  finding.Note(Join({"Lidos: ", Listed(read.names), "."}));
  if (read.left_out > 0)
    finding.Note(Join({"Arquivos mais antigos, não lidos: ", std::to_string(read.left_out), "."}));
  std::vector<OpenSale> open = log.OpenSales();
  if (open.empty()) finding.Note("Nenhuma venda sem desfecho.");
  if (open.size() > kMostSales) {
    finding.Note(Join({"Vendas sem desfecho: ", std::to_string(open.size()), ". As últimas:"}));
    open.erase(open.begin(), open.end() - kMostSales);
  }
  for (const OpenSale& sale : open) JudgeSale(log, sale, finding);
  return finding;
}

}  // namespace caixora
