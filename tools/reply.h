// What a function of the library returned, and how it is shown.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "tools/exit_status.h"
#include "tools/functions.h"

namespace caixora {

struct Reply {
  Kind kind;
  std::optional<std::int32_t> code = {};  // of an interactive function; the others give a text
  std::string text = {};                  // Windows-1252
  std::int64_t milliseconds = 0;

  // A local reply is a success of Confirmar and Desfazimento alone.
  bool Succeeded() const;
  ExitStatus Status() const;
};

void PrintDecoded(std::string_view name, const Reply& reply);

nlohmann::ordered_json ToJson(const nlohmann::json& id, const Reply& reply);
nlohmann::ordered_json ErrorToJson(const nlohmann::json& id, std::string_view error);

}  // namespace caixora
