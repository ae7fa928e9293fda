// Programs, run as their users run them.
#pragma once

#include <array>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace lirvox::test {

/// What a command left behind.
struct Finished {
  int status = -1;     // its exit status
  std::string output;  // of both streams
};

/// Runs a command line of the shell to its end.
inline Finished runCommand(const std::string& command) {
  Finished run;
  std::FILE* const pipe = ::popen(("{ " + command + "\n} 2>&1").c_str(), "r");
  std::array<char, 4096> part{};
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe)) {
    run.output.append(part.data(), count);
  }
  run.status = WEXITSTATUS(::pclose(pipe));
  return run;
}

/// How a command must end, and what it must say.
struct Expectation {
  const char* command;
  int status;
  const char* says;
};

inline void expectEach(const std::vector<Expectation>& expectations,
                       const std::function<Finished(const std::string&)>& run) {
  for (const auto& [command, status, says] : expectations) {
    const Finished finished = run(command);
    EXPECT_EQ(finished.status, status) << command << '\n' << finished.output;
    EXPECT_NE(finished.output.find(says), std::string::npos) << command << '\n' << finished.output;
  }
}

}  // namespace lirvox::test
