#include "tools/call.h"

#include <chrono>
#include <cstdint>
#include <type_traits>

#include "tools/process_end.h"

namespace caixora {

Address AddressOf(const caixora_pdv::Biblioteca& library, const Function& function) {
  const FARPROC address = library.Procurar(function.name);
  if (address == nullptr)
    throw caixora_pdv::ErroDeUso(std::string("A biblioteca não tem a função ") + function.name);
  return reinterpret_cast<Address>(address);
}

std::string EncodeText(Kind kind, std::string_view parameter, std::string_view utf8) {
  return kind == Kind::kInteractive ? caixora_pdv::ParaAnsiInterativo(parameter, utf8)
                                    : caixora_pdv::ParaAnsi(parameter, utf8);
}

Reply CallFunction(const Function& function, Address address, const std::vector<Value>& values) {
  Reply reply{.kind = function.kind};
  const auto start = std::chrono::steady_clock::now();
  const Returned returned = [&] {
    const InLibrary inside;
    return function.call(address, values);
  }();
  const auto elapsed = std::chrono::steady_clock::now() - start;
  reply.milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
  if (const auto* code = std::get_if<std::int32_t>(&returned))
    reply.text = std::to_string(reply.code.emplace(*code));
  else if (const auto* constant = std::get_if<const char*>(&returned))
    reply.text = *constant;
  else
    reply.text = caixora_pdv::Receber(std::get<CaixoraTexto>(returned));
  return reply;
}

}  // namespace caixora
