#include "interactive/config_file.h"

#include "support/boundary.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/logged_text.h"
#include "support/text.h"
#include "support/text_mode.h"

namespace caixora {
namespace {

void ReadLines(std::string_view text) {
  for (std::string_view line; TakePiece(text, '\n', line);) {
    WriteLog({"LINHA DO ARQUIVO: ", line}, Detail::kDetailed);
    if (line.empty()) {
      WriteLog({"Linha do Arquivo Vazia."}, Detail::kDetailed);
      continue;
    }
    std::vector<std::string> pieces = Split(line, '=');
    if (std::optional<ConfigPair> pair = PairOf(pieces))
      state.ConfigList.push_back(std::move(*pair));
  }
}

}  // namespace

bool ReadConfigText(File& file, std::string& text) noexcept {
  const bool whole =
      Guarded([&] { return ReadAll(file, text) == SystemError::kNone; }, [] { return false; });
  if (!whole) text.resize(text.rfind('\n') + 1);
  DecodeTextMode(text);
  return whole;
}

std::optional<ConfigPair> PairOf(std::vector<std::string>& pieces) {
  if (pieces.size() < 2) return std::nullopt;
  return ConfigPair{std::move(pieces[0]), std::move(pieces[1])};
}

ConfigPair LastPair(const std::vector<ConfigPair>& pairs, std::string_view key) {
  ConfigPair found;
  for (const ConfigPair& pair : pairs)
    if (pair.key == key) found = pair;
  return found;
}

bool LerArquivoConfigQJ(const std::string& path) {
  WriteLog({"ENTROU - LerArquivoConfigQJ"}, Detail::kDetailed);
  WriteLog({"Tamanho do Arquivo ConfigQJ.ini: ", std::to_string(FileSizeMB(path))},
           Detail::kDetailed);
  File file;
  if (file.Open(path, File::Use::kRead) != SystemError::kNone) {
    WriteLog({"Nao foi encontrado o arquivo: ConfigQJ.ini"});
    return false;
  }
  state.ConfigList.clear();
  WriteLog({"Arquivo Aberto - ConfigQJ.ini"}, Detail::kDetailed);

  std::string text;
  const bool whole = ReadConfigText(file, text);
  const auto stored = [&] {
    ReadLines(text);
    return true;
  };
  const auto not_stored = [] {
    WriteLog({"Erro ao inserir itens do ConfigQJ.ini."});
    return false;
  };
  if (!Guarded(stored, not_stored)) return false;
  if (!whole) WriteLog({"Erro ao ler itens do ConfigQJ.ini."});
  return whole;
}

ConfigPair FindConfigQJ(std::string_view key) {
  WriteLog({"ENTROU - FindConfigQJ"}, Detail::kDetailed);
  if (state.ConfigList.empty()) return {};
  ConfigPair found = LastPair(state.ConfigList, key);
  WriteLog({"Retornando elemento: ", found.key, ", ", found.value}, Detail::kDetailed);
  return found;
}

}  // namespace caixora
