// The exchange folder of the simulated GP, from which it takes each request and where it answers.
// What the request asks for chooses the row of operations, a director or the cents of its amount
// the outcome.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulators/gp_director.h"

namespace caixora::gp {

inline constexpr int kExitAsked = 4;  // the exit code of an outcome that ends the GP

class Manager {
 public:
  // The first director that decides does. `next_key` gives one key a call, while there are any.
  Manager(std::string folder, std::vector<Director*> directors,
          std::function<std::optional<char>()> next_key);

  // Serves requests until one of them, or a director, asks for the end. Returns the exit code.
  int Run();

 private:
  struct Waiting {
    Request request;
    std::string answer;
    Moment due;
  };

  void Pause() const;
  void PassKeysOn();
  const Outcome& Decide(const Request& request) const;
  bool TakeRequest();  // false: the one that was taken asks for the end
  void Prepare(const Request& request, const Outcome& outcome);
  void Answer();

  std::string folder_;
  std::vector<Director*> directors_;
  std::function<std::optional<char>()> next_key_;
  std::string request_ = folder_ + "\\Req\\intpos.001";
  std::optional<std::string> left_alone_;
  std::optional<Waiting> waiting_;
};

}  // namespace caixora::gp
