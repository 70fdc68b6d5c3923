// The Windows edge against real files and processes, and whole calls on it with short waits.
#include <gtest/gtest.h>

#include <new>

#include "exchange/chama_tef.h"
#include "interactive/launcher.h"
#include "support/ansi.h"
#include "support/file.h"
#include "support/files.h"
#include "support/log.h"
#include "support/process.h"
#include "support/state.h"
#include "support/system_process.h"
#include "support/version.h"
#include "support/wait.h"
#include "windows_world.h"

using namespace world;

// No allocation above this succeeds. Not inlined: the compiler would see malloc paired with delete.
static std::size_t largest_allocation = SIZE_MAX;

[[gnu::noinline]] void* operator new(std::size_t size) {
  void* memory = size > largest_allocation ? nullptr : std::malloc(size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace caixora {

void Pause(std::uint32_t milliseconds) noexcept { ::Sleep(milliseconds / 100); }

namespace {

class Edge : public testing::Test {
 protected:
  void SetUp() override {
    Clean();
    ClientFolder = LogBaseFolder = "";
  }
  void TearDown() override { Clean(); }
};

TEST_F(Edge, FilesAnswerAsTheirHelpersSay) {
  const std::string path = "C:\\caixa\\a.bin";
  Write(path, std::string(10485759, 'x'));
  EXPECT_EQ(FileSizeMB(path), 9);
  Write(path, std::string(10485760, 'x'));
  EXPECT_EQ(FileSizeMB(path), 10);
  EXPECT_EQ(FileSizeMB("C:\\caixa\\missing"), 0);
  EXPECT_FALSE(FileExists(L"C:\\caixa\\missing"));
  EXPECT_TRUE(FileExists(L"C:\\missing\\missing")) << "only a plain file-not-found counts";
  EXPECT_FALSE(OpensForReading("C:\\caixa"));
  EXPECT_FALSE(OpensForReading(std::string("\0:\\caixa\\a.bin", 14)));
  EXPECT_EQ(ToWide(std::string("\xC3\0x", 3)), L"\u00C3");
  {
    const Holding held(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
    RemoveFile(path);
    EXPECT_EQ(DeleteFileAt(path), Deletion::kFailed);
  }
  RemoveFile(path);
  EXPECT_EQ(DeleteFileAt(path), Deletion::kMissing);
  auto file = File::Open("C:\\caixa\\b.txt", File::Use::kAppend);
  EXPECT_NE(Holding("C:\\caixa\\b.txt", FILE_SHARE_READ | FILE_SHARE_WRITE).handle(), INVALID_HANDLE_VALUE) << "others may write as well";
  file->Write("a");
  file.reset();
  File::Open("C:\\caixa\\b.txt", File::Use::kAppend)->Write("b");
  EXPECT_EQ(Read("C:\\caixa\\b.txt"), "ab");
}

TEST_F(Edge, LogIsWrittenSwitchedAndMovedAside) {
  WriteLog({"one"});
  EXPECT_TRUE(fs::exists("LD.txt"));
  EXPECT_TRUE(Read("Log\\Caixora.log").ends_with(":: one"));
  EXPECT_EQ(Read("Log\\Caixora.log").substr(0, 2), "\r\n");
  Write("Log\\Caixora.log", std::string(10485760, 'x'));
  WriteLog({"two"});
  EXPECT_EQ(std::distance(fs::directory_iterator("Log"), {}), 2);
  EXPECT_TRUE(Read("Log\\Caixora.log").ends_with(":: two"));
  Write("LD.txt", "x");
  {
    // Opens but cannot be read: nothing is written.
    Holding held("LD.txt", FILE_SHARE_READ | FILE_SHARE_WRITE);
    LockFile(held.handle(), 0, 0, 100, 0);
    WriteLog({"three"});
  }
  EXPECT_TRUE(Read("Log\\Caixora.log").ends_with(":: two"));
}

TEST_F(Edge, ProcessesAreFoundByWholeNameAndStarted) {
  Install("Trevix.exe", "C:\\Trevix\\Trevix.exe2.exe");
  ClientExeName = "trevix.EXE";
  CloseHandle(Start("C:\\Trevix\\Trevix.exe2.exe " + std::string(u8"1¬¬¬longa¬¬¬¬¬¬¬¬"_ansi)));
  EXPECT_FALSE(IsProcessRunning());
  Install("Trevix.exe", "C:\\Trevix\\Trevix.exe");
  ExecuteCommand("C:\\Trevix\\Trevix.exe", std::string(u8"1¬¬¬longa¬¬ \" ¬¬¬¬¬¬"_ansi));
  EXPECT_TRUE(Eventually([] { return IsProcessRunning(); }));
  EXPECT_TRUE(Eventually([] { return !Read("C:\\Trevix\\Trevix_parametros.txt").empty(); }));
  Kill("Trevix.exe2.exe");
  EXPECT_TRUE(IsElevated());
}

TEST_F(Edge, VersionsComeFromResources) {
  EXPECT_EQ(LibraryVersion("C:\\missing.dll"), L"1");
  EXPECT_EQ(LibraryVersion((OwnFolder() / "Caixora.dll").string().c_str()), L"" CAIXORA_VERSION);
  EXPECT_EQ(HostVersion(), L"") << "this program has no version";
}

TEST_F(Edge, LackOfMemoryIsCode34) {
  Install("Trevix.exe", "C:\\Trevix\\Trevix.exe");
  Write("ConfigQJ.ini", "CAMINHO=C:\\Trevix\r\n");
  const std::string text(1 << 20, 'x');
  largest_allocation = 3 << 19;  // room for the text, but not for a line with it
  EXPECT_EQ(StartClient({20, "11222333000181", 1, text.c_str(), "1,00", "", "", "", "", 7}), FlowCode::kStartFailed);
  largest_allocation = SIZE_MAX;
}

TEST_F(Edge, ThousandSalesLeakNothing) {
  Install(kGpExe, fs::path("C:\\Lumetra") / kGpExe);
  CloseHandle(Start("C:\\Lumetra\\" + std::string(kGpExe) + " STARTAUTO"));
  ASSERT_TRUE(Eventually([] { return Count(kGpExe) == 1; }));
  std::this_thread::sleep_for(500ms);
  const TefCall sale{.codigo = 1, .sCNPJCliente = "11222333000181", .sCNPJParceiro = "11222333000181", .dValor = 2, .iCupom = 1};
  const auto sell = [&](int times) {
    for (int i = 0; i < times; ++i) ASSERT_EQ(*reinterpret_cast<const char*>(ChamaTef(sale).get()), 'S');
  };
  sell(50);
  const int handles = OpenHandles();
  const std::size_t memory = PrivateBytes();
  const auto begun = std::chrono::steady_clock::now();
  sell(1000);
  const auto took = std::chrono::steady_clock::now() - begun;
  std::printf("1000 sales: handles %d -> %d, private bytes %zu -> %zu, %lld ms\n", handles, OpenHandles(), memory, PrivateBytes(),
              static_cast<long long>(took / 1ms));
  EXPECT_LE(OpenHandles(), handles);
  EXPECT_LE(PrivateBytes(), memory + (256 << 10));
}

}  // namespace
}  // namespace caixora
