// Simulated sending program: keeps the record it was started with, as evidence.
#include <string>

#include "programs/console.h"

int main() {
  const std::string_view record = caixora::RawArguments();
  caixora::Print("Registro de envio recebido: " + caixora::Utf8(record) + "\n");
  return caixora::AppendLine(caixora::OwnFolder() + "\\Email_recebido.txt", record) ? 0 : 1;
}
