// What the simulated GP can be asked for.
#pragma once

#include <string_view>

#include "simulators/gp_request.h"

namespace caixora::gp {

struct Operation {
  std::string_view header;
  std::string_view subtype;  // empty: whatever the subtype; such a row comes after its siblings
  std::string_view type;     // field 011-000; empty: not a transaction of the network
  bool receipt;
  std::string_view title;
  std::string_view message;
};

// Null when the request asks for nothing known.
const Operation* FindOperation(const Request& request);

}  // namespace caixora::gp
