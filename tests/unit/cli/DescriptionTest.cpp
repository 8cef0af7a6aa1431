#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "unit/cli/CommandRun.h"

namespace pravik::cli {
namespace {

std::string described(const std::string& form) {
  CommandRun command;
  EXPECT_EQ(command({"describe", form}), 0);
  return command.out;
}

TEST(Description, TheShellOffersWhatCanStandThere) {
  const TemporaryFolder folder;
  const std::string script = folder.write("pravik.bash", described("bash"));
  // The words before the cursor, the last one unfinished, and what it may become.
  const std::pair<std::string, std::string> cases[] = {
      {"id", "id-front id-back"},
      {"parse ba", "bank-card"},
      {"--format json sc", "scene scan"},
      {"id-front --rec", "--recursive"},
      {"id-front --sa", ""},
      {"bank-card --sa", "--same-card"},
      {"parse id-front --li", "--literal"},
      {"scan a.avi --mode id", "id-front id-back"},
      {"code --format js", "json jsonl"},
      {"code a", ""},
  };
  for (const auto& [words, expected] : cases) {
    const std::string out = (folder.path() / "out").string();
    const std::string run = "bash -c 'source " + script + "; COMP_WORDS=(pravik " + words +
                            "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _pravik; echo \"${COMPREPLY[*]}\"' > " + out;
    EXPECT_EQ(std::system(run.c_str()), 0) << words;
    std::ifstream file(out);
    std::string line;
    std::getline(file, line);
    EXPECT_EQ(line, expected) << words;
  }
}

TEST(Description, OtherShellsAndTheManualKnowTheSame) {
  EXPECT_NE(described("zsh").find("--mode) compadd -- bank-card id-front id-back code; return ;;"), std::string::npos);
  EXPECT_NE(described("fish").find("__fish_seen_subcommand_from scan' -l mode -x -a 'bank-card id-front id-back code'"),
            std::string::npos);
  const std::string page = described("man");
  for (const char* part : {".SS \"pravik parse id\\-front\"", "\\fB\\-\\-same\\-card\\fR", ".SH EXAMPLES"})
    EXPECT_NE(page.find(part), std::string::npos) << part;
  EXPECT_EQ(page.find("describe"), std::string::npos) << "nobody needs it who has the page";
}

}  // namespace
}  // namespace pravik::cli
