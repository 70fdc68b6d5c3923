// What the runtime does when a noexcept promise is broken. Its own handler prints the exception's
// type, for which it carries a demangler and a printf of 90 KB into the DLL; hosts have no console
// to read that on.
#include <cstdlib>

namespace __gnu_cxx {
void __verbose_terminate_handler();
void __verbose_terminate_handler() { std::abort(); }
}  // namespace __gnu_cxx
