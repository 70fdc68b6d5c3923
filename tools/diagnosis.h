// Why this checkout would not sell: what the library would find here, judged by its own tables and
// rules. Reads, and changes nothing; needs no GP, and calls no function of the library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace caixora {

enum class Status : std::uint8_t { kOk, kWarning, kFailure };

// What a check has to say, in UTF-8: what was found, and what to do about it. It is as bad as the
// worst that was added.
struct Finding {
  Status status = Status::kOk;
  std::string text, remedy;

  void Note(std::string_view found) { Add(Status::kOk, found, {}); }
  void Warn(std::string_view found, std::string_view what_to_do) {
    Add(Status::kWarning, found, what_to_do);
  }
  void Fail(std::string_view found, std::string_view what_to_do) {
    Add(Status::kFailure, found, what_to_do);
  }
  void Add(Status how, std::string_view found, std::string_view what_to_do);
};

struct DiagnosisItem {
  std::string_view id;
  Finding finding;
};

struct Diagnosis {
  bool sale = true;  // whether one could work here
  bool flow = true;  // the same for an interactive flow
  std::vector<DiagnosisItem> items;

  Status Worst() const;
};

struct DiagnosisOptions {
  std::string library;        // the file to look at; empty: beside the program and in the folder
  bool folder_given = false;  // the current folder was asked for, and need not be the program's
};

// Of the current folder.
Diagnosis Diagnose(const DiagnosisOptions& options);

}  // namespace caixora
