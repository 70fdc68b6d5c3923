#include "properties.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "exchange/answer.h"
#include "exchange/request_record.h"
#include "exchange/validation.h"
#include "interactive/config_file.h"
#include "machine.h"
#include "support/log_line.h"
#include "support/text.h"
#include "support/text_mode.h"

using namespace caixora;

namespace {

void Require(bool holds, const char* property) {
  if (!holds) throw std::logic_error(property);
}

bool HasLineEnd(std::string_view text) { return text.find_first_of("\r\n") != text.npos; }

// Where the text ends in a line feed, there is no empty line behind it.
std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  for (std::string_view line; TakePiece(text, '\n', line);) lines.push_back(line);
  return lines;
}

// A C string off the front, in memory of its own.
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
  const Answer answer = ParseAnswer(std::string(bytes));
  for (const std::string& line : answer.lines_to_log)
    Require(line.starts_with("LINHA0") && !HasLineEnd(line), "logged line");
  for (const std::string& value : answer.values) Require(!HasLineEnd(value), "line end in a field");

  const std::string result = ComposeResult(answer);
  if (result.starts_with("S;0;")) return Require(!HasLineEnd(result), "line end in a refusal");
  Require(result.starts_with("S;1;") || result.starts_with("S;2;"), "form");
  const std::vector<std::string_view> lines = LinesOf(result);
  Require(lines.size() >= 2 && lines[1].starts_with("C;"), "record line");
  const bool fifteen = std::count(lines[1].begin(), lines[1].end(), ';') == 15;
  Require(fifteen || bytes.find(';') != bytes.npos, "fifteen fields");
  const auto is_receipt = [](std::string_view line) { return line.starts_with("I;"); };
  Require(std::all_of(lines.begin() + 2, lines.end(), is_receipt), "receipt line");

  const std::vector<std::string_view> sent = LinesOf(bytes);
  const auto is_long = [](std::string_view line) { return line.size() >= 198; };
  if (bytes.find_first_of(std::string_view("\0\x1A", 2)) != bytes.npos ||
      std::any_of(sent.begin(), sent.end(), is_long))
    return;
  const auto says_receipt = [](std::string_view line) { return line.find("029-") != line.npos; };
  const auto receipts = std::count_if(sent.begin(), sent.end(), says_receipt);
  Require(std::ssize(lines) == 2 + receipts, "number of receipt lines");
}

bool CheckRequest(std::string_view bytes) {
  TefCall call;
  call.codigo = Take<std::uint8_t>(bytes) % 100;
  call.iQtdeItens = Take<std::int8_t>(bytes);
  call.iCupom = Take<std::int32_t>(bytes);
  call.iParcelas = Take<std::int8_t>(bytes);
  call.dValor = Take<double>(bytes);
  const std::string items = TakeText(bytes), cnpj = TakeText(bytes), text = TakeText(bytes);
  call.sItens = items.c_str();
  call.sCNPJCliente = cnpj.empty() ? "12345678000195" : cnpj.c_str();
  call.sCNPJParceiro = "11222333000181";
  call.sControle = call.sCampo011 = call.sKM = call.sNSU = call.data = text.c_str();

  machine.files["ld.txt"] = "NADA";
  Exchange exchange;
  exchange.arguments = TefArguments(call);
  if (ValidateArguments(exchange) || BuildRequest(exchange)) return false;
  if (HasLineEnd(items) || HasLineEnd(cnpj) || HasLineEnd(text)) return true;  // sent as they are
  int item_lines = 0;
  for (const std::string_view line : LinesOf(exchange.request)) {
    const std::string_view key = line.substr(0, line.find(" = "));
    Require(key.size() >= 7 && key.find_first_not_of("0123456789") == 3, "key");
    item_lines += key.starts_with("261-") && key != "261-000";
    if (key != "003-000") continue;
    char cents[64];  // from the amount as the runtime prints it, which the library does not do
    std::snprintf(cents, sizeof cents, "%.6f", call.dValor + 0.0);
    std::string digits(cents);
    digits.erase(digits.find('.'), 1);
    digits.resize(std::to_string(static_cast<std::int32_t>(call.dValor)).size() + 2);
    Require(line.substr(10) == digits, "amount");
  }
  const bool sells_items = call.codigo == 22 || call.codigo == 25;
  const int sent = sells_items && !items.empty() ? std::max(call.iQtdeItens, 0) : 0;
  Require(item_lines == 6 * sent, "item lines");
  return true;
}

void CheckTexts(std::string_view bytes) {
  const std::string_view start = bytes.substr(0, 60);  // every line of it is logged
  machine.files["ld.txt"] = "NADA";
  machine.files["configqj.ini"] = std::string(start) + "\nCAMINHO=C:\\T\n";
  Require(LerArquivoConfigQJ(kConfigFile), "configuration not read");
  const std::string path = FindConfigQJ("CAMINHO").value;
  Require(path == "C:\\T" || start.find('\x1A') != start.npos, "the last entry counts");

  const std::string line = FormatLogLine({}, "1", {bytes}, Detail::kOrdinary);
  const std::string stamp = "\n00/00/0 00:00:00 ::1:: ";
  Require(line.starts_with(stamp) && line.size() <= stamp.size() + bytes.size(), "log line");
  Require(line.find_first_of(std::string_view("\0\r", 2)) == line.npos, "bytes in a log line");

  std::string text(bytes);
  std::erase_if(text, [](char c) { return c == '\r' || c == '\x1A'; });
  std::string decoded = EncodeTextMode(text);
  DecodeTextMode(decoded);
  Require(decoded == text, "text mode there and back");
}
