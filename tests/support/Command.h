// Programs, run as their users run them.
#pragma once

#include <cstdio>

#include <sys/wait.h>

#include "Test.h"

namespace lirvox::test {

/// What a command left behind.
struct Finished {
  int status = -1;     // its exit status
  std::string output;  // of both streams
};

using WithLine = std::function<void(const std::string& line)>;

/// Runs a command line of the shell to its end; `withLine`, if any, gets each line as it comes.
inline Finished runCommand(const std::string& command, const WithLine& withLine = {}) {
  Finished run;
  std::FILE* const pipe = ::popen(("{ " + command + "\n} 2>&1").c_str(), "r");
  std::array<char, 4096> line{};
  while (std::fgets(line.data(), line.size(), pipe)) {
    run.output += line.data();
    if (withLine) withLine(line.data());
  }
  run.status = WEXITSTATUS(::pclose(pipe));
  return run;
}

}  // namespace lirvox::test
