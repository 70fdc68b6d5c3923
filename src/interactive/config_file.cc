#include "interactive/config_file.h"

#include "support/file.h"
#include "support/files.h"
#include "support/log.h"
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
    if (pieces.size() >= 2) ConfigList.push_back({std::move(pieces[0]), std::move(pieces[1])});
  }
}

}  // namespace

bool LerArquivoConfigQJ(const std::string& path) {
  WriteLog({"ENTROU - LerArquivoConfigQJ"}, Detail::kDetailed);
  WriteLog({"Tamanho do Arquivo ConfigQJ.ini: ", std::to_string(FileSizeMB(path))},
           Detail::kDetailed);
  auto file = File::Open(path, File::Use::kRead);
  if (!file) {
    WriteLog({"Nao foi encontrado o arquivo: ConfigQJ.ini"});
    return false;
  }
  ConfigList.clear();
  WriteLog({"Arquivo Aberto - ConfigQJ.ini"}, Detail::kDetailed);

  std::string text;
  bool whole = true;
  try {
    ReadAll(*file, text);
  } catch (...) {
    whole = false;
    text.resize(text.rfind('\n') + 1);  // the lines read so far count
  }
  DecodeTextMode(text);
  try {
    ReadLines(text);
  } catch (...) {
    WriteLog({"Erro ao inserir itens do ConfigQJ.ini."});
    return false;
  }
  if (!whole) WriteLog({"Erro ao ler itens do ConfigQJ.ini."});
  return whole;
}

ConfigPair FindConfigQJ(std::string_view key) {
  WriteLog({"ENTROU - FindConfigQJ"}, Detail::kDetailed);
  ConfigPair found;
  if (ConfigList.empty()) return found;
  for (const ConfigPair& pair : ConfigList)
    if (pair.key == key) found = pair;
  WriteLog({"Retornando elemento: ", found.key, ", ", found.value}, Detail::kDetailed);
  return found;
}

}  // namespace caixora
