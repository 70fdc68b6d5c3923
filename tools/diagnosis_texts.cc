// What the checks share: texts for people, and looks at files and folders.
#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "programs/utf8.h"
#include "support/file_helpers.h"
#include "system/file.h"
#include "system/wide_text.h"
#include "tools/diagnosis_checks.h"
#include "tools/diagnosis_machine.h"
#include "tools/failures.h"

namespace caixora {
namespace {

constexpr std::pair<unsigned, std::string_view> kReasons[] = {
    {2, "não existe"},
    {3, "a pasta ou a unidade não existe"},
    {5, "acesso negado"},
    {19, "a mídia está protegida contra gravação"},
    {21, "a unidade não está pronta"},
    {23, "erro de leitura no disco"},
    {32, "outro programa o mantém aberto"},
    {33, "outro programa bloqueia um trecho dele"},
    {39, "o disco está cheio"},
    {53, "o computador da rede não foi encontrado"},
    {64, "a rede caiu"},
    {67, "a pasta da rede não foi encontrada"},
    {80, "já existe"},
    {112, "o disco está cheio"},
    {123, "o nome não é válido"},
    {126, "falta uma DLL de que ela depende"},
    {127, "falta uma função em uma DLL de que ela depende"},
    {161, "o caminho não é válido"},
    {183, "já existe"},
    {193, "não é de 64 bits, ou está danificada"},
    {206, "o caminho é longo demais"},
    {1005, "o disco não está formatado"},
    {1114, "a inicialização dela falhou"},
    {1260, "uma política do Windows a bloqueia"},
    {1326, "usuário ou senha da rede recusados"},
    {4551, "uma política do Windows a bloqueia"},
};

std::string CodeText(FlowCode code) { return std::to_string(static_cast<std::int32_t>(code)); }

}  // namespace

std::string Join(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

std::string Listed(const std::vector<std::string>& texts) {
  std::string text;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) text += i + 1 == texts.size() ? " e " : ", ";
    text += texts[i];
  }
  return text;
}

std::string Shown(std::string_view ansi) {
  std::string text;
  for (const char c : ansi) {
    const auto byte = static_cast<unsigned char>(c);
    // A blank that does not break and a soft hyphen pass for a blank and for nothing.
    if (byte >= ' ' && byte != 0x7F && byte != 0xA0 && byte != 0xAD) {
      text += Utf8({&c, 1});
      continue;
    }
    char code[5];
    std::snprintf(code, sizeof code, "\\x%02X", byte);
    text += code;
  }
  return text;
}

std::string Reason(SystemError error) {
  const auto code = static_cast<unsigned>(error);
  const std::string number = "erro " + std::to_string(code);
  for (const auto& [known, text] : kReasons)
    if (known == code) return Join({text, " (", number, ")"});
  return number + " do Windows";
}

std::string Returns(std::string_view result) { return Join({"A venda devolve \"", result, "\"."}); }

std::string Returns(FlowCode code) { return "O início do fluxo devolve " + CodeText(code) + "."; }

std::string RemedyFor(std::string_view result) {
  const Failure* const failure = FindByResult(result);
  return failure == nullptr ? std::string() : std::string(failure->remedy);
}

std::string RemedyFor(FlowCode code) { return RemedyFor(CodeText(code)); }

std::string SizeText(std::uint64_t bytes) {
  if (bytes < 1048576) return std::to_string((bytes + 1023) / 1024) + " KiB";
  const std::uint64_t tenths = bytes / (1048576 / 10);
  return Join({std::to_string(tenths / 10), ",", std::to_string(tenths % 10), " MiB"});
}

Found Look(const std::string& path) {
  // A file is not found under a name that ends as a folder's may.
  const bool is_root = path.size() <= 3;
  const std::string name = path.substr(0, path.size() - (path.ends_with('\\') && !is_root));
  bool is_folder = false;
  if (QueryPath(ToWide(name), is_folder) != SystemError::kNone) return Found::kMissing;
  return is_folder ? Found::kFolder : Found::kFile;
}

std::string FolderOf(std::string_view path) {
  if (path.ends_with('\\')) path.remove_suffix(1);
  const std::size_t end = path.find_last_of("\\/");
  if (end == path.npos) return path.ends_with(':') ? std::string(path) + "\\" : ".";
  const std::string_view folder = path.substr(0, end);
  return std::string(folder) + (folder.empty() || folder.ends_with(':') ? "\\" : "");
}

std::string Lowered(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

std::string WithHiddenExtension(const std::string& path) {
  std::string hidden = path + ".txt";
  return Look(hidden) == Found::kFile ? hidden : std::string();
}

SystemError ReadBytes(const std::string& path, std::string& bytes, std::size_t most) {
  File file;
  if (const SystemError error = file.Open(path, File::Use::kRead); error != SystemError::kNone)
    return error;
  std::array<char, 65536> chunk;
  for (std::size_t taken = 1; taken > 0 && bytes.size() < most;) {
    const std::size_t wanted = std::min(chunk.size(), most - bytes.size());
    if (const SystemError error = file.Read(chunk.data(), wanted, taken);
        error != SystemError::kNone)
      return error;
    bytes.append(chunk.data(), taken);
  }
  return SystemError::kNone;
}

bool JudgeFolder(const std::string& folder, std::string_view consequence, Finding& finding) {
  const std::string shown = Shown(folder);
  switch (Look(folder)) {
    case Found::kMissing: {
      bool is_folder = false;
      const SystemError error = QueryPath(ToWide(folder), is_folder);
      finding.Fail(Join({"Não há a pasta ", shown, ": ", Reason(error), ". ", consequence}),
                   Join({"Crie a pasta ", shown, "."}));
      return false;
    }
    case Found::kFile:
      finding.Fail(Join({shown, " é um arquivo, e não uma pasta. ", consequence}),
                   Join({"Renomeie o arquivo e crie a pasta ", shown, "."}));
      return false;
    case Found::kFolder:
      break;
  }
  if (const SystemError error = TryToWriteIn(folder); error != SystemError::kNone) {
    finding.Fail(
        Join({"A pasta ", shown, " não aceita arquivos: ", Reason(error), ". ", consequence}),
        Join({"Dê ao usuário do caixa permissão para gravar em ", shown,
              ", e veja se há espaço em disco."}));
    return false;
  }
  finding.Note(Join({"A pasta ", shown, " existe e aceita arquivos."}));
  return true;
}

}  // namespace caixora
