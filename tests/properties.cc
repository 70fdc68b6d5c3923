#include "properties.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <stdexcept>

#include "exchange/amount.h"
#include "exchange/answer.h"
#include "exchange/request_record.h"
#include "fake_machine.h"
#include "interactive/config_file.h"
#include "support/ansi.h"

using namespace caixora;

namespace {

void Require(bool holds, const char* property, std::string_view bytes) {
  if (holds) return;
  std::string shown = std::string(property) + ": ";
  for (const char c : bytes.substr(0, 2000)) {
    char hex[5];
    std::snprintf(hex, sizeof hex, "\\x%02X", static_cast<unsigned char>(c));
    shown += hex;
  }
  throw std::logic_error(shown);
}

// Text as a runtime's text mode gives it, character by character.
std::string NaiveText(std::string_view bytes) {
  std::string text;
  for (const char c : bytes.substr(0, bytes.find('\x1A'))) {
    if (c == '\n' && text.ends_with('\r')) text.pop_back();
    text += c;
  }
  return text;
}

std::vector<std::string> NaiveSplit(const std::string& text, char separator) {
  std::istringstream stream(text);
  std::vector<std::string> pieces;
  for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
  return pieces;
}

std::string NaiveValue(const std::string& line) {
  const auto pieces = NaiveSplit(line, '=');
  std::string value = pieces.size() > 1 ? pieces[1] : "";
  const auto blank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  while (!value.empty() && blank(value.back())) value.pop_back();
  while (!value.empty() && blank(value.front())) value.erase(0, 1);
  return value;
}

// The amount as the runtime prints it, which the library does not use.
std::string NaivePrint(double reais) {
  char text[64];
  std::snprintf(text, sizeof text, "%.6f", reais);
  return text;
}

// Takes a C string off the front; the memory behind it is not the input's.
std::string TakeText(std::string_view& bytes) {
  const std::string text(bytes.substr(0, bytes.find('\0')));
  bytes.remove_prefix(std::min(text.size() + 1, bytes.size()));
  return text;
}

template <class Number>
Number Take(std::string_view& bytes) {
  Number number{};
  std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
  bytes.remove_prefix(std::min(bytes.size(), sizeof number));
  return number;
}

}  // namespace

