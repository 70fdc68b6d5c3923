/*
 * One credit sale: sell, print, confirm. What was approved but could not be printed is undone.
 *
 *    venda <CNPJ do lojista> <CNPJ do parceiro> <valor, ex.: 12.50> <cupom>
 *
 * Caixora.dll is loaded at run time, from beside this program or the search path.
 */
#include "caixora.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>
/* After windows.h, which it needs. */
#include <oleauto.h>

typedef CaixoraTexto (*Sale)(const char*, const char*, double, int32_t, int32_t);
typedef CaixoraTexto (*AfterSale)(const char*, const char*, int32_t);

/* Any function pointer may pass through void (*)(void); the caller casts it to the right type. */
typedef void (*AnyFunction)(void);

static AnyFunction Find(HMODULE library, const char* name) {
  AnyFunction found = (AnyFunction)GetProcAddress(library, name);
  if (found == NULL) {
    fprintf(stderr, "Caixora.dll: falta %s.\n", name);
    exit(2);
  }
  return found;
}

/* Prints the "I;" lines of the result. Returns 1 when all of them were written. */
static int PrintReceipt(const char* result) {
  for (const char* line = strstr(result, "\r\nI;"); line != NULL; line = strstr(line, "\r\nI;")) {
    line += strlen("\r\nI;");
    if (printf("%.*s\n", (int)strcspn(line, "\r"), line) < 0) return 0;
  }
  return fflush(stdout) == 0;
}

int main(int argc, char** argv) {
  const double amount = argc == 5 ? strtod(argv[3], NULL) : 0;
  if (!(amount > 0)) {
    fprintf(stderr, "Uso: venda <CNPJ do lojista> <CNPJ do parceiro> <valor> <cupom>\n");
    return 2;
  }
  const char* shop = argv[1];
  const char* partner = argv[2];
  const int32_t coupon = (int32_t)strtol(argv[4], NULL, 10);
  const int32_t reader = 1;

  HMODULE library = LoadLibraryA("Caixora.dll");
  if (library == NULL) {
    fprintf(stderr, "Caixora.dll: erro %lu ao carregar.\n", GetLastError());
    return 2;
  }
  const Sale sell = (Sale)Find(library, "VendeCreditoVista");
  const AfterSale confirm = (AfterSale)Find(library, "Confirmar");
  const AfterSale undo = (AfterSale)Find(library, "Desfazimento");
  SetConsoleOutputCP(1252); /* results are Windows-1252 bytes, not UTF-16 */

  /* The call lasts as long as the customer takes: run it beside the user interface's thread. */
  CaixoraTexto text = sell(shop, partner, amount, coupon, reader);
  const char* result = (const char*)text; /* SysStringByteLen(text) bytes and a final zero */
  const int approved = strncmp(result, "S;0;", 4) != 0;

  /* The message stands between the prefix and the first line end. */
  printf("%.*s\n", (int)strcspn(result + 4, "\r"), result + 4);
  if (approved) {
    const int printed = PrintReceipt(result); /* "S;2;": there is nothing to print */
    CaixoraTexto end = (printed ? confirm : undo)(shop, partner, coupon);
    printf("%s: %.4s\n", printed ? "Confirmada" : "Desfeita", (const char*)end);
    SysFreeString(end);
  }
  SysFreeString(text);
  FreeLibrary(library);
  return approved ? 0 : 1;
}
