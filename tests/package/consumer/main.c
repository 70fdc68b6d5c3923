#include <caixora.h>

/* Declared here, since not every compiler that this is for has the headers of Windows. */
__declspec(dllimport) unsigned SysStringByteLen(CaixoraTexto text);
__declspec(dllimport) void SysFreeString(CaixoraTexto text);

#ifdef _MSC_VER
int _fltused; /* of the run-time library, which is not linked */
#endif

/* 42 when the library answers, with its own texts, as it is known to. */
int main(void) {
  const char* ok = Teste();
  CaixoraTexto refused = VendeCredito("", "", 1, 1, 1);
  const char* bytes = (const char*)refused;
  int good = ok[0] == 'O' && ok[1] == 'K' && SysStringByteLen(refused) > 4 && bytes[0] == 'S' &&
             bytes[2] == '0';
  SysFreeString(refused);
  return good ? 42 : 1;
}
