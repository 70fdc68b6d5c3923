// A host that tests start as a process of its own: one that the library may end, that has no
// rights, or (built with a manifest, as host_utf8) whose ANSI code page is UTF-8. Its exit status
// tells.
#include "caixora.h"
#include "windows_world.h"

using namespace world;

int main(int argc, char** argv) {
  const std::string role = argc > 1 ? argv[1] : "";
  const Library dll(OwnFolder() / "Caixora.dll");
  constexpr char kCnpj[] = "11222333000181";
  if (role == "vender") {
    dll.Take(dll.Find(&VendeDebito, "VendeDebito")(kCnpj, kCnpj, 1, 1, 1));
    return 0;
  }
  const auto begin = dll.Find(&IniciaFuncaoQJInterativo, "IniciaFuncaoQJInterativo");
  if (role == "iniciar") {
    const int code = begin(20, "abc", 1, "", "", "", "", "", "", 0, "");
    const auto cancel = dll.Find(&CancelarFluxoQJInterativo, "CancelarFluxoQJInterativo");
    return code == cancel() ? code : 0;
  }
  return begin(20, kCnpj, 1, "rapida", "1,00", "\xC3\xE7", "", "", "", 7, "");
}
