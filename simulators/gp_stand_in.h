// The process that the library takes for the GP during a certification.
//
// The library knows a running GP by its image name. The certification is a program of the name of
// the simulated GP itself, so that GP would seem to run all the time. For as long as it lasts, the
// simulated GPs that are installed are held open, the library passes over them, and a copy of this
// program under the next name on its list is what it finds, looks for and starts. The copy only
// lives: requests are served by the certification. Left behind, it serves nothing.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "windows/handle.h"

namespace caixora::gp {

class StandIn {
 public:
  // Puts the copy in place. Throws Obstacle.
  StandIn();
  ~StandIn();
  StandIn(const StandIn&) = delete;
  StandIn& operator=(const StandIn&) = delete;

  struct Obstacle : std::runtime_error {
    using std::runtime_error::runtime_error;
  };

  void Open() const;
  void Close() const;  // returns once it is gone
  bool Runs() const;
  const std::string& folder() const { return folder_; }  // with a trailing backslash

 private:
  Handle run_;
  Handle close_;
  std::vector<Handle> held_;
  std::string folder_;
  std::string path_;
};

// True when this process is the copy, or the library started it during a certification: it has then
// stood in until it was closed.
bool StoodIn(bool started_by_library);

}  // namespace caixora::gp
