// Simulated GP: takes each request from the exchange folder and answers it. What the request asks
// for chooses the row of kOperations, the cents of its amount the row of kOutcomes.
#include <algorithm>
#include <ctime>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "programs/console.h"
#include "support/ansi.h"

namespace caixora {
namespace {

constexpr DWORD kPollMs = 20;
constexpr DWORD kExitDelayMs = 500;  // long enough for the library to notice that it was taken

enum ExitCode { kUsage = 1, kNoFolder = 2, kAlreadyRuns = 3, kExitAsked = 4 };

// ---- What can be asked ----

struct Operation {
  std::string_view header;
  std::string_view subtype;  // empty: whatever the subtype; such a row comes after its siblings
  std::string_view type;     // field 011-000; empty: not a transaction of the network
  bool receipt;
  std::string_view title;
  std::string_view message;
};

constexpr std::string_view kApproved = u8"TRANSAÇÃO APROVADA"_ansi;

constexpr Operation kOperations[] = {
    {"CRT", "0", "10", true, "CREDITO", kApproved},
    {"CRT", "1", "20", true, "DEBITO", kApproved},
    {"CRT", "2F", "31", true, "FROTA", kApproved},
    {"CRT", "2", "30", true, "PRIVATE LABEL", kApproved},
    {"CRT", "4", "40", true, "LINK DE PAGAMENTO", "LINK GERADO"},
    {"CRT", "5", "50", true, "CARTEIRA DIGITAL PIX", kApproved},
    {"CRT", "6", "", true, "LINKS PAGOS", "LISTA DE LINKS PAGOS"},
    {"CRT", "7", "70", true, "PARCELEMAIS", kApproved},
    {"CRT", "", "10", true, "VENDA", kApproved},
    {"CNC", "", "90", true, "CANCELAMENTO", u8"CANCELAMENTO EFETUADO"_ansi},
    {"ADM", "REIMPRESSAO", "95", true, "REIMPRESSAO", u8"REIMPRESSÃO EFETUADA"_ansi},
    {"ADM", "MANUTLINKPGTO", "", false, "", u8"MANUTENÇÃO DE LINKS CONCLUÍDA"_ansi},
    {"ADM", "", "", true, "FUNCAO ADMINISTRATIVA", u8"FUNÇÃO CONCLUÍDA"_ansi},
    {"REL", "", "", true, "RELATORIO DE TRANSACOES", u8"RELATÓRIO EMITIDO"_ansi},
    {"CEL", "", "60", true, "RECARGA DE CELULAR", "RECARGA EFETUADA"},
    {"CPF", "", "", false, "", "CPF 12345678909"},
    {"CNPJ", "", "", false, "", "CNPJ 11222333000181"},
    {"CPFCNPJ", "", "", false, "", "DOCUMENTO 12345678909"},
    {"ATV", "", "", false, "", "GP ATIVO"},
};

// ---- What comes of it ----

enum class Action { kAnswer, kStaySilent, kExit, kNeverTake };

struct Outcome {
  std::string_view cents;
  Action action;
  bool approved;
  bool receipt;
  bool every_field;
  DWORD delay_ms;
  std::string_view refusal;
  std::string_view description;
};

constexpr Outcome kOutcomes[] = {
    {"01", Action::kAnswer, true, false, false, 0, "", "aprova sem comprovante"},
    {"02", Action::kAnswer, false, false, false, 0, u8"TRANSAÇÃO NÃO AUTORIZADA"_ansi, "recusa"},
    {"03", Action::kStaySilent, true, true, false, 0, "", "recebe e nunca responde"},
    {"04", Action::kExit, true, true, false, 0, "", "recebe e encerra o GP sem responder"},
    {"05", Action::kNeverTake, true, true, false, 0, "", "nunca recebe o pedido"},
    {"06", Action::kAnswer, true, true, true, 0, "", "aprova com todos os campos"},
    {"07", Action::kAnswer, true, true, false, 3000, "", "aprova depois de 3 s"},
    {"08", Action::kAnswer, false, false, false, 0, u8"transação não autorizada"_ansi,
     "recusa com mensagem em minúsculas"},
    {"", Action::kAnswer, true, true, false, 0, "", "aprova com comprovante"},
};

// ---- The request ----

class Request {
 public:
  explicit Request(std::string_view record) {
    while (!record.empty()) {
      const std::string_view line = record.substr(0, record.find('\n'));
      record.remove_prefix(std::min(line.size() + 1, record.size()));
      const std::size_t sign = line.find('=');
      if (sign != std::string_view::npos)
        fields_.emplace(Trim(line.substr(0, sign)), Trim(line.substr(sign + 1)));
    }
  }

  bool Has(std::string_view key) const { return fields_.contains(key); }

  std::string_view Value(std::string_view key, std::string_view otherwise = {}) const {
    const auto found = fields_.find(key);
    return found == fields_.end() ? otherwise : std::string_view(found->second);
  }

