#include "simulators/gp_request.h"

#include <algorithm>

namespace caixora::gp {
namespace {

// The header of a confirmation has two blanks before its value, and lines end in CR LF.
std::string Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(" \t\r") - first + 1));
}

}  // namespace

Request::Request(std::string_view record) {
  while (!record.empty()) {
    const std::string_view line = record.substr(0, record.find('\n'));
    record.remove_prefix(std::min(line.size() + 1, record.size()));
    const std::size_t sign = line.find('=');
    if (sign != std::string_view::npos)
      fields_.emplace(Trim(line.substr(0, sign)), Trim(line.substr(sign + 1)));
  }
}

std::string_view Request::Value(std::string_view key, std::string_view otherwise) const {
  const auto found = fields_.find(key);
  return found == fields_.end() ? otherwise : std::string_view(found->second);
}

std::string Request::Subtype() const {
  if (Has("000-001")) return std::string(Value("000-001"));
  const bool fleet = std::ranges::any_of(fields_, [](const auto& field) {
    return field.first.starts_with("250-") || field.first.starts_with("261-");
  });
  const std::string_view type = Value("800-001");
  return fleet && type == "2" ? "2F" : std::string(type);
}

std::string ReadableAmount(std::string_view cents) {
  if (cents.size() < 3) return std::string(cents);
  return std::string(cents.substr(0, cents.size() - 2)) + "," +
         std::string(cents.substr(cents.size() - 2));
}

}  // namespace caixora::gp
