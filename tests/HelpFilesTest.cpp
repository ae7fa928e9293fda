// Manual pages and shell completion, as the build has written them.
#include "tests/support/Command.h"

namespace lirvox::test {
namespace {

const std::string kFiles = LIRVOX_HELP_FILES;

bool isInstalled(const std::string& program) {
  return runCommand("command -v " + program).status == 0;
}

TEST(HelpFiles, ManualPagesGiveNoWarnings) {
  if (!isInstalled("groff")) GTEST_SKIP() << "groff is not installed";
  int pages = 0;
  for (const auto& page : std::filesystem::directory_iterator(kFiles + "/man1")) {
    ++pages;
    EXPECT_EQ(runCommand("groff -man -Tutf8 -ww -z " + page.path().string()).output, "")
        << page.path();
  }
  EXPECT_GT(pages, 10);
}

TEST(HelpFiles, BashCompletesCommandsOptionsChoicesAndFiles) {
  // The last word of each line is to be completed.
  const std::pair<std::string, const char*> cases[] = {
      {"lirvox liste", "listen\n"},
      {"lirvox --ver", "--version\n"},
      {"lirvox listen --s", "--seconds\n--source\n--save\n"},
      {"lirvox listen --format ''", "text\njson\n"},
      {"lirvox listen --format = j", "json\n"},
      {"lirvox listen --seconds ''", ""},
      {"lirvox index --shifts ''", "1\n2\n4\n8\n"},
      {"lirvox index -d /etc/host.c", "/etc/host.conf\n"},
      {"lirvox recognize /etc/host.c", "/etc/host.conf\n"},
      {"lirvox publish /etc/host.c", ""},
      {"lirvox publish /et", "/etc\n"},
  };
  for (const auto& [words, completions] : cases) {
    const Finished bash =
        runCommand("bash <<'END'\nsource " + kFiles + "/bash/lirvox; COMP_WORDS=(" + words +
                   "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                   "$(complete -p lirvox | cut -d' ' -f3)\n"
                   "for word in \"${COMPREPLY[@]}\"; do echo \"$word\"; done\nEND");
    EXPECT_EQ(bash.output, completions) << words;
  }
}

TEST(HelpFiles, ZshAndFishReadTheirs) {
  for (const std::string& shell :
       {"zsh -n " + kFiles + "/zsh/_lirvox", "fish -n " + kFiles + "/fish/lirvox.fish"}) {
    if (!isInstalled(shell.substr(0, shell.find(' ')))) continue;
    EXPECT_EQ(runCommand(shell).output, "") << shell;
  }
}

}  // namespace
}  // namespace lirvox::test
