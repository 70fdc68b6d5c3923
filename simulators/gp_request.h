// A request or answer record of the exchange: lines "key = value", of which the first of a key
// counts.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace caixora::gp {

class Request {
 public:
  explicit Request(std::string_view record);

  bool Has(std::string_view key) const { return fields_.contains(key); }
  std::string_view Value(std::string_view key, std::string_view otherwise = {}) const;

  std::string_view Header() const { return Value("000-000"); }
  // What of its header it asks for: 000-001, else 800-001, where "2F" is a fleet sale.
  std::string Subtype() const;
  // A confirmation or an undo, which no GP answers.
  bool IsSettlement() const { return Header() == "CNF" || Header() == "NCN"; }
  const std::map<std::string, std::string, std::less<>>& fields() const { return fields_; }

 private:
  std::map<std::string, std::string, std::less<>> fields_;
};

// The amount of a record, which counts in cents, with a decimal comma.
std::string ReadableAmount(std::string_view cents);

}  // namespace caixora::gp
