// The books of the simulated GP: what became of the sales that it was asked for, and what does not
// come out even.
//
// They are a reading of their lines, which the GP also keeps in a file: a GP that was ended goes on
// where it stopped. Requests and outcomes meet by their coupon, as in a real GP.
#pragma once

#include <cstddef>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "simulators/gp_operations.h"
#include "simulators/gp_request.h"

namespace caixora::gp {

// The lines of a request (taken: it did not stay in its folder) and of its answer. `time` is
// "2024-03-07 09:15:05".
std::string BookLine(std::string_view time, const Request& request, bool taken);
std::string BookLine(std::string_view time, const Request& answer);

// What does not come out even. Texts are UTF-8.
struct Finding {
  std::string_view id;
  std::string coupon;
  std::string time;
  std::string text;
};

class Books {
 public:
  // A line that is none of the books is passed over.
  void Add(std::string_view line);

  std::vector<Finding> Findings() const;
  std::string Text() const;
  nlohmann::ordered_json Json() const;

 private:
  enum class Fate { kLeft, kUnanswered, kApproved, kRefused };
  static constexpr std::string_view kFateNames[] = {"ignorada", "sem resposta", "aprovada",
                                                    "recusada"};

  struct Sale {
    std::string time;
    const Operation* operation;
    std::string coupon;
    std::string cents;
    Fate fate;
    std::vector<std::string_view> outcomes;

    bool OwnsCoupon() const { return operation->posting != Posting::kFollowUp; }
    bool IsOpen() const {
      return (fate == Fate::kApproved || fate == Fate::kUnanswered) && outcomes.empty();
    }
    // Neither refused nor left without an answer or an outcome: a further request repeats nothing.
    bool IsConcluded() const {
      return !outcomes.empty() || (fate == Fate::kApproved && operation->posting != Posting::kSale);
    }
    std::string Name() const;
  };

  void Open(Sale sale);
  void Settle(std::string_view time, std::string_view coupon, bool confirmed);
  static Finding About(const Sale& sale, std::string_view id, std::string_view text);
  Sale* ForOutcome(std::string_view coupon);

  std::vector<Sale> sales_;
  std::map<std::string, std::vector<std::size_t>, std::less<>> of_coupon_;
  std::vector<Finding> noted_;
  bool awaits_answer_ = false;  // the next answer is to the last of the sales
};

}  // namespace caixora::gp
