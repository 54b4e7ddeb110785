// The `expect` steps of a script: what was delivered against what is known from elsewhere.
#pragma once

#include <string>
#include <vector>

#include "host/Script.h"
#include "session/Session.h"

namespace tellurix {

// One figure or text that was compared.
struct Comparison {
  int line = 0;
  std::string what;      // "m_single.t"
  std::string expected;  // as written in the script
  std::string found;
  bool agrees = false;
};

// Checks one `expect` step against what has been delivered so far and notes what was compared; false with the problem
// in words when it does not hold.
bool CheckExpectation(Session& session, const ScriptStep& step, std::vector<Comparison>& comparisons,
                      std::string& problem);

// Fields whose value went into a mark of another name, and marks that no value reached: the template and the command
// disagree on the order. Empty when all is well.
std::string MisplacedFields(const RunResult& run);

}  // namespace tellurix
