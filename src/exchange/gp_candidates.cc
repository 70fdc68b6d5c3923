#include "exchange/gp_candidates.h"

#include <iterator>

namespace caixora {
namespace {

// Where GPs are installed on a drive, in the order of preference: simulators before the normal
// build. The last rows differ in case alone, which Windows ignores; each is still probed.
struct Candidate {
  std::string_view folder, exe;
};
constexpr Candidate kCandidates[] = {
    {":\\Pavolin TEF\\", "Pavolin.exe"},
    {":\\Orvane Lumetra\\", "clientorvane.exe"},
    {":\\Orvane Lumetra\\", "clientorvane_simulador.exe"},
    {":\\Lumetra\\", "clientorvane_simulador.exe"},
    {":\\Nerol TEF\\", "Nerol.exe"},
    {":\\LUMETRA\\", "clientorvane.exe"},
    {":\\Lumetra\\", "ClientOrvane.exe"},
};

std::string OnDrive(char drive, std::string_view path) {
  return std::string(1, drive).append(path);
}

}  // namespace

const std::size_t kGpPlaces = std::size(kDrives) * std::size(kCandidates);

GpPlace GpPlaceAt(std::size_t index) {
  const Candidate& candidate = kCandidates[index % std::size(kCandidates)];
  return {OnDrive(kDrives[index / std::size(kCandidates)], candidate.folder), candidate.exe};
}

std::string ExchangeProgramOn(char drive) { return OnDrive(drive, ":\\Tef_Dial\\Tef_Dial.exe"); }

std::string ExchangeFolderOn(char drive) { return OnDrive(drive, ":\\Tef_dial"); }

}  // namespace caixora
