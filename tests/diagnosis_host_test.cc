// The diagnosis by the real program, over real files.
#include <gtest/gtest.h>

#include <map>

#include "windows_world.h"

using namespace world;

namespace {

constexpr char kLog[] = "C:\\Lumetra\\Log\\Caixora.log";
constexpr char kAnswer[] = "C:\\Tef_Dial\\Resp\\Intpos.001";
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct Answer {
  DWORD status = 0;
  std::string text;
};

Answer Diagnose(const std::wstring& arguments) {
  const fs::path output = OwnFolder() / "diagnostico.txt";
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  Answer answer;
  {
    const Handle file = caixora::Own(CreateFileW(output.c_str(), GENERIC_WRITE, kShareAll,
                                                 &inherited, CREATE_ALWAYS, 0, nullptr));
    const std::wstring command = HostCommand(L"caixora_host.exe", L"diagnostico ") + arguments;
    answer.status = ExitCodeOf(Start(command, nullptr, file.get(), nullptr, file.get()));
  }
  answer.text = Read(output);
  fs::remove(output);
  return answer;
}

// All that is there, with the times of files.
std::map<std::string, std::string> Everything() {
  std::map<std::string, std::string> all;
  for (const char* root : {"C:\\caixa", "C:\\Tef_Dial", "C:\\Lumetra", "C:\\Trevix"})
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      const bool is_file = entry.is_regular_file();
      const auto time = is_file ? entry.last_write_time().time_since_epoch().count() : 0;
      all[entry.path().string()] =
          (is_file ? std::to_string(entry.file_size()) : "pasta") + ' ' + std::to_string(time);
    }
  return all;
}

// The DLL with its bytes changed.
void InstallLibrary(const std::function<void(std::string&)>& change) {
  std::string bytes = Read(OwnFolder() / "Caixora.dll");
  change(bytes);
  Write("C:\\caixa\\Caixora.dll", bytes);
}

struct Row {
  const char* line;  // how the item's line begins
  const char* says;  // and what it tells
  DWORD status;
  std::function<Handle()> breaks;
};

const Row kRows[] = {
    {"OK    dll: ", "32 funções, versão " CAIXORA_VERSION, 1, [] { return Handle(); }},
    {"FALHA dll: ", "é de 32 bits", 2,
     [] {
       InstallLibrary([](std::string& dll) {
         dll.replace(dll.find({"PE\0", 3}) + 4, 2, "\x4C\1");
       });
       return Handle();
     }},
    {"FALHA dll: ", "cortada", 2,
     [] {
       InstallLibrary([](std::string& dll) { dll.resize(dll.size() - 1000); });
       return Handle();
     }},
    {"FALHA dll: ", "não tem as funções Teste", 2,
     [] {
       InstallLibrary([](std::string& dll) { dll[dll.find({"\0Teste\0", 7}) + 1] = 'X'; });
       return Handle();
     }},
    {"FALHA log: ", "não abre para gravar: outro programa o mantém aberto (erro 32)", 2,
     [] {
       Write(kLog, "x");
       return Hold(kLog, FILE_SHARE_READ);
     }},
    {"FALHA log: ", "Log é um arquivo", 2,
     [] {
       Write("C:\\Lumetra\\Log", "x");
       return Handle();
     }},
    {"FALHA resp: ", "está preso: acesso negado", 2,
     [] {
       Write(kAnswer, "x");
       SetFileAttributesA(kAnswer, FILE_ATTRIBUTE_READONLY);
       return Handle();
     }},
    {"FALHA resp: ", "está preso: outro programa", 2,
     [] { return Hold(kAnswer, FILE_SHARE_READ | FILE_SHARE_WRITE); }},
    {"FALHA resp: ", "não volta", 2,
     [] {
       fs::remove("C:\\Tef_Dial\\Resp");
       return Handle();
     }},
    {"AVISO trevix: ", "em execução", 1,
     [] {
       Handle companion = Start(L"C:\\Trevix\\Trevix.exe 20\u00AC\u00AC\u00AClonga");
       Eventually([] { return !Read("C:\\Trevix\\Trevix_parametros.txt").empty(); });
       return companion;
     }},
    {"AVISO config: ", "termina em barra", 1,
     [] {
       Write("C:\\caixa\\ConfigQJ.ini", "C:\\Trevix\\\r\nCAMINHO=C:\\Trevix\\\r\n");
       return Handle();
     }},
    {"AVISO dll: ", "Não há uma em C:\\Outra", 2,
     [] {
       fs::current_path("C:\\Outra");
       return Handle();
     }},
};

TEST(DiagnosisHost, TellsOfBrokenCheckoutsAndChangesNothing) {
  for (const Row& row : kRows) {
    SetFileAttributesA(kAnswer, FILE_ATTRIBUTE_NORMAL);
    Clean();
    Install("Caixora.dll", "C:\\caixa\\Caixora.dll");
    Install(kGpExe, std::string("C:\\Lumetra\\") + kGpExe);
    for (const char* program : {"Trevix.exe", "Email.exe"})
      Install(program, std::string("C:\\Trevix\\") + program);
    for (const char* folder : {"C:\\Trevix\\Req", "C:\\Trevix\\Resp"})
      fs::create_directories(folder);
    Write("C:\\caixa\\ConfigQJ.ini", "C:\\Trevix\r\nCAMINHO=C:\\Trevix\r\n");
    const Handle held = row.breaks();
    const auto before = Everything();
    const std::wstring folder = fs::current_path().wstring();
    const Answer answer = Diagnose(L"--pasta " + folder);
    SCOPED_TRACE(answer.text);
    EXPECT_EQ(Everything(), before);
    EXPECT_EQ(answer.status, row.status);
    const std::size_t at = answer.text.find(row.line);
    ASSERT_NE(at, std::string::npos) << row.line;
    const std::string line = answer.text.substr(at, answer.text.find('\n', at) - at);
    EXPECT_NE(line.find(row.says), std::string::npos) << row.says;
  }
  Clean();
}

TEST(DiagnosisHost, NeedsNothing) {
  Clean();
  for (const char* folder : {"C:\\caixa", "C:\\Tef_Dial", "C:\\Lumetra", "C:\\Trevix"})
    for (const auto& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
  const Answer answer = Diagnose(L"--json --dll C:\\nada.dll");
  EXPECT_EQ(answer.status, 2u);
  EXPECT_TRUE(
      answer.text.starts_with("{\"venda\":false,\"interativo\":false,\"itens\":[{\"id\":"
                              "\"dll\",\"estado\":\"falha\",\"texto\":\""))
      << answer.text;
  for (const wchar_t* wrong : {L"--pasta", L"--pasta C:\\nada", L"--dll", L"--xis", L"x"}) {
    const Answer refused = Diagnose(wrong);
    EXPECT_EQ(refused.status, 2u);
    EXPECT_EQ(refused.text.find("Uma venda"), std::string::npos) << refused.text;
  }
  Clean();
}

}  // namespace
