#include "simulators/gp_stand_in.h"

#include <array>

#include "exchange/gp_candidates.h"
#include "programs/console.h"
#include "system/programs.h"

namespace caixora::gp {
namespace {

// A run owns the first mutex; the event closes the copy, which has the other mutex while it lives.
constexpr char kRunMutex[] = "CaixoraRoteiro";
constexpr char kCloseEvent[] = "CaixoraRoteiroFechaGp";
constexpr char kCopyMutex[] = "CaixoraRoteiroGpAberto";
constexpr char kOwnExe[] = "clientorvane_simulador.exe";
constexpr char kCopyExe[] = "clientorvane.exe";
constexpr int kPatience = 250;  // times 20 ms

// Open to processes of other rights: the program under test may run as administrator.
class OpenToAll {
 public:
  OpenToAll() {
    ::InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
    ::SetSecurityDescriptorDacl(&descriptor_, TRUE, nullptr, FALSE);
  }
  SECURITY_ATTRIBUTES* get() { return &attributes_; }

 private:
  SECURITY_DESCRIPTOR descriptor_{};
  SECURITY_ATTRIBUTES attributes_{sizeof attributes_, &descriptor_, FALSE};
};

std::string OwnPath() {
  std::array<char, MAX_PATH> path{};
  const DWORD size = ::GetModuleFileNameA(nullptr, path.data(), MAX_PATH);
  return {path.data(), size};
}

bool Exists(const std::string& path) {
  return ::GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

template <typename Done>
bool Eventually(Done done) {
  for (int i = 0; i < kPatience; ++i, ::Sleep(20))
    if (done()) return true;
  return false;
}

bool SameName(std::string_view name, const char* other) {
  return ::_stricmp(std::string(name).c_str(), other) == 0;
}

// A copy that an interrupted run left, of whatever version.
bool IsCopy(const std::string& path) {
  return ReadWhole(path).value_or("").find(kCopyMutex) != std::string::npos;
}

}  // namespace

StandIn::StandIn()
    : run_(::CreateMutexA(OpenToAll().get(), TRUE, kRunMutex)),
      close_(::CreateEventA(OpenToAll().get(), TRUE, FALSE, kCloseEvent)) {
  const std::optional<std::string> own = ReadWhole(OwnPath());  // before it is held
  if (Exists(kDeveloperMark))
    throw Obstacle(std::string("Retire ") + kDeveloperMark + ": a biblioteca não procuraria o GP.");
  for (std::size_t i = 0; i < kGpPlaces; ++i) {
    const GpPlace place = GpPlaceAt(i);
    const std::string path = place.Path();
    if (path.front() == '\0' || !Exists(path)) continue;
    if (SameName(place.exe, kOwnExe)) {
      if (folder_.empty()) folder_ = place.folder;
      if (!Eventually([&] {
            held_.push_back(OpenFile(path, GENERIC_READ, 0, OPEN_EXISTING));
            return held_.back() != nullptr;
          }))
        throw Obstacle("Outro programa usa " + Utf8(path) + ".");
    } else if (!IsCopy(path)) {
      throw Obstacle("Há um GP em " + Utf8(path) +
                     ", e a biblioteca o usaria. O roteiro é para uma máquina sem ele.");
    } else if (!Eventually([&] { return ::DeleteFileA(path.c_str()) != 0; })) {
      throw Obstacle("Não foi possível apagar " + Utf8(path) + ", de um roteiro anterior.");
    }
  }
  if (folder_.empty())
    throw Obstacle(std::string("Instale o simulador em C:\\Lumetra\\") + kOwnExe + '.');
  path_ = folder_ + kCopyExe;
  if (!own || !WriteTo(OpenFile(path_, GENERIC_WRITE, 0, CREATE_ALWAYS).get(), *own))
    throw Obstacle("Não foi possível gravar " + Utf8(path_) + '.');
}

StandIn::~StandIn() {
  Close();
  Eventually([&] { return ::DeleteFileA(path_.c_str()) || !Exists(path_); });
}

bool StandIn::Runs() const {
  return Handle(::OpenMutexA(SYNCHRONIZE, FALSE, kCopyMutex)) != nullptr;
}

void StandIn::Open() const {
  if (Runs()) return;
  std::string command = '"' + path_ + "\" STARTAUTO";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!::CreateProcessA(path_.c_str(), command.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS,
                        nullptr, nullptr, &startup, &process))
    return;
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  Eventually([this] { return Runs(); });
}

void StandIn::Close() const {
  ::SetEvent(close_.get());
  Eventually([this] { return !Runs() && !ImageRuns(kCopyExe); });
  ::ResetEvent(close_.get());
}

bool StoodIn(bool started_by_library) {
  const std::string own = OwnPath();
  const bool is_copy = SameName(std::string_view(own).substr(own.rfind('\\') + 1), kCopyExe);
  if (!is_copy && !started_by_library) return false;
  const Handle run(::OpenMutexA(SYNCHRONIZE, FALSE, kRunMutex));
  const Handle close(::OpenEventA(SYNCHRONIZE, FALSE, kCloseEvent));
  if (!run || !close) {
    if (is_copy) Print("Não há um roteiro em andamento. Esta cópia do simulador não atende.\n");
    return is_copy;
  }
  const Handle alive(::CreateMutexA(OpenToAll().get(), FALSE, kCopyMutex));
  if (::GetLastError() == ERROR_ALREADY_EXISTS) return true;
  Print("GP simulado, a serviço do roteiro em andamento.\n");
  // A run that ends, in whatever way, gives its mutex up.
  const HANDLE ends[] = {close.get(), run.get()};
  ::WaitForMultipleObjects(2, ends, FALSE, INFINITE);
  return true;
}

}  // namespace caixora::gp
