// The checks of the diagnosis, and what they share.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/gp_candidates.h"
#include "interactive/flow_call.h"
#include "support/log_line.h"
#include "support/state.h"
#include "system/system_error.h"
#include "tools/diagnosis.h"

namespace caixora {

// What ConfigQJ.ini says, by the library's rules.
struct CheckoutConfig {
  SystemError opened = SystemError::kNone;
  bool whole = false;
  std::string bytes;                // as they stand
  std::string text;                 // as the library reads them
  std::vector<ConfigPair> pairs;    // of that text
  std::optional<std::string> path;  // the value that counts
};

// What the library would find, looked up once for all checks.
struct Checkout {
  DiagnosisOptions options;
  std::string folder, program_folder;
  LogMode log_mode = LogMode::kOrdinary;

  bool is_developers = false;
  std::optional<std::size_t> gp;        // index of the place that is taken
  std::vector<std::size_t> hidden_gps;  // of those behind it that open as well
  std::string exchange_folder;          // empty unless there is just one
  CheckoutConfig config;

  // The folder text and program name that a payment call goes by; both empty without a GP.
  std::string GpFolder() const;
  std::string_view GpExe() const;
};
Checkout LookAtCheckout(const DiagnosisOptions& options);

using Check = Finding (*)(const Checkout&);

Finding CheckLibrary(const Checkout&);
Finding CheckCurrentFolder(const Checkout&);
Finding CheckLogSwitch(const Checkout&);
Finding CheckExchangeFolder(const Checkout&);
Finding CheckRequests(const Checkout&);
Finding CheckAnswers(const Checkout&);
Finding CheckGpProgram(const Checkout&);
Finding CheckGpRuns(const Checkout&);
Finding CheckDeveloperMark(const Checkout&);
Finding CheckPaymentLog(const Checkout&);
Finding CheckConfig(const Checkout&);
Finding CheckCompanion(const Checkout&);
Finding CheckFlowLog(const Checkout&);
Finding CheckSender(const Checkout&);
Finding CheckElevation(const Checkout&);
Finding CheckCancel(const Checkout&);
Finding CheckCodePage(const Checkout&);
Finding CheckOpenSales(const Checkout&);

// Texts.

std::string Join(std::initializer_list<std::string_view> pieces);
std::string Listed(const std::vector<std::string>& texts);  // "a, b e c"
// For people: UTF-8, what shows no character as "\xNN".
std::string Shown(std::string_view ansi);
std::string Reason(SystemError error);  // "acesso negado (erro 5)"
// What the library would return, and what the table of failures has for it.
std::string Returns(std::string_view result);  // Devolve "..."
std::string Returns(FlowCode code);
std::string RemedyFor(std::string_view result);
std::string RemedyFor(FlowCode code);
std::string SizeText(std::uint64_t bytes);  // "1,5 MiB"

// Files and folders.

enum class Found { kMissing, kFile, kFolder };
Found Look(const std::string& path);
std::string FolderOf(std::string_view path);
std::string Lowered(std::string_view text);  // letters of ASCII alone, as in programs' names
// The name that a hidden extension gives to a file: "LD.txt.txt"; empty when there is none.
std::string WithHiddenExtension(const std::string& path);
// The bytes of the file, at most so many.
SystemError ReadBytes(const std::string& path, std::string& bytes, std::size_t most);

// Adds what is wrong with a folder in which somebody must write. False when it cannot be used.
bool JudgeFolder(const std::string& folder, std::string_view consequence, Finding& finding);

// Adds what the library would find when it writes its next line under this folder text.
void JudgeLog(const std::string& base, const Checkout& checkout, Finding& finding);

}  // namespace caixora
