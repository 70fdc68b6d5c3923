// The interactive flow as hosts call it.
#include "caixora.h"
#include "interactive/finish.h"
#include "interactive/launcher.h"
#include "interactive/session.h"
#include "support/system_process.h"

namespace {

// The developer's own companion and a line that it takes as a harmless test: see
// ConfiguraIntTefInterativo.
constexpr char kDeveloperFolder[] = "C:\\Trevix";
constexpr char kDeveloperProgram[] = "C:\\Trevix\\Trevix.exe";
constexpr char kDeveloperLine[] =
    "20\xAC"
    "11222333000181\xAC"
    "1\xAC"
    "999\xAC"
    "1,00\xAC"
    "000545\xAC"
    "20210325\xAC"
    "1\xAC"
    "009\xAC"
    "652\xAC"
    "1\xAC"
    "7";

int32_t Code(caixora::FlowCode code) { return static_cast<int32_t>(code); }

}  // namespace

int32_t IniciaFuncaoQJInterativo(uint32_t uFuncao, const char* sCNPJ, uint32_t uCampo3,
                                 const char* sCampo4, const char* sValor, const char* sCampo6,
                                 const char* sCampo7, const char* sCampo8, const char* sCampo9,
                                 uint32_t uCampo10, const char* /*sCampo11*/) {
  return Code(caixora::StartClient(
      {uFuncao, sCNPJ, uCampo3, sCampo4, sValor, sCampo6, sCampo7, sCampo8, sCampo9, uCampo10}));
}

CaixoraTexto AguardaFuncaoQJInterativo(void) { return caixora::AwaitQuestion().release(); }

int32_t ContinuaFuncaoQJInterativo(const char* sInformacao) {
  return Code(caixora::AnswerQuestion(sInformacao));
}

int32_t FinalizaFuncaoQJInterativo(uint32_t uFuncao, const char* sCNPJ, uint32_t uCampo3,
                                   const char* sCampo4, const char* sValor, const char* sCampo6,
                                   const char* sCampo7, const char* sCampo8, const char* sCampo9,
                                   uint32_t uCampo10, const char* /*sCampo11*/) {
  return Code(caixora::FinishFlow(
      {uFuncao, sCNPJ, uCampo3, sCampo4, sValor, sCampo6, sCampo7, sCampo8, sCampo9, uCampo10}));
}

int32_t CancelarFluxoQJInterativo(void) { return Code(caixora::CancelFlow()); }

int32_t ConfiguraIntTefInterativo(void) {
  caixora::ShellOpenDefault(kDeveloperProgram, kDeveloperLine, kDeveloperFolder);
  return 0;
}
