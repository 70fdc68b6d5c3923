// Files of this folder that the programs carry with them; cmake/embed.cmake makes the texts.
#pragma once

#include <string_view>

namespace caixora {

extern const std::string_view kCertificationScript;  // roteiro.txt
extern const std::string_view kCertificationPage;    // certificado.html

}  // namespace caixora
