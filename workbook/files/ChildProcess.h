// Programs that are run and waited for, within limits.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/Host.h"

namespace tellurix {

struct ChildLimits {
  int processorSeconds = 0;       // 0: no limit
  std::uint64_t memoryBytes = 0;  // of address space; 0: no limit
  double seconds = 60;            // by the clock
};

enum class ChildEnd {
  Good,         // it ended with 0
  Failed,       // it ended with another number
  Crashed,      // a signal ended it
  TookTooLong,  // we ended it
  Stopped,      // we ended it since `poll` said so
  NotStarted
};

// Runs a program (the first of the arguments; looked for in PATH when it has no "/"), in a process group of its own,
// with nothing to read. `output` is what it wrote, the beginning of it. `poll` is called now and then with `what`.
ChildEnd RunChild(const std::vector<std::string>& arguments, const ChildLimits& limits, const Poll& poll,
                  const std::string& what, std::string& output);

// The path of a program of PATH; empty when there is none.
std::filesystem::path FindProgram(const std::string& name);

// A folder of its own for temporary files, which goes with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  bool IsMade() const { return !path_.empty(); }
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace tellurix
