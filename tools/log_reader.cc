#include "tools/log_reader.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "tools/call_follower.h"
#include "tools/log_text.h"

namespace caixora {

std::string_view LogLine::Version() const {
  constexpr std::string_view kEnd = ":: ";
  return text.substr(kVersionBegin, message - kEnd.size() - kVersionBegin);
}

std::string_view LogLine::BareMessage() const {
  constexpr std::string_view kDetailed = " (f)";
  std::string_view bare = Message();
  if (bare.ends_with(kDetailed)) bare.remove_suffix(kDetailed.size());
  return bare;
}

std::string_view OutcomeName(Outcome outcome) {
  constexpr std::string_view kNames[] = {"aprovada",       "recusada",     "falha local",
                                         "resposta local", "sem desfecho", "concluída"};
  static_assert(std::size(kNames) == kOutcomes);
  return kNames[static_cast<std::size_t>(outcome)];
}

std::string_view PhaseName(CallPhase phase) {
  constexpr std::string_view kNames[] = {"limpeza e preparo", "retirada do pedido", "GP",
                                         "resposta local"};
  static_assert(std::size(kNames) == kCallPhases);
  return kNames[static_cast<std::size_t>(phase)];
}

std::int64_t Call::TotalMs() const {
  std::int64_t total = 0;
  for (const std::int64_t ms : phase_ms) total += ms;
  return total;
}

bool Log::Add(std::string name, std::string_view bytes) {
  const std::string_view text = texts_.emplace_back(DecodeLog(bytes));
  LogFile file = {.name = std::move(name), .bytes = bytes.size()};
  const std::size_t first = lines_.size();
  const auto number = static_cast<std::uint16_t>(files_.size());
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view line = text.substr(begin, end - begin);
    const Stamp stamp = ReadStamp(line);
    if (stamp.time != kNoTime) {
      lines_.push_back(
          {.text = line, .time = stamp.time, .message = stamp.message, .file = number});
      ++file.lines;
    } else if (lines_.size() > first && !(end == text.size() && BeginsAsStamp(line))) {
      // A further line of the message before it; line ends at the end of all belong to none.
      std::string_view& message = lines_.back().text;
      if (!line.empty())
        message = {message.data(), static_cast<std::size_t>(&text[end - 1] + 1 - message.data())};
    } else if (!line.empty()) {
      lines_.push_back({.text = line, .file = number});
    }
    begin = end + 1;
  }
  files_.push_back(std::move(file));
  return files_.back().lines > 0;
}

void Log::Read() {
  SortLines();
  FollowCalls(lines_, calls_);
}

// By time, and the lines of a file in their order, whatever its clock did. Of files that have the
// same second, the one that begins earlier comes first, or else the one that ends earlier.
void Log::SortLines() {
  std::vector<std::pair<LogTime, LogTime>> spans(files_.size(), {kNoTime, kNoTime});
  for (const LogLine& line : lines_) {
    auto& [first, last] = spans[line.file];
    if (first == kNoTime) first = line.time;
    last = std::max(last, line.time);
  }
  using Index = std::uint32_t;
  using Place = std::tuple<LogTime, std::pair<LogTime, LogTime>, Index>;
  std::vector<LogTime> latest(files_.size(), kNoTime);
  std::vector<Place> places;
  places.reserve(lines_.size());
  for (Index i = 0; i < lines_.size(); ++i) {
    const std::uint16_t file = lines_[i].file;
    latest[file] = std::max({latest[file], lines_[i].time, spans[file].first});
    places.emplace_back(latest[file], spans[file], i);
  }
  if (std::ranges::is_sorted(places)) return;
  std::ranges::sort(places);
  std::vector<LogLine> sorted;
  sorted.reserve(lines_.size());
  for (const Place& place : places) sorted.push_back(lines_[std::get<Index>(place)]);
  lines_ = std::move(sorted);
}

std::vector<OpenSale> Log::OpenSales() const {
  std::vector<OpenSale> open;
  for (std::uint32_t i = 0; i < calls_.size(); ++i) {
    const Call& call = calls_[i];
    const bool concludes = call.kind == CallKind::kConfirmation || call.kind == CallKind::kUndo;
    if (concludes && call.outcome == Outcome::kLocalReply) {
      // Of several sales of a coupon, as when its numbers begin anew each day, the last.
      const auto is_its = [&](const OpenSale& sale) {
        return calls_[sale.call].coupon == call.coupon;
      };
      const auto last = std::find_if(open.rbegin(), open.rend(), is_its);
      if (last != open.rend()) open.erase(std::next(last).base());
    }
    // A call whose name is cut off may have been a sale; an answer with an amount looks like one.
    const bool unanswered =
        call.outcome == Outcome::kUnfinished || call.outcome == Outcome::kLocalFailure;
    const bool sells =
        call.kind == CallKind::kSale ||
        (call.kind == CallKind::kPayment && call.operation.empty() && call.local_reply.empty() &&
         (unanswered || call.answered_cents.value_or(0) > 0));
    if (!sells) continue;
    // The end of a sale whose beginning was not recognised as its own is no second sale.
    if (call.operation.empty() && call.coupon)
      std::erase_if(open, [&](const OpenSale& sale) {
        return sale.why == OpenSale::Why::kUncertain && calls_[sale.call].coupon == call.coupon;
      });
    if (call.outcome == Outcome::kApproved)
      open.push_back({i, OpenSale::Why::kApproved});
    else if (call.outcome == Outcome::kLocalReply)
      open.push_back({i, OpenSale::Why::kMistakenReply});
    else if (call.outcome != Outcome::kRefused && call.request_written)
      open.push_back({i, OpenSale::Why::kUncertain});
  }
  return open;
}

}  // namespace caixora
