// Replays the scripts in tests/transcripts and compares what comes of them. With --gravar the
// transcripts are written anew instead, for their author to read as a diff.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include "machine.h"
#include "script.h"

namespace {

bool records = false;

// On a thread of its own, since a call that ends the program never comes back.
bool RunLineToItsEnd(const std::string& line) {
  std::promise<bool> ended;
  bool stopped = false;
  machine.on_host_stop = [&] {
    stopped = true;
    ended.set_value(true);
  };
  std::thread thread([&] { ended.set_value(RunLine(line)); });
  const bool is_call = ended.get_future().get();
  stopped ? thread.detach() : thread.join();
  return is_call;
}

// The case as its file would have it after this run.
Lines Replay(const Case& script) {
  StartCase();
  Lines lines;
  for (const std::string& line : script.lines) {
    if (IsTranscript(line)) continue;
    lines.push_back(line.substr(0, line.find(kArrow)));
    if (!RunLineToItsEnd(line)) continue;
    const Lines told = Transcript();
    if (told.size() == 1 && lines.back().size() + told[0].size() <= kWidth)
      lines.back() += kArrow + told[0].substr(2);
    else
      lines.insert(lines.end(), told.begin(), told.end());
  }
  return lines;
}

// What stands between the lines that are the same.
std::string Difference(Lines written, Lines now) {
  while (!written.empty() && !now.empty() && written.back() == now.back()) {
    written.pop_back();
    now.pop_back();
  }
  auto [old, fresh] = std::mismatch(written.begin(), written.end(), now.begin(), now.end());
  std::string text;
  for (; old != written.end(); ++old) text += "\n-" + *old;
  for (; fresh != now.end(); ++fresh) text += "\n+" + *fresh;
  return text;
}

TEST(Transcripts, AreAsWritten) {
  for (const auto& entry : std::filesystem::directory_iterator(kTranscripts)) {
    if (entry.path().filename() == "comum.txt") continue;
    std::string file;
    for (const Case& script : ReadCases(entry.path())) {
      if (!script.title.empty()) file += "== " + script.title + "\n";
      const Lines now = Replay(script);
      for (const std::string& line : now) file += line + "\n";
      if (const std::string difference = Difference(script.lines, now); !difference.empty())
        ADD_FAILURE() << entry.path().filename() << ": " << script.title << difference;
    }
    if (records) std::ofstream(entry.path(), std::ios::binary) << file;
  }
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  records = argc > 1 && std::string(argv[1]) == "--gravar";
  ReadCommon();
  return RUN_ALL_TESTS();
}