void CheckAnswer(std::string_view bytes) {
  std::map<std::string, std::string> last;
  std::string receipt;
  std::string piece;
  const std::string text = NaiveText(bytes);
  for (std::size_t i = 0; i < text.size(); ++i) {
    piece += text[i];
    if (text[i] != '\n' && piece.size() < 199 && i + 1 < text.size()) continue;
    std::replace_if(piece.begin(), piece.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    const std::string line = piece.c_str();
    piece.clear();
    for (const char* key : {"001-000", "003-000", "009-000", "010-000", "010-001", "011-000",
                            "012-000", "013-000", "018-000", "028-000", "030-000", "031-000",
                            "040-000", "170-000", "800-007", "640-000", "504-001", "740-000",
                            "741-000", "742-000"})
      if (line.find(key) != line.npos) last[key] = NaiveValue(line);
    if (line.find("029-") != line.npos) receipt += "\r\nI;" + NaiveValue(line);
  }
  const auto number = [&last](const char* key) { return std::strtol(last[key].c_str(), nullptr, 10); };
  std::string message = last["030-000"];
  for (char& c : message)
    if (const char* at = std::strchr("\xE1\xE9\xED\xF3\xFA\xE3\xE7", c); at != nullptr && c != '\0')
      c = "aeiouac"[at - std::strchr("\xE1\xE9\xED\xF3\xFA\xE3\xE7", '\xE1')];
  std::string expected = "S;0;" + message;
  if (number("009-000") == 0) {
    if (number("018-000") == 0) last["018-000"] = "1";
    const bool moved = !last["504-001"].empty() && !last["040-000"].empty();
    const std::string network_code = last[number("010-001") >= 1 ? "010-001" : "640-000"];
    expected = (number("028-000") >= 1 ? "S;1;" : "S;2;") + message + "\r\nC";
    for (const std::string& value :
         {last["001-000"], last["003-000"], last[moved ? "010-000" : "040-000"],
          last[moved ? "504-001" : "010-000"], last["013-000"], last["012-000"], last["011-000"],
          last["018-000"], last["800-007"], last["170-000"], network_code, last["740-000"],
          last["741-000"], last["742-000"], last["031-000"]}) {
      Require(value.find_first_of("\r\n") == value.npos, "line end in a field", bytes);
      expected += ";" + value;
    }
    expected += receipt;
  }
  ResetMachine();
  const std::string result = ComposeResult(ParseAnswer(std::string(bytes)));
  Require(result == expected, "answer read differently", bytes);
}

bool CheckRequest(std::string_view bytes) {
  std::string_view rest = bytes;
  TefCall call;
  call.codigo = Take<std::uint8_t>(rest) % 100;
  call.iQtdeItens = Take<std::int8_t>(rest);
  call.iCupom = Take<std::int32_t>(rest);
  call.iParcelas = Take<std::int8_t>(rest);
  call.dValor = Take<double>(rest);
  const std::string items = TakeText(rest), cnpj = TakeText(rest), a = TakeText(rest),
                    b = TakeText(rest);
  call.sItens = items.c_str();
  call.sCNPJCliente = cnpj.empty() ? "12345678000195" : cnpj.c_str();
  call.sCNPJParceiro = "11222333000181";
  call.sControle = call.sCampo011 = call.sKM = call.sNSU = a.c_str();
  call.sCampo012 = call.data = call.sPlaca = b.c_str();

  ResetMachine();
  TefArguments arguments(call);
  if (ValidateArguments(arguments)) return false;
  const Operation* operation = FindOperation(call.codigo);
  std::string record;
  if (operation == nullptr || BuildRecord(*operation, arguments, record)) return false;

  const auto dirty = [](const std::string& text) { return text.find_first_of("\r\n") != text.npos; };
  if (dirty(items) || dirty(cnpj) || dirty(a) || dirty(b)) return true;  // sent as they are
  int item_lines = 0;
  for (const std::string& line : NaiveSplit(record, '\n')) {
    const std::size_t equals = line.find(" = ");
    const std::string key = line.substr(0, equals);
    Require(equals != line.npos && key.size() >= 7 && key[3] == '-', "malformed line", bytes);
    for (std::size_t i = 0; i < key.size(); ++i)
      Require(i == 3 || (key[i] >= '0' && key[i] <= '9'), "malformed key", bytes);
    item_lines += key.starts_with("261-") && key != "261-000";
    if (key != "003-000") continue;
    std::string cents = NaivePrint(call.dValor + 0.0);
    cents.erase(cents.find('.'), 1);
    cents.resize(NaivePrint(std::trunc(call.dValor) + 0.0).size() - 5);
    Require(line.substr(equals + 3) == cents, "amount", bytes);
  }
  const bool with_items = (call.codigo == 22 || call.codigo == 25) && call.iQtdeItens > 0 && !items.empty();
  Require(item_lines == (with_items ? 6 * call.iQtdeItens : 0), "item lines", bytes);
  return true;
}

void CheckTexts(std::string_view bytes) {
  ResetMachine();
  machine["ConfigQJ.ini"] = bytes;
  std::string path;
  for (const std::string& line : NaiveSplit(NaiveText(bytes), '\n'))
    if (const auto pieces = NaiveSplit(line, '='); pieces.size() > 1 && pieces[0] == "CAMINHO")
      path = pieces[1];
  Require(LerArquivoConfigQJ("ConfigQJ.ini"), "configuration not read", bytes);
  Require(FindConfigQJ("CAMINHO").value == path, "path read differently", bytes);

  const std::string message(bytes);
  const std::string line = FormatLogLine(machine.now, "1", {message}, Detail::kOrdinary);
  std::string naive = message.c_str();
  std::replace(naive.begin(), naive.end(), '\r', ' ');
  for (std::size_t at = 0; (at = naive.find("%%", at)) != naive.npos; ++at) naive.erase(at, 1);
  Require(line == "\n07/03/2024 09:15:05 ::1:: " + naive, "log line", bytes);

  const auto lines = NaiveSplit(NaiveText(bytes), '\n');
  const std::string first = lines.empty() ? "" : lines[0];
  const LogMode mode = first.empty()          ? LogMode::kOrdinary
                       : first == "DETALHADO" ? LogMode::kDetailed
                                              : LogMode::kOff;
  Require(ModeOf(bytes.substr(0, kSwitchBytes)) == mode, "switch", bytes);
}