  std::string Subtype() const {
    if (Has("000-001")) return std::string(Value("000-001"));
    const bool fleet = std::ranges::any_of(fields_, [](const auto& field) {
      return field.first.starts_with("250-") || field.first.starts_with("261-");
    });
    const std::string_view type = Value("800-001");
    return fleet && type == "2" ? "2F" : std::string(type);
  }

 private:
  // The header of a confirmation has two blanks before its value, and lines end in CR LF.
  static std::string Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(" \t\r") - first + 1));
  }

  std::map<std::string, std::string, std::less<>> fields_;
};

const Operation* FindOperation(const Request& request) {
  const std::string subtype = request.Subtype();
  const auto* found = std::ranges::find_if(kOperations, [&](const Operation& row) {
    return row.header == request.Value("000-000") &&
           (row.subtype.empty() || row.subtype == subtype);
  });
  return found == std::end(kOperations) ? nullptr : found;
}

const Outcome& FindOutcome(const Request& request) {
  const std::string_view amount = request.Value("003-000");
  const std::string_view cents =
      amount.substr(amount.size() - std::min<std::size_t>(2, amount.size()));
  return *std::ranges::find_if(
      kOutcomes, [&](const Outcome& row) { return row.cents.empty() || row.cents == cents; });
}

// ---- The answer ----

// Readers find keys anywhere in a line and cut values at "=": an echoed text must hold neither.
std::string Harmless(std::string_view text) {
  std::string clean(text.substr(0, 40));
  std::ranges::replace_if(
      clean, [](char c) { return c == '=' || c == '-'; }, ' ');
  return clean;
}

void Add(std::string& answer, std::string_view key, std::string_view value) {
  answer.append(key).append(" = ").append(value).append("\r\n");
}

std::string Amount(std::string_view cents) {
  if (cents.size() < 3) return std::string(cents);
  return std::string(cents.substr(0, cents.size() - 2)) + "," +
         std::string(cents.substr(cents.size() - 2));
}

std::string Now(const char* format) {
  const std::time_t now = std::time(nullptr);
  char text[32];
  return {text, std::strftime(text, sizeof text, format, std::localtime(&now))};
}

std::vector<std::string> Receipt(const Operation& operation, const Request& request,
                                 const std::string& nsu) {
  static constexpr std::pair<std::string_view, std::string_view> kEchoes[] = {
      {"001-000", "CUPOM"},    {"012-000", "NSU ORIGINAL"}, {"022-000", "DATA ORIGINAL"},
      {"800-007", "CONTROLE"}, {"800-004", "PARCELAS"},     {"800-010", "PARCELAS"},
      {"250-000", "KM"},       {"250-001", "PLACA"},        {"250-002", "MATRICULA"},
      {"261-000", "ITENS"},
  };
  std::vector<std::string> lines = {"GP SIMULADO   REDE SIMULADA", std::string(operation.title),
                                    Now("%d/%m/%Y %H:%M"), "NSU: " + nsu};
  for (const auto& [key, label] : kEchoes)
    if (request.Has(key)) lines.push_back(std::string(label) + ": " + Harmless(request.Value(key)));
  if (request.Has("003-000")) lines.push_back("VALOR: R$ " + Amount(request.Value("003-000")));
  lines.push_back("TESTE SEM VALOR FISCAL");
  return lines;
}

// Fields that seldom come; together with the usual ones they fill every place of a result.
constexpr std::pair<std::string_view, std::string_view> kSeldomFields[] = {
    {"010-001", "77"},        {"031-000", "CAMPO 31"},
    {"170-000", "CAMPO 170"}, {"504-001", "REDE SUBSTITUTA"},
    {"640-000", "640"},       {"740-000", "CAMPO 740"},
    {"741-000", "CAMPO 741"}, {"742-000", "CAMPO 742"},
};

std::string NextNsu() {
  static unsigned long long counter = static_cast<unsigned long long>(std::time(nullptr));
  return std::to_string(1'000'000'000 + ++counter % 1'000'000'000).substr(1);
}

std::string Compose(const Request& request, const Operation* operation, const Outcome& outcome) {
  const bool approved = operation != nullptr && outcome.approved;
  std::string answer;
  std::vector<std::string> receipt;
  for (const std::string_view key : {"000-000", "001-000", "003-000"})
    if (request.Has(key)) Add(answer, key, request.Value(key));
  Add(answer, "009-000", approved ? "0" : "5");
  if (approved) {
    const std::string nsu = NextNsu();
    if (!operation->type.empty()) {
      Add(answer, "010-000", "REDE SIMULADA");
      Add(answer, "011-000", operation->type);
      Add(answer, "012-000", request.Value("012-000", nsu));
      Add(answer, "013-000", nsu.substr(3));
      Add(answer, "018-000", request.Value("800-004", request.Value("800-010", "0")));
      Add(answer, "040-000", "BANDEIRA TESTE");
      Add(answer, "800-007", "CTRL" + nsu);
    }
    if (outcome.every_field)
      for (const auto& [key, value] : kSeldomFields) Add(answer, key, value);
    if (operation->receipt && outcome.receipt) receipt = Receipt(*operation, request, nsu);
  }
  Add(answer, "028-000", std::to_string(receipt.size()));
  for (std::size_t i = 0; i < receipt.size(); ++i)
    Add(answer, "029-" + std::to_string(1001 + i).substr(1), receipt[i]);
  Add(answer, "030-000",
      approved    ? operation->message
      : operation ? outcome.refusal
                  : u8"OPERAÇÃO DESCONHECIDA"_ansi);
  Add(answer, "999-999", "0");
  return answer;
}

