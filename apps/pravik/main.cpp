#include <unistd.h>

#include <atomic>
#include <csignal>
#include <iostream>
#include <string>
#include <vector>

#include "apps/pravik/CommandLine.h"
#include "apps/pravik/Installation.h"

namespace {

std::atomic<bool> stop{false};
static_assert(std::atomic<bool>::is_always_lock_free);

/// The first Ctrl-C lets the pictures under way finish; the next one ends the program.
void requestStop(int signal) {
  stop = true;
  std::signal(signal, SIG_DFL);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  std::ios::sync_with_stdio(false);
  std::signal(SIGINT, requestStop);
  std::signal(SIGTERM, requestStop);
  // A reader that goes away (pravik ... | head) ends the program without a word.
  std::signal(SIGPIPE, SIG_DFL);
  const pravik::cli::Host host{.in = std::cin,
                               .out = std::cout,
                               .err = std::cerr,
                               .makePlatform = pravik::makeDefaultPlatform,
                               .missingModels = pravik::cli::missingModels,
                               .brokenModels = pravik::cli::brokenModels,
                               .showsProgress = isatty(STDERR_FILENO) == 1,
                               .stop = &stop};
  return pravik::cli::run(std::vector<std::string>(arguments + 1, arguments + argumentCount), host);
}
