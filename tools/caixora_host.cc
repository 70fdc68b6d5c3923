// Console host: calls any function of Caixora.dll from the command line and shows its result.
#include "caixora.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iterator>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "../simulators/console.h"
// After windows.h, which they need.
#include <oleauto.h>
#include <shellapi.h>

namespace caixora {
namespace {

constexpr std::size_t kStartArguments = 11;
constexpr DWORD kPollMs = 100;
constexpr DWORD kPatienceMs = 120'000;

enum ExitCode { kDone = 0, kRefused = 1, kUsage = 2, kNoLibrary = 3 };

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// ---- Results ----

struct Reply {
  std::optional<std::int32_t> code;  // of an interactive function; the others give a text
  std::string text;

  bool Succeeded() const {
    if (code) return *code == CAIXORA_QJ_SUCESSO;
    return !text.starts_with("S;0;") && !text.starts_with("[ERROABORTAR]");
  }
};

Reply Decode(std::int32_t code) { return {code, std::to_string(code)}; }
Reply Decode(const char* text) { return {std::nullopt, text}; }
Reply Decode(CaixoraTexto text) {
  // The BSTR holds bytes, so its length in bytes is the text's.
  std::string bytes(reinterpret_cast<const char*>(text), ::SysStringByteLen(text));
  ::SysFreeString(text);
  return {std::nullopt, std::move(bytes)};
}

std::string_view Meaning(std::int32_t code) {
  static constexpr std::pair<std::int32_t, std::string_view> kMeanings[] = {
      {CAIXORA_QJ_SUCESSO, "sucesso"},
      {CAIXORA_QJ_SEM_CAMINHO, "ConfigQJ.ini não tem a linha CAMINHO"},
      {CAIXORA_QJ_CAMINHO_VAZIO, "CAMINHO sem pasta"},
      {CAIXORA_QJ_TREVIX_AUSENTE, "Trevix.exe não encontrado"},
      {CAIXORA_QJ_TREVIX_NAO_EXECUTA, "Trevix.exe não está em execução"},
      {CAIXORA_QJ_ERRO_AO_INICIAR, "erro ao iniciar Trevix.exe"},
      {CAIXORA_QJ_SEM_ARQUIVO_RESP, "arquivo de resposta não pôde ser criado"},
      {CAIXORA_QJ_ERRO_RESP, "erro ao gravar ou trocar o arquivo de resposta"},
      {CAIXORA_QJ_SEM_CONFIG, "ConfigQJ.ini não pôde ser lido"},
      {CAIXORA_QJ_VALOR_INVALIDO, "valor fora do formato 0,00"},
      {CAIXORA_QJ_EMAIL_AUSENTE, "Email.exe não encontrado"},
      {CAIXORA_QJ_CNPJ_INVALIDO, "CNPJ inválido"},
      {CAIXORA_QJ_EM_ATUALIZACAO, "Trevix.exe em atualização"},
      {CAIXORA_QJ_SEM_ADMINISTRADOR, "é preciso executar como administrador"},
      {CAIXORA_QJ_OUTRA_TRANSACAO, "Trevix.exe em execução não pôde ser encerrado"},
  };
  const auto* found = std::ranges::find(kMeanings, code, [](const auto& row) { return row.first; });
  return found == std::end(kMeanings) ? "código desconhecido" : found->second;
}

std::string_view TakePiece(std::string_view& rest, std::string_view separator) {
  const std::size_t end = std::min(rest.find(separator), rest.size());
  const std::string_view piece = rest.substr(0, end);
  rest.remove_prefix(std::min(end + separator.size(), rest.size()));
  return piece;
}

void PrintRecord(std::string_view record) {
  std::string_view names =
      "Cupom;Valor em centavos;Bandeira;Rede;Autorização;NSU;Tipo de transação;Parcelas;Controle;"
      "Campo 170-000;Código da rede;Campo 740-000;Campo 741-000;Campo 742-000;Campo 031-000";
  while (!names.empty())
    Print("  " + std::string(TakePiece(names, ";")) + ": " + Utf8(TakePiece(record, ";")) + "\n");
}

void PrintDecoded(std::string_view name, const Reply& reply) {
  Print("== " + std::string(name) + "\n" + Utf8(reply.text));
  if (reply.code) return Print(" (" + std::string(Meaning(*reply.code)) + ")\n");
  Print("\n");
  if (!reply.text.starts_with("S;1;") && !reply.text.starts_with("S;2;")) return;
  for (std::string_view rest = reply.text; !rest.empty();) {
    const std::string_view line = TakePiece(rest, "\r\n");
    if (line.starts_with("S;")) Print("  Mensagem: " + Utf8(line.substr(4)) + "\n");
    if (line.starts_with("C;")) PrintRecord(line.substr(2));
    if (line.starts_with("I;")) Print("  | " + Utf8(line.substr(2)) + "\n");
  }
}

// ---- Functions of the library ----

using Arguments = std::span<const std::string>;
using Call = std::function<Reply()>;

// An argument by its parameter's type. A pointer stays valid as long as the argument.
template <class T>
T Parse(const std::string& text) {
  if constexpr (std::is_same_v<T, const char*>) {
    return text.c_str();
  } else {
    std::string number = text;
    if (std::is_floating_point_v<T>) std::ranges::replace(number, ',', '.');
    T value{};
    const char* const end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, value);
    if (error != std::errc{} || stop != end)
      throw UsageError("Número inválido: \"" + Utf8(text) + "\"");
    return value;
  }
}

struct Function {
  const char* name;
  std::string_view parameters;  // separated by blanks
  std::size_t count;
  Call (*bind)(FARPROC, Arguments);  // of `count` arguments
};

template <class R, class... P>
Call BindTo(FARPROC address, Arguments arguments) {
  const auto function = reinterpret_cast<R (*)(P...)>(reinterpret_cast<void (*)()>(address));
  [[maybe_unused]] auto next = arguments.begin();
  const std::tuple<P...> values{Parse<P>(*next++)...};
  return [function, values] { return Decode(std::apply(function, values)); };
}

// Types come from the header, so that a changed declaration changes the call with it.
template <class R, class... P>
consteval Function MakeRow(std::type_identity<R(P...)>, const char* name,
                           std::string_view parameters) {
  const auto blanks = static_cast<std::size_t>(std::ranges::count(parameters, ' '));
  if ((parameters.empty() ? 0 : blanks + 1) != sizeof...(P)) throw "names do not match types";
  return {name, parameters, sizeof...(P), BindTo<R, P...>};
}

#define CAIXORA_SALE "sCNPJCliente sCNPJParceiro dValor iCupom iLeitor"
#define CAIXORA_FLOW \
  "uFuncao sCNPJ uCampo3 sCampo4 sValor sCampo6 sCampo7 sCampo8 sCampo9 uCampo10 sCampo11"
#define CAIXORA_ROW(name, parameters) \
  MakeRow(std::type_identity<decltype(name)>{}, #name, parameters)

constexpr Function kFunctions[] = {
    CAIXORA_ROW(VendeCredito, CAIXORA_SALE),
    CAIXORA_ROW(VendeCreditoVista, CAIXORA_SALE),
    CAIXORA_ROW(VendeCreditoParcLoja, "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iLeitor"),
    CAIXORA_ROW(VendeCreditoParcAdm, "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iLeitor"),
    CAIXORA_ROW(VendeDebito, CAIXORA_SALE),
    CAIXORA_ROW(VendeDebitoAVista, CAIXORA_SALE),
    CAIXORA_ROW(MenuPrivate, CAIXORA_SALE),
    CAIXORA_ROW(VendeCarteiraDigitalPix, CAIXORA_SALE),
    CAIXORA_ROW(ParceleMais, CAIXORA_SALE),
    CAIXORA_ROW(VendeFrotaCompleto,
                "sCNPJCliente sCNPJParceiro dValor sKM sPlaca sMatricula iQtdeItens sItens iCupom "
                "iLeitor"),
    CAIXORA_ROW(LinkPagamento,
                "sCNPJCliente sCNPJParceiro iParcelas dValor iCupom iQtdeItens sItens sCampo011 "
                "sCampo012 iLeitor"),
    CAIXORA_ROW(ListarLinkPagamentoPago, CAIXORA_SALE),
    CAIXORA_ROW(ManutencaoLinkPagamento, "sCNPJCliente sCNPJParceiro iLeitor"),
    CAIXORA_ROW(Confirmar, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(Desfazimento, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(Cancelar, "sCNPJCliente sCNPJParceiro dValor iCupom sControle iLeitor"),
    CAIXORA_ROW(Reimpressao, "sCNPJCliente sCNPJParceiro iLeitor"),
    CAIXORA_ROW(ReimpressaoDireto, "sCNPJCliente sCNPJParceiro sNSU data iCupom iLeitor"),
    CAIXORA_ROW(Adm, CAIXORA_SALE),
    CAIXORA_ROW(Relatorio, "sCNPJCliente sCNPJParceiro iCupom iLeitor"),
    CAIXORA_ROW(RecargaCelular, "sCNPJCliente sCNPJParceiro iCupom iLeitor"),
    CAIXORA_ROW(Atv, "sCNPJCliente sCNPJParceiro iCupom iLeitor"),
    CAIXORA_ROW(SolicitarCPF, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(SolicitarCNPJ, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(SolicitarDocumento, "sCNPJCliente sCNPJParceiro iCupom"),
    CAIXORA_ROW(Teste, ""),
    CAIXORA_ROW(IniciaFuncaoQJInterativo, CAIXORA_FLOW),
    CAIXORA_ROW(AguardaFuncaoQJInterativo, ""),
    CAIXORA_ROW(ContinuaFuncaoQJInterativo, "sInformacao"),
    CAIXORA_ROW(FinalizaFuncaoQJInterativo, CAIXORA_FLOW),
    CAIXORA_ROW(CancelarFluxoQJInterativo, ""),
    CAIXORA_ROW(ConfiguraIntTefInterativo, ""),
};

// ---- The host ----

std::string ToAnsi(std::wstring_view wide) {
  std::string text(wide.size(), '\0');
  const int size = static_cast<int>(wide.size());
  BOOL lossy = FALSE;
  ::WideCharToMultiByte(kWindows1252, WC_NO_BEST_FIT_CHARS, wide.data(), size, text.data(), size,
                        nullptr, &lossy);
  if (lossy) throw UsageError("Há um caractere que o Windows-1252 não tem");
  return text;
}

// One line of the keyboard, or of a pipe, whose bytes stay as they are. Nothing at the end.
std::optional<std::string> ReadAnswer() {
  const HANDLE in = ::GetStdHandle(STD_INPUT_HANDLE);
  std::string line;
  if (IsConsole(in)) {
    std::wstring typed;  // to the line's end: what is left unread would answer the next question
    wchar_t buffer[512];
    for (DWORD got = 0; !typed.ends_with(L'\n'); typed.append(buffer, got))
      if (!::ReadConsoleW(in, buffer, DWORD{std::size(buffer)}, &got, nullptr) || got == 0) break;
    line = ToAnsi(typed);
  } else {
    for (int c = 0; c != '\n' && (c = std::getchar()) != EOF;) line += static_cast<char>(c);
  }
  if (line.empty()) return std::nullopt;
  return line.substr(0, line.find_first_of("\r\n"));
}

using Step = std::function<bool()>;  // true when all went well

class Host {
 public:
  Host(HMODULE library, bool raw) : library_(library), raw_(raw) {}

  // Checks everything that can be checked before anything is called.
  Step Prepare(const std::string& name, Arguments arguments) const {
    if (name == "Pausa") {
      Expect(name, "ms", arguments.size() == 1);
      return [ms = Parse<std::uint32_t>(arguments[0])] { return ::Sleep(ms), true; };
    }
    if (name == "Pasta") {
      Expect(name, "dir", arguments.size() == 1);
      return [folder = Widen(arguments[0], kWindows1252)] {
        if (!::SetCurrentDirectoryW(folder.c_str())) throw UsageError("Pasta não encontrada");
        return true;
      };
    }
    if (name == "Fluxo") {
      Expect(name, CAIXORA_FLOW " [respostas...]", arguments.size() >= kStartArguments);
      Bind("IniciaFuncaoQJInterativo", arguments.first(kStartArguments));
      return [this, arguments] { return RunFlow(arguments); };
    }
    return [this, name, call = Bind(name, arguments)] { return Show(name, call()).Succeeded(); };
  }

 private:
  static void Expect(const std::string& name, std::string_view parameters, bool right) {
    if (!right)
      throw UsageError("Argumentos a mais ou a menos. Uso: " + name + " " +
                       std::string(parameters));
  }

  Call Bind(const std::string& name, Arguments arguments) const {
    const auto* row = std::ranges::find(kFunctions, name, &Function::name);
    if (row == std::end(kFunctions)) throw UsageError("Função desconhecida: " + Utf8(name));
    Expect(name, row->parameters, arguments.size() == row->count);
    const FARPROC address = ::GetProcAddress(library_, row->name);
    if (address == nullptr) throw UsageError("A biblioteca não tem a função " + name);
    try {
      return row->bind(address, arguments);
    } catch (const UsageError& error) {
      throw UsageError(error.what() + (". Uso: " + name + " ") + std::string(row->parameters));
    }
  }

  Reply Show(const std::string& name, Reply reply) const {
    if (!raw_) {
      PrintDecoded(name, reply);
    } else {
      const std::string line = reply.text + "\n";
      WriteTo(::GetStdHandle(STD_OUTPUT_HANDLE), line);
    }
    return reply;
  }

  Reply CallAndShow(const std::string& name, Arguments arguments = {}) const {
    return Show(name, Bind(name, arguments)());
  }

  // The next answer, from the command line or the keyboard; nothing when there is none left. Asks
  // again for one that cannot be sent: an error here would leave the companion running.
  std::optional<std::string> NextAnswer(Arguments& answers) const {
    if (!answers.empty()) {
      const Arguments given = std::exchange(answers, answers.subspan(1));
      return given.front();
    }
    while (true) {
      try {
        if (!raw_) Print("Resposta (ou cancelar): ");
        return ReadAnswer();
      } catch (const UsageError& error) {
        Print(std::string(error.what()) + "\n", STD_ERROR_HANDLE);
      }
    }
  }

  bool RunFlow(Arguments arguments) const {
    static const std::string kWait = "AguardaFuncaoQJInterativo";
    Arguments answers = arguments.subspan(kStartArguments);
    std::vector<std::string> start(arguments.begin(), arguments.begin() + kStartArguments);
    if (!CallAndShow("IniciaFuncaoQJInterativo", start).Succeeded()) return false;
    const Call wait = Bind(kWait, {});
    ULONGLONG last_news = ::GetTickCount64();
    while (::GetTickCount64() - last_news < kPatienceMs) {
      const Reply news = wait();
      if (news.text.empty()) {
        ::Sleep(kPollMs);
        continue;
      }
      Show(kWait, news);
      if (!news.Succeeded()) break;
      if (news.text.find("[RETORNO]") != std::string::npos) {
        start[0] = "99";
        return CallAndShow("FinalizaFuncaoQJInterativo", start).Succeeded();
      }
      const std::optional<std::string> answer = NextAnswer(answers);
      if (!answer || answer == "cancelar") break;
      if (!CallAndShow("ContinuaFuncaoQJInterativo", {&*answer, 1}).Succeeded()) break;
      last_news = ::GetTickCount64();
    }
    CallAndShow("CancelarFluxoQJInterativo");
    return false;
  }

  HMODULE library_;
  bool raw_;
};

// ---- The command line ----

void PrintUsage() {
  Print(
      "Uso: caixora_host [--dll <arquivo>] [--bruto] <função> [argumentos] [+ <função> ...]\n"
      "     caixora_host --lista\n\n"
      "  --dll <arquivo>   a biblioteca; sem ela, Caixora.dll ao lado deste programa\n"
      "  --bruto           só os bytes de cada resultado e uma quebra de linha\n"
      "  --lista           as funções com seus argumentos\n\n"
      "Além das funções da biblioteca: Pausa <ms>, Pasta <dir> e o fluxo interativo completo,\n"
      "Fluxo <os onze argumentos do início> [respostas...]; a resposta \"cancelar\" o abandona.\n"
      "Código de saída: 0 tudo com sucesso, 1 recusa, 2 erro de uso, 3 sem a biblioteca.\n");
}

HMODULE Load(const std::string& path) {
  if (path.empty()) return ::LoadLibraryW(L"Caixora.dll");
  wchar_t whole[MAX_PATH];  // a relative path is one of the current folder, not of the search path
  const DWORD size =
      ::GetFullPathNameW(Widen(path, kWindows1252).c_str(), MAX_PATH, whole, nullptr);
  if (size >= MAX_PATH) ::SetLastError(ERROR_FILENAME_EXCED_RANGE);  // `whole` holds nothing
  return size > 0 && size < MAX_PATH ? ::LoadLibraryW(whole) : nullptr;
}

int Run(const std::vector<std::string>& arguments) {
  bool raw = false;
  std::string path;
  auto next = arguments.begin();
  for (; next != arguments.end() && next->starts_with("--"); ++next) {
    if (*next == "--bruto") {
      raw = true;
    } else if (*next == "--dll" && next + 1 != arguments.end()) {
      path = *++next;
    } else if (*next == "--lista") {
      for (const Function& row : kFunctions)
        Print(std::string(row.name) + " " + std::string(row.parameters) + "\n");
      return kDone;
    } else {
      throw UsageError("Opção desconhecida: " + Utf8(*next));
    }
  }
  if (next == arguments.end()) return PrintUsage(), kUsage;

  const HMODULE library = Load(path);
  if (library == nullptr) {
    Print("A biblioteca não pôde ser carregada: erro " + std::to_string(::GetLastError()) + "\n",
          STD_ERROR_HANDLE);
    return kNoLibrary;
  }
  const Host host(library, raw);
  std::vector<Step> steps;
  for (;; ++next) {
    const auto end = std::find(next, arguments.end(), "+");
    if (next == end) throw UsageError("Falta uma função ao lado de \"+\"");
    steps.push_back(host.Prepare(*next, {next + 1, end}));
    if ((next = end) == arguments.end()) break;
  }
  bool succeeded = true;
  for (const Step& step : steps) succeeded &= step();
  return succeeded ? kDone : kRefused;
}

int Start() {
  try {
    int count = 0;
    wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(ToAnsi(wide[i]));
    ::LocalFree(wide);
    return Run(arguments);
  } catch (const UsageError& error) {
    Print(std::string(error.what()) + "\n", STD_ERROR_HANDLE);
    return kUsage;
  }
}

}  // namespace
}  // namespace caixora

int main() { return caixora::Start(); }
