// A machine in memory: all of src/system, and the programs around the library. It notes everything
// that the library does to it, in one order. Time passes only while the library waits, and what
// other programs do hangs on the notes. Any call that can be refused is, when its turn comes.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "caixora.h"

struct Machine {
  // Paths and program names are in lower case.
  std::map<std::string, std::string> files;
  std::set<std::string> folders;
  std::set<std::string> locked;     // files that do not open and do not go
  std::set<std::string> held;       // open, but do not go
  std::set<std::string> broken;     // open, but can be neither read nor written
  std::set<std::string> running;    // programs; "administrador" when the host has such rights
  std::set<std::string> stubborn;   // programs that no kill command ends
  std::set<std::string> stillborn;  // programs that end as soon as they are started

  // The GP: takes a request at the first wait that finds one and answers ("responde"), takes it and
  // says nothing ("cala") or does not even take it ("trava").
  std::string gp_way, gp_answer;

  std::vector<std::string> notes;  // in Windows-1252
  void Note(const std::string& note);
  struct Trigger {  // acts right behind the n-th note from now on that holds the text
    int count;
    std::string text;
    std::function<void()> act;
  };
  std::vector<Trigger> triggers;

  std::string log_path;                     // of the last line
  std::multiset<std::string> open;          // files that the library holds open
  std::map<wchar_t*, std::string> results;  // that live
  bool answer_opened = false;
  long waited = 0;  // milliseconds

  // Faults, while the library runs.
  bool armed = false;
  long steps = 0, fail_at = -1;  // calls that can be refused, and the one that is
  long log_lines = -1;           // lines before the log opens no more; -1: no end
  int failing_results = 0;       // result strings that get no memory
  std::function<void()> on_host_stop = [] {};
  bool NextCallFails() { return armed && steps++ == fail_at; }
};
extern Machine machine;

// Above 0 in code of the machine itself, whose allocations are not the library's.
inline int inside_machine = 0;

// A new machine, and a library that was just loaded.
void ResetMachine();

std::string Lower(std::string text);

// Takes a result from the library, as a host does.
std::string TakeResult(CaixoraTexto text);
