// The Windows edge against real files and processes.
#include <gtest/gtest.h>

#include "support/ansi.h"
#include "support/file_helpers.h"
#include "support/log.h"
#include "support/program_helpers.h"
#include "support/state.h"
#include "system/programs.h"
#include "system/version.h"
#include "system/wide_text.h"
#include "windows_world.h"

using namespace world;

namespace caixora {
namespace {

class Edge : public testing::Test {
 protected:
  void SetUp() override {
    Clean();
    state = {};
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
    const Handle held = Hold(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
    RemoveFile(path);
    EXPECT_EQ(DeleteFileAt(path), static_cast<SystemError>(ERROR_SHARING_VIOLATION));
  }
  RemoveFile(path);
  EXPECT_EQ(DeleteFileAt(path), SystemError::kFileNotFound);
  EXPECT_EQ(DeleteFileAt("C:\\missing\\missing"), SystemError::kPathNotFound);

  const std::string log = "C:\\caixa\\b.txt";
  File file;
  ASSERT_EQ(file.Open(log, File::Use::kAppend), SystemError::kNone);
  EXPECT_TRUE(Hold(log, FILE_SHARE_READ | FILE_SHARE_WRITE)) << "others may write as well";
  EXPECT_EQ(file.Write("a"), SystemError::kNone);
  ASSERT_EQ(file.Open(log, File::Use::kReadAndAppend), SystemError::kNone);
  EXPECT_EQ(file.Write("b"), SystemError::kNone);
  file.Close();
  EXPECT_EQ(Read(log), "ab");
  ASSERT_EQ(file.Open(log, File::Use::kReplace), SystemError::kNone);
  std::size_t taken = 1;
  EXPECT_NE(file.Read(nullptr, 1, taken), SystemError::kNone) << "opened for writing";
}

TEST_F(Edge, LogIsWrittenAndMovedAside) {
  WriteLog({"one"});
  EXPECT_TRUE(fs::exists("LD.txt"));
  EXPECT_TRUE(Read("Log\\Caixora.log").ends_with(":: one"));
  EXPECT_EQ(Read("Log\\Caixora.log").substr(0, 2), "\r\n");
  Write("Log\\Caixora.log", std::string(10485760, 'x'));
  WriteLog({"two"});
  EXPECT_EQ(std::distance(fs::directory_iterator("Log"), {}), 2);
  EXPECT_TRUE(Read("Log\\Caixora.log").ends_with(":: two"));
}

TEST_F(Edge, ProcessesAreFoundByWholeNameAndStarted) {
  Install("Trevix.exe", "C:\\Trevix\\Trevix.exe2.exe");
  state.ClientExeName = "trevix.EXE";
  const Handle other = Start(L"C:\\Trevix\\Trevix.exe2.exe 1\u00AC\u00AC\u00AClonga");
  EXPECT_FALSE(IsProcessRunning());
  Install("Trevix.exe", "C:\\Trevix\\Trevix.exe");
  const std::string line(u8"1¬¬¬longa¬¬ \" ¬¬¬¬¬¬"_ansi);
  ExecuteCommand("C:\\Trevix\\Trevix.exe", line);
  EXPECT_TRUE(Eventually([] { return IsProcessRunning(); }));
  EXPECT_TRUE(Eventually(
      [&] { return Read("C:\\Trevix\\Trevix_parametros.txt").find(line) != line.npos; }));
  Kill("Trevix.exe2.exe");
  EXPECT_TRUE(IsElevated());
}

TEST_F(Edge, VersionsComeFromResources) {
  EXPECT_EQ(LibraryVersion("C:\\missing.dll"), L"1");
  // By its bare name, as the library asks for itself.
  ASSERT_NE(LoadLibraryW((OwnFolder() / "Caixora.dll").c_str()), nullptr);
  EXPECT_EQ(LibraryVersion("Caixora.dll"), L"" CAIXORA_VERSION);
  EXPECT_EQ(HostVersion(), L"") << "this program has no version";
}

}  // namespace
}  // namespace caixora
