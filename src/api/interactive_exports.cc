// The interactive flow as hosts call it.
#include "caixora.h"
#include "interactive/finish.h"
#include "interactive/launcher.h"
#include "interactive/session.h"
#include "support/ansi.h"
#include "support/boundary.h"
#include "system/programs.h"

namespace caixora {
namespace {

// For ConfiguraIntTefInterativo: the developer's own companion and a line that it takes as a test.
constexpr char kDeveloperFolder[] = "C:\\Trevix";
constexpr char kDeveloperProgram[] = "C:\\Trevix\\Trevix.exe";
constexpr std::string_view kDeveloperLine =
    u8"20¬11222333000181¬1¬999¬1,00¬000545¬20210325¬1¬009¬652¬1¬7"_ansi;

int32_t Code(FlowCode code) { return static_cast<int32_t>(code); }

}  // namespace
}  // namespace caixora

using namespace caixora;

int32_t IniciaFuncaoQJInterativo(uint32_t uFuncao, const char* sCNPJ, uint32_t uCampo3,
                                 const char* sCampo4, const char* sValor, const char* sCampo6,
                                 const char* sCampo7, const char* sCampo8, const char* sCampo9,
                                 uint32_t uCampo10, const char* /*sCampo11*/) {
  return Code(StartClient(
      {uFuncao, sCNPJ, uCampo3, sCampo4, sValor, sCampo6, sCampo7, sCampo8, sCampo9, uCampo10}));
}

CaixoraTexto AguardaFuncaoQJInterativo(void) { return AwaitQuestion().release(); }

int32_t ContinuaFuncaoQJInterativo(const char* sInformacao) {
  return Code(AnswerQuestion(sInformacao));
}

int32_t FinalizaFuncaoQJInterativo(uint32_t uFuncao, const char* sCNPJ, uint32_t uCampo3,
                                   const char* sCampo4, const char* sValor, const char* sCampo6,
                                   const char* sCampo7, const char* sCampo8, const char* sCampo9,
                                   uint32_t uCampo10, const char* /*sCampo11*/) {
  return Code(FinishFlow(
      {uFuncao, sCNPJ, uCampo3, sCampo4, sValor, sCampo6, sCampo7, sCampo8, sCampo9, uCampo10}));
}

int32_t CancelarFluxoQJInterativo(void) { return Code(CancelFlow()); }

int32_t ConfiguraIntTefInterativo(void) {
  const auto open = [] {
    ShellOpenDefault(kDeveloperProgram, std::string(kDeveloperLine), kDeveloperFolder);
  };
  Guarded(open, [] {});
  return 0;
}
