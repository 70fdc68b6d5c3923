#include "tools/diagnosis.h"

#include <algorithm>

#include "exchange/gp_candidates.h"
#include "interactive/config_file.h"
#include "interactive/launcher.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/text.h"
#include "tools/diagnosis_checks.h"
#include "tools/diagnosis_machine.h"

namespace caixora {
namespace {

enum Needs : std::uint8_t { kNobody = 0, kSale = 1, kFlow = 2, kBoth = 3 };

struct Row {
  std::string_view id;
  Needs needed_by;  // what a failure of it makes impossible
  Check check;
};

constexpr Row kRows[] = {
    {"dll", kBoth, CheckLibrary},
    {"pasta_atual", kBoth, CheckCurrentFolder},
    {"ld", kNobody, CheckLogSwitch},
    {"tef_dial", kSale, CheckExchangeFolder},
    {"req", kSale, CheckRequests},
    {"resp", kSale, CheckAnswers},
    {"gp", kSale, CheckGpProgram},
    {"gp_ativo", kSale, CheckGpRuns},
    {"marca_desenvolvedor", kSale, CheckDeveloperMark},
    {"log", kSale, CheckPaymentLog},
    {"config", kFlow, CheckConfig},
    {"trevix", kFlow, CheckCompanion},
    {"log_interativo", kFlow, CheckFlowLog},
    {"email", kNobody, CheckSender},
    {"administrador", kFlow, CheckElevation},
    {"cancelamento", kNobody, CheckCancel},
    {"pagina_de_codigo", kNobody, CheckCodePage},
    {"pendencias", kNobody, CheckOpenSales},
};

// A sentence that stands there already says enough.
void AddSentence(std::string& text, std::string_view sentence) {
  if (sentence.empty() || text.find(sentence) != text.npos) return;
  if (!text.empty()) text += ' ';
  text += sentence;
}

CheckoutConfig ReadConfig() {
  CheckoutConfig config;
  File file;
  config.opened = file.Open(kConfigFile, File::Use::kRead);
  if (config.opened != SystemError::kNone) return config;
  config.whole = ReadConfigText(file, config.text);
  if (file.Open(kConfigFile, File::Use::kRead) == SystemError::kNone)
    static_cast<void>(ReadAll(file, config.bytes));
  std::string_view rest = config.text;
  for (std::string_view line; TakePiece(rest, '\n', line);) {
    std::vector<std::string> pieces;
    SplitInto(pieces, line, '=');
    if (std::optional<ConfigPair> pair = PairOf(pieces)) config.pairs.push_back(std::move(*pair));
  }
  const ConfigPair path = LastPair(config.pairs, kPathKey);
  if (config.whole && !path.key.empty()) config.path = path.value;
  return config;
}

}  // namespace

void Finding::Add(Status how, std::string_view found, std::string_view what_to_do) {
  status = std::max(status, how);
  AddSentence(text, found);
  AddSentence(remedy, what_to_do);
}

Status Diagnosis::Worst() const {
  Status worst = Status::kOk;
  for (const DiagnosisItem& item : items) worst = std::max(worst, item.finding.status);
  return worst;
}

std::string Checkout::GpFolder() const {
  if (is_developers) return kDeveloperFolder;
  return gp ? GpPlaceAt(*gp).folder : std::string();
}

std::string_view Checkout::GpExe() const {
  if (is_developers) return kDeveloperExe;
  return gp ? GpPlaceAt(*gp).exe : std::string_view();
}

Checkout LookAtCheckout(const DiagnosisOptions& options) {
  Checkout checkout;
  checkout.options = options;
  checkout.folder = CurrentFolder();
  checkout.program_folder = ProgramFolder();
  checkout.log_mode = ReadLogSwitch();
  checkout.is_developers = OpensForReading(kDeveloperMark);
  for (std::size_t i = 0; i < kGpPlaces; ++i) {
    if (!OpensForReading(GpPlaceAt(i).Path())) continue;
    if (checkout.gp)
      checkout.hidden_gps.push_back(i);
    else
      checkout.gp = i;
  }
  int exchange_folders = 0;
  for (const char drive : kDrives)
    if (OpensForReading(ExchangeProgramOn(drive)) && ++exchange_folders == 1)
      checkout.exchange_folder = ExchangeFolderOn(drive);
  if (exchange_folders != 1) checkout.exchange_folder.clear();
  checkout.config = ReadConfig();
  return checkout;
}

Diagnosis Diagnose(const DiagnosisOptions& options) {
  const Checkout checkout = LookAtCheckout(options);
  Diagnosis diagnosis;
  for (const Row& row : kRows) {
    DiagnosisItem item = {row.id, row.check(checkout)};
    if (item.finding.status == Status::kFailure) {
      if (row.needed_by & kSale) diagnosis.sale = false;
      if (row.needed_by & kFlow) diagnosis.flow = false;
    }
    diagnosis.items.push_back(std::move(item));
  }
  return diagnosis;
}

}  // namespace caixora
