// The library's cost against floors measured in the same run. Each figure is a median of rounds
// that take floor and library in turn, so that a busy machine disturbs both alike. Ends with status
// 1 when a limit is exceeded.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "caixora.h"
#include "exchange/answer.h"
#include "exchange/items.h"
#include "floor.h"
#include "support/ansi.h"
#include "support/log.h"
#include "support/state.h"
#include "windows/win32.h"
// After windows.h, which it needs.
#include <oleauto.h>

using namespace caixora;
namespace fs = std::filesystem;

namespace {

bool within_limits = true;

double Microseconds(int times, const std::function<void()>& work) {
  using Clock = std::chrono::steady_clock;
  const auto begun = Clock::now();
  for (int i = 0; i < times; ++i) work();
  return std::chrono::duration<double, std::micro>(Clock::now() - begun).count() / times;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Prints and judges the median of cost / floor; a limit of 0 judges nothing.
void Compare(const char* what, int rounds, int times, const std::function<void()>& floor,
             const std::function<void()>& work, double limit) {
  std::vector<double> floors, costs, ratios;
  for (int round = 0; round < rounds; ++round) {
    floors.push_back(Microseconds(times, floor));
    costs.push_back(Microseconds(times, work));
    ratios.push_back(costs.back() / floors.back());
  }
  const double ratio = Median(ratios);
  std::printf("%-34s %12.1f us, floor %12.1f us, ratio %.3f", what, Median(costs), Median(floors),
              ratio);
  if (limit > 0) std::printf(" (limit %.2f)%s", limit, ratio <= limit ? "" : "  EXCEEDED");
  std::printf("\n");
  within_limits = within_limits && (limit == 0 || ratio <= limit);
}

// Cost of one more element at each size, once start-up (size 0) is paid. Sizes take turns.
void PerElement(const char* what, const std::vector<int>& sizes,
                const std::function<std::function<void()>(int)>& prepare) {
  const auto nothing = prepare(0);
  std::vector<std::function<void()>> works;
  for (const int size : sizes) works.push_back(prepare(size));
  std::vector<std::vector<double>> costs(sizes.size());
  for (int round = 0; round < 15; ++round)
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      const int times = std::max(1, 100000 / sizes[i]);
      costs[i].push_back((Microseconds(times, works[i]) - Microseconds(times, nothing)) / sizes[i]);
    }
  const double first = Median(costs.front());
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const double ratio = Median(costs[i]) / first;
    std::printf("%-20s of %7d %12.4f us each, against the smallest %.3f%s\n", what, sizes[i],
                Median(costs[i]), ratio,
                i == 0         ? ""
                : ratio <= 1.2 ? " (limit 1.20)"
                               : " (limit 1.20)  EXCEEDED");
    within_limits = within_limits && ratio <= 1.2;
  }
}

std::function<void()> Loading(const fs::path& dll) {
  return [path = dll.string()] { FreeLibrary(LoadLibraryA(path.c_str())); };
}

}  // namespace

int main() {
  char own[MAX_PATH];
  GetModuleFileNameA(nullptr, own, MAX_PATH);
  const fs::path bin = fs::path(own).parent_path();
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  fs::create_directories("Log");
  state.LogVersionText = "1.0.0.0";

  const std::string message = "Antes de Remover Arquivo - C:\\Tef_dial\\Req\\Intpos.001";
  const std::string line = "\r\n07/03/2024 09:15:05 ::1.0.0.0:: " + message;
  WriteLog({message});
  Compare(
      "one log line", 21, 500, [&] { FloorLogLine(line.c_str()); }, [&] { WriteLog({message}); },
      1.15);

  const HMODULE dll = LoadLibraryA((bin / "Caixora.dll").string().c_str());
  const auto sell = reinterpret_cast<decltype(&VendeCreditoVista)>(
      reinterpret_cast<void*>(GetProcAddress(dll, "VendeCreditoVista")));
  bool approved = true;
  Compare(
      "an approved sale", 5, 1, FloorSale,
      [&] {
        const CaixoraTexto text = sell("11222333000181", "11222333000181", 2, 1, 1);
        approved = approved && std::string(reinterpret_cast<const char*>(text), 4) == "S;1;";
        SysFreeString(text);
      },
      1.05);
  FreeLibrary(dll);
  if (!approved) std::printf("the GP did not approve: the figure counts for nothing\n");

  PerElement("answer lines", {10, 1000, 100000}, [](int lines) {
    std::string answer;
    for (int i = 0; i < lines; ++i) answer += "029-001 = TEF 0123456789 R$ 12,50\r\n";
    return [answer] { ComposeResult(ParseAnswer(answer)); };
  });
  PerElement("link items", {10, 100, 1000, 10000}, [](int items) {
    TefArguments arguments;
    arguments.iQtdeItens = items;
    for (int i = 0; i < items; ++i)
      arguments.sItens += std::string(u8"7891¬CAFE TORRADO¬2¬10,50¬0¬21,00|"_ansi);
    // The items alone: the log lines of a whole request, which look for the switch each, cost more
    // than ten items and swing by more.
    return [arguments] {
      std::string record;
      AppendLinkItems(arguments, record);
    };
  });

  const auto size = fs::file_size(bin / "Caixora.dll");
  std::printf("%-34s %llu bytes (limit 256000)\n", "Caixora.dll",
              static_cast<unsigned long long>(size));
  Compare("loading it, against an empty DLL", 15, 20, Loading(bin / "empty.dll"),
          Loading(bin / "Caixora.dll"), 0);
  return within_limits && approved && size <= 256000 ? 0 : 1;
}