// ---- The program ----

class Manager {
 public:
  explicit Manager(std::string folder) : folder_(std::move(folder)) {
    ::CreateDirectoryA((folder_ + "\\Req").c_str(), nullptr);
    ::CreateDirectoryA((folder_ + "\\Resp").c_str(), nullptr);
    Log("Aguardando pedidos em " + Utf8(folder_));
  }

  // Serves requests until one of them asks for the end.
  ExitCode Run() {
    for (;; ::Sleep(kPollMs)) {
      const std::optional<std::string> record = ReadWhole(request_);
      if (!record || record == left_alone_) continue;
      left_alone_.reset();
      const Request request(*record);
      const Outcome& outcome = FindOutcome(request);
      const std::string name = Utf8(request.Value("000-000")) + " cupom " +
                               Utf8(request.Value("001-000", "-")) + " valor " +
                               Utf8(Amount(request.Value("003-000", "-")));
      if (outcome.action == Action::kNeverTake) {
        Log("Ignorado: " + name);
        left_alone_ = record;
      } else if (::DeleteFileA(request_.c_str())) {  // else it is held open: next time
        Log("Recebido: " + name);
        AppendLine(OwnFolder() + "\\Pedidos.txt", "==== " + Now("%H:%M:%S") + "\r\n" + *record);
        if (outcome.action == Action::kExit) {
          Log("Encerrando sem responder, como pedido.");
          return kExitAsked;
        }
        Serve(request, outcome);
      }
    }
  }

 private:
  static void Log(const std::string& text) { Print(Now("%H:%M:%S ") + text + "\n"); }

  void Serve(const Request& request, const Outcome& outcome) const {
    const std::string_view header = request.Value("000-000");
    if (header == "CNF" || header == "NCN") return;
    if (outcome.action == Action::kStaySilent) return Log("Sem resposta, como pedido.");
    const std::string answer = Compose(request, FindOperation(request), outcome);
    ::Sleep(outcome.delay_ms);
    const std::string name = header == "ATV" ? "\\Resp\\Ativo.001" : "\\Resp\\Intpos.001";
    const bool done = Publish(folder_ + "\\Resp\\intpos.tmp", folder_ + name, answer);
    Log(done ? "Respondido: " + Utf8(Request(answer).Value("030-000"))
             : "Resposta não gravada em " + Utf8(folder_ + name));
  }

  std::string folder_;
  std::string request_ = folder_ + "\\Req\\intpos.001";
  std::optional<std::string> left_alone_;
};

// The only drive that holds the exchange folder; empty when there is none or more than one.
std::string FindExchangeFolder() {
  ::SetErrorMode(SEM_FAILCRITICALERRORS);  // a drive without a disk asks nothing
  std::string found;
  for (const char drive : std::string_view("CDEF")) {
    const std::string folder = std::string(1, drive) + ":\\Tef_Dial";
    if (!OpenFile(folder + "\\Tef_Dial.exe", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING))
      continue;
    if (!found.empty()) return {};
    found = folder;
  }
  return found;
}

int Start(int argc, char** argv) {
  bool quiet = false;
  std::string folder;
  for (int i = 1; i < argc; ++i) {
    if (::_stricmp(argv[i], "STARTAUTO") == 0) {
      quiet = true;
    } else if (std::string_view(argv[i]) == "--pasta" && i + 1 < argc) {
      folder = argv[++i];
    } else {
      Print("Uso: clientorvane_simulador [STARTAUTO] [--pasta <pasta de troca>]\n");
      return kUsage;
    }
  }
  const Handle lock(::CreateMutexA(nullptr, FALSE, "CaixoraGpSimulado"));
  if (::GetLastError() == ERROR_ALREADY_EXISTS) {
    Print("O GP simulado já está em execução.\n");
    return kAlreadyRuns;
  }
  if (folder.empty()) folder = FindExchangeFolder();
  if (folder.empty()) {
    Print("É preciso exatamente uma pasta Tef_Dial com Tef_Dial.exe nas unidades C: a F:\n");
    return kNoFolder;
  }
  if (!quiet) {
    Print("GP simulado. Os centavos do valor escolhem o desfecho:\n");
    for (const Outcome& row : kOutcomes)
      Print("  " + std::string(row.cents.empty() ? "outros" : row.cents) + ": " +
            std::string(row.description) + "\n");
  }
  const ExitCode code = Manager(folder).Run();
  ::Sleep(kExitDelayMs);
  return code;
}

}  // namespace
}  // namespace caixora

int main(int argc, char** argv) { return caixora::Start(argc, argv); }
