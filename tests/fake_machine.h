// A machine in memory: what file.h, wait.h, system_process.h, clock.h, hard_stop.h, version.h and
// result_string.h ask for. Time passes only while the library waits; what other programs do
// meanwhile is machine.on_pause. Any call that can fail, fails when its turn comes.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/log_line.h"
#include "support/result_string.h"

struct Machine {
  std::map<std::string, std::string> files;  // by lower-case path
  std::set<std::string> folders;             // lower case, without trailing backslash
  std::set<std::string> locked;              // files and folders that do not open
  std::set<std::string> images;              // running programs, lower case
  std::vector<std::string> started;          // "verb|program|arguments"
  std::function<void()> on_pause = [] {};
  std::function<void()> on_start = [] {};
  std::function<void()> on_hard_stop = [] {};
  std::uint64_t waited = 0;  // milliseconds
  bool elevated = true;
  long steps = 0;       // fallible calls so far
  long fail_at = -1;    // the one that fails
  long log_lines = -1;  // lines that the log takes before it opens no more; -1: all
  int open_files = 0;
  caixora::LogTime now{2024, 3, 7, 9, 15, 5};
  std::string version = "1.0.3.12";

  bool Has(const std::string& path) const;
  std::string& operator[](const std::string& path);
  // The messages in that folder's log, each behind a line feed, without their stamps.
  std::string Log(const std::string& folder) const;
};
extern Machine machine;

// Makes a new machine and empties the library's process-wide texts.
void ResetMachine();

// True when the call that asks is the one to fail; counts it.
bool NextCallFails();

// Code of the machine itself, whose allocations are not the library's.
struct InMachine {
  InMachine() { ++depth; }
  ~InMachine() { --depth; }
  static inline int depth = 0;
};

std::string TextOf(const caixora::ResultString& result);
