// The keys of the simulated GP: what comes of the next request, the books, the end.
#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "simulators/gp_director.h"

namespace caixora::gp {

inline constexpr char kEscape = '\x1B';
inline constexpr int kEnded = 0;  // the exit code of a GP that is ended by its key

class Keys : public Director {
 public:
  // `say` shows a text of whole lines, `report` the books.
  Keys(std::function<void(std::string_view)> say, std::function<void()> report)
      : say_(std::move(say)), report_(std::move(report)) {}

  static std::string Help();

  const Outcome* Decide(const Request& request) override;
  void Received(const Request& request, const Outcome& outcome, Moment) override;
  bool Key(char key) override;
  std::optional<int> Tick(Moment) override;

 private:
  std::function<void(std::string_view)> say_;
  std::function<void()> report_;
  const Outcome* chosen_ = nullptr;
  bool ended_ = false;
};

}  // namespace caixora::gp
