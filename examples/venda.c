/*
 * One credit sale: sell, print, confirm. What was approved but could not be printed is undone, and
 * so is a sale of which the result does not tell whether it happened.
 *
 *    venda <CNPJ do lojista> <CNPJ do parceiro> <valor, ex.: 12,50> <cupom>
 *
 * Exit code: 0 sold and confirmed, 1 not sold (refused or undone), 2 usage or no library, 3
 * approved but neither confirmed nor undone.
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

/*
 * Reads reais as whole cents, so that nothing is left to round; 0 for anything else. More than two
 * decimals are refused: "1.000" may be meant as a thousand.
 */
static double ReadAmount(const char* text) {
  double cents = 0;
  int decimals = -1; /* no mark yet */
  for (const char* c = text; *c != '\0'; ++c) {
    if (*c >= '0' && *c <= '9') {
      cents = cents * 10 + (*c - '0');
      if (decimals >= 0) ++decimals;
    } else if ((*c == ',' || *c == '.') && decimals < 0 && c != text) {
      decimals = 0;
    } else {
      return 0;
    }
  }
  if (decimals == 0 || decimals > 2) return 0;
  return cents / (decimals == 2 ? 100.0 : decimals == 1 ? 10.0 : 1.0);
}

/* A number from 1 to 999999999, or 0. */
static int32_t ReadCoupon(const char* text) {
  const size_t digits = strspn(text, "0123456789");
  return digits <= 9 && text[digits] == '\0' ? (int32_t)atoi(text) : 0;
}

/* Prints the message: it stands between the prefix and the first line end. */
static void PrintMessage(const char* result) {
  printf("%.*s\n", (int)strcspn(result + 4, "\r"), result + 4);
}

/* Prints the "I;" lines of the result. Returns 1 when all of them were written. */
static int PrintReceipt(const char* result) {
  for (const char* line = strstr(result, "\r\nI;"); line != NULL; line = strstr(line, "\r\nI;")) {
    line += strlen("\r\nI;");
    if (printf("%.*s\n", (int)strcspn(line, "\r"), line) < 0) return 0;
  }
  return fflush(stdout) == 0;
}

/* trecho: local */
/* The library's own reply. It is the success of a confirmation or undo, and never an approval. */
static int IsLocal(const char* result, int32_t coupon) {
  char local[80];
  snprintf(local, sizeof local, "S;2;COMANDO COM SUCESSO\r\nC;%d;;;;;;;1;;;;;;;", (int)coupon);
  return strcmp(result, local) == 0;
}

/* The GP may have made the sale: it went away, hung, or its answer was lost or not its own. */
static int IsUncertain(const char* result, int32_t coupon) {
  return strcmp(result, "S;0;GP N\xC3O ATIVO") == 0 || strcmp(result, "S;0;GP NAO ATIVO") == 0 ||
         strncmp(result, "S;0;FALHA INTERNA, VERIFIQUE", 28) == 0 || IsLocal(result, coupon);
}
/* fim do trecho */

/* Confirms or undoes; a refused call is repeated before anything else is called. */
static int Finish(AfterSale finish, const char* shop, const char* partner, int32_t coupon) {
  for (int attempt = 1; attempt <= 5; ++attempt) {
    if (attempt > 1) Sleep(2000);
    CaixoraTexto text = finish(shop, partner, coupon);
    const int done = IsLocal((const char*)text, coupon);
    if (!done) PrintMessage((const char*)text);
    SysFreeString(text);
    if (done) return 1;
  }
  return 0;
}

int main(int argc, char** argv) {
  const double amount = argc == 5 ? ReadAmount(argv[3]) : 0;
  const int32_t coupon = argc == 5 ? ReadCoupon(argv[4]) : 0;
  if (!(amount > 0) || coupon == 0) {
    fprintf(stderr, "Uso: venda <CNPJ do lojista> <CNPJ do parceiro> <valor> <cupom>\n");
    return 2;
  }
  const char* shop = argv[1];
  const char* partner = argv[2];
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

  /* trecho: venda */
  /* The call lasts as long as the customer takes: run it beside the user interface's thread. */
  CaixoraTexto text = sell(shop, partner, amount, coupon, reader);
  const char* result = (const char*)text; /* SysStringByteLen(text) bytes and a final zero */
  int code = 1;
  PrintMessage(result);
  if (strncmp(result, "S;0;", 4) != 0 || IsUncertain(result, coupon)) {
    /* "S;2;": there is nothing to print. */
    const int confirms = !IsUncertain(result, coupon) && PrintReceipt(result);
    if (!Finish(confirms ? confirm : undo, shop, partner, coupon)) {
      fprintf(stderr, "Cupom %d EM ABERTO: %s.\n", (int)coupon,
              confirms ? "falta confirmar" : "falta desfazer");
      code = 3;
    } else {
      puts(confirms ? "Confirmada" : "Desfeita");
      code = confirms ? 0 : 1;
    }
  }
  SysFreeString(text);
  /* fim do trecho */
  FreeLibrary(library);
  return code;
}
