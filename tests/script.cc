#include "script.h"

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>

#include "exchange/chama_tef.h"
#include "machine.h"

namespace {

constexpr char kBetweenNotes[] = " | ";
constexpr char kLineEnd[] = "\xC2\xB6";  // the pilcrow

Lines first_lines;
std::vector<std::pair<std::string, std::string>> names;  // and their texts, the last one first
std::vector<std::pair<std::string, Lines>> passages;     // and their notes

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
    text.replace(at, from.size(), to);
}

// The text before the separator; what follows stays.
std::string TakeUpTo(std::string& text, const std::string& separator) {
  const std::size_t end = text.find(separator);
  const std::string taken = text.substr(0, end);
  text.erase(0, end == text.npos ? end : end + separator.size());
  return taken;
}

// Windows-1252 as UTF-8, what shows no character as "\xNN".
std::string Shown(const std::string& bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const bool hidden = byte < ' ' || (byte > '~' && byte <= 0xA0) || byte == 0xAD || byte == 0xB6;
    char code[5];
    std::snprintf(code, sizeof code, "\\x%02X", byte);
    if (bytes.compare(i, 2, "\r\n") == 0)
      text += kLineEnd, ++i;
    else if (hidden || bytes.compare(i, 2, "\\x") == 0 || bytes.substr(i) == " ")
      text += code;
    else if (byte <= '~')
      text += bytes[i];
    else
      text += {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(byte & 0xBF)};
  }
  return text;
}

std::string Bytes(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text.compare(i, 2, kLineEnd) == 0)
      bytes += "\r\n", ++i;
    else if (text.compare(i, 2, "\\x") == 0)
      bytes += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)), i += 3;
    else if (text[i] == '\xC2' || text[i] == '\xC3')
      bytes += static_cast<char>(text[i + 1] | (text[i] & 1) << 6), ++i;
    else
      bytes += text[i];
  return bytes;
}

template <class T>
T As(const std::string& word) {
  if constexpr (std::is_same_v<T, const char*>)
    return word == "nulo" ? nullptr : word.c_str();
  else
    return static_cast<T>(std::stod(word));
}

std::string Told(CaixoraTexto result) { return TakeResult(result); }
std::string Told(const char* result) { return result; }
std::string Told(std::int32_t result) { return std::to_string(result); }

struct Armed {
  Armed() { machine.armed = true; }
  ~Armed() { machine.armed = false; }
};

template <class Result, class... Arguments, std::size_t... I>
Result Call(Result (*function)(Arguments...), const Lines& words, std::index_sequence<I...>) {
  const Armed scope;
  return function(As<Arguments>(words.at(I + 1))...);
}

using Function = std::function<std::string(const Lines&)>;

template <class Result, class... Arguments>
Function Bind(Result (*function)(Arguments...)) {
  return [function](const Lines& words) {
    return Told(Call(function, words, std::index_sequence_for<Arguments...>()));
  };
}

// For codes that no export passes.
CaixoraTexto ChamaTef(std::int32_t codigo, const char* sCNPJCliente, const char* sCNPJParceiro,
                      double dValor, std::int32_t iCupom, std::int32_t iLeitor) {
  return caixora::ChamaTef({codigo, sCNPJCliente, sCNPJParceiro, 1, dValor, iCupom, iLeitor})
      .release();
}

// clang-format off
#define F(name) {#name, Bind(name)}
const std::map<std::string, Function> kFunctions = {
    F(VendeCredito), F(VendeCreditoVista), F(VendeCreditoParcLoja), F(VendeCreditoParcAdm),
    F(VendeDebito), F(VendeDebitoAVista), F(MenuPrivate), F(VendeCarteiraDigitalPix),
    F(ParceleMais), F(VendeFrotaCompleto), F(LinkPagamento), F(ListarLinkPagamentoPago),
    F(ManutencaoLinkPagamento), F(Confirmar), F(Desfazimento), F(Cancelar), F(Reimpressao),
    F(ReimpressaoDireto), F(Adm), F(Relatorio), F(RecargaCelular), F(Atv), F(SolicitarCPF),
    F(SolicitarCNPJ), F(SolicitarDocumento), F(Teste), F(IniciaFuncaoQJInterativo),
    F(AguardaFuncaoQJInterativo), F(ContinuaFuncaoQJInterativo), F(FinalizaFuncaoQJInterativo),
    F(CancelarFluxoQJInterativo), F(ConfiguraIntTefInterativo), F(ChamaTef)};
#undef F
// clang-format on

void MakeFolders(const std::string& path) {
  for (std::size_t end = path.find('\\'); end != path.npos; end = path.find('\\', end + 1))
    machine.folders.insert(Lower(path.substr(0, end)));
}

