// What the simulated GP can be asked for.
#pragma once

#include <string_view>

#include "simulators/gp_request.h"

namespace caixora::gp {

// How the books take it.
enum class Posting {
  kNone,
  kSale,      // has a coupon of its own, and wants a confirmation or an undo
  kTopUp,     // has a coupon of its own; whether it wants an outcome is for each network to say
  kFollowUp,  // names the coupon of a sale; the same holds for its outcome
};

struct Operation {
  std::string_view header;
  std::string_view subtype;  // empty: whatever the subtype; such a row comes after its siblings
  std::string_view type;     // field 011-000; empty: not a transaction of the network
  Posting posting;
  bool receipt;
  std::string_view title;
  std::string_view message;
};

// Null when nothing known is asked for. The subtype is the request's own, as Request gives it.
const Operation* FindOperation(std::string_view header, std::string_view subtype);
const Operation* FindOperation(const Request& request);

}  // namespace caixora::gp
