// Scripts that work the machine in memory and call the library, and transcripts of what comes of
// it. transcripts/comum.txt tells how they are written.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

// A titled piece of a file. A line's transcript stands behind an arrow, or in the lines below it
// that begin with two blanks.
struct Case {
  std::string title;
  Lines lines;
};
std::vector<Case> ReadCases(const std::filesystem::path& path);

// The folder of the scripts, whose name may have any letters.
inline const std::filesystem::path kTranscripts = u8"" CAIXORA_TRANSCRIPTS;

inline constexpr std::size_t kWidth = 118;
inline constexpr char kArrow[] = " -> ";
inline bool IsTranscript(const std::string& line) { return line.starts_with("  "); }

// Reads what all cases share: the machine that they start on, names of texts, and passages.
void ReadCommon();

// Starts over, on the machine that all cases start on.
void StartCase();

// Runs a script line. True for one with calls: the machine's notes then tell what they did.
bool RunLine(const std::string& line);

// The machine's notes as lines of a file.
Lines Transcript();