void Act(const std::string& line) {
  static const std::map<std::string, std::set<std::string> Machine::*> kSets = {
      {"tranca", &Machine::locked}, {"segura", &Machine::held},    {"estraga", &Machine::broken},
      {"roda", &Machine::running},  {"teima", &Machine::stubborn}, {"cai", &Machine::stillborn}};
  std::string rest = line;
  const std::string verb = TakeUpTo(rest, " ");
  if (const auto set = kSets.find(verb); set != kSets.end()) {
    (machine.*set->second).insert(Lower(rest));
  } else if (verb == "solta") {
    for (const auto& [name, each] : kSets) (machine.*each).erase(Lower(rest));
  } else if (verb == "arquivo" || verb == "tamanho") {
    const std::string path = TakeUpTo(rest, " = ");
    MakeFolders(path);
    machine.files[Lower(path)] = verb == "arquivo" ? rest : std::string(std::stoul(rest), '.');
  } else if (verb == "pasta") {
    MakeFolders(rest + "\\");
  } else if (verb == "apaga") {
    machine.files.erase(Lower(rest));
    machine.folders.erase(Lower(rest));
  } else if (verb == "gp") {
    machine.gp_way = TakeUpTo(rest, " ");
    machine.gp_answer = rest;
  } else if (verb == "quando") {
    std::string note = TakeUpTo(rest, ": ");
    const int count = note.find("x ") == 1 ? std::stoi(TakeUpTo(note, "x ")) : 1;
    machine.triggers.push_back({count, note, [rest] { Act(rest); }});
  } else if (verb == "nega") {
    machine.failing_results = std::stoi(rest);
  } else {
    throw std::runtime_error("linha desconhecida: " + line);
  }
}

}  // namespace

std::vector<Case> ReadCases(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path.filename().string());
  std::vector<Case> cases(1);
  for (std::string line; std::getline(file, line);)
    if (line.starts_with("== "))
      cases.push_back({line.substr(3), {}});
    else
      cases.back().lines.push_back(line);
  return cases;
}

void ReadCommon() {
  Lines texts;  // of the passages
  const std::vector<Case> whole = ReadCases(kTranscripts / "comum.txt");
  for (std::string line : whole.front().lines) {
    if (IsTranscript(line)) {
      texts.back() += line.substr(1);
    } else if (line.starts_with("{")) {
      passages.push_back({TakeUpTo(line, " = "), {}});
      texts.push_back(line);
    } else if (line.starts_with("$")) {
      const std::string name = TakeUpTo(line, " = ");
      for (const auto& [known, meaning] : names) {
        if (known.starts_with(name)) throw std::runtime_error(name + " começa " + known);
        ReplaceAll(line, known, meaning);
      }
      names.insert(names.begin(), {name, line});
    } else {
      first_lines.push_back(line);
    }
  }
  for (std::size_t i = 0; i < texts.size(); ++i)
    while (!texts[i].empty()) passages[i].second.push_back(TakeUpTo(texts[i], kBetweenNotes));
}

void StartCase() {
  ResetMachine();
  for (const std::string& line : first_lines) RunLine(line);
}

bool RunLine(const std::string& text) {
  std::string line = text.starts_with('#') ? "" : text.substr(0, text.find(kArrow));
  for (const auto& [name, meaning] : names) ReplaceAll(line, name, meaning);
  line = Bytes(line);
  machine.notes.clear();
  bool calls = false;
  while (!line.empty()) {
    const std::string statement = TakeUpTo(line, "; ");
    std::istringstream stream(statement);
    Lines words;
    for (std::string word; stream >> std::quoted(word, '"', '\0');) words.push_back(word);
    const auto function = kFunctions.find(words.at(0));
    if (function == kFunctions.end()) {
      Act(statement);
      continue;
    }
    machine.notes.push_back("= " + function->second(words));
    for (const std::string& path : machine.open) machine.Note("* ficou aberto " + path);
    calls = true;
  }
  return calls;
}

Lines Transcript() {
  Lines notes;
  for (const std::string& note : machine.notes) {
    notes.push_back(Shown(note));
    for (const auto& [name, meaning] : names) ReplaceAll(notes.back(), meaning, name);
  }
  for (const auto& [name, body] : passages) {
    Lines folded;
    for (auto at = notes.begin(); at != notes.end();)
      if (notes.end() - at >= std::ssize(body) && std::equal(body.begin(), body.end(), at)) {
        folded.push_back(name);
        at += std::ssize(body);
      } else {
        folded.push_back(*at++);
      }
    notes.swap(folded);
  }

  Lines lines;
  for (auto at = notes.begin(), next = at; at != notes.end(); at = next) {
    while (next != notes.end() && *next == *at) ++next;
    const std::string note = (next - at == 1 ? "" : std::to_string(next - at) + " x ") + *at;
    if (!lines.empty()) lines.back() += " |";
    if (lines.empty() || lines.back().size() + note.size() > kWidth)
      lines.push_back("  " + note);
    else
      lines.back() += " " + note;
  }
  return lines;
}
