#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <iostream>
#include <string>
#include <vector>

#include "apps/pravik/CommandLine.h"
#include "apps/pravik/Installation.h"

namespace {

std::atomic<bool> stop{false};
static_assert(std::atomic<bool>::is_always_lock_free);

/// The first Ctrl-C lets the pictures under way finish; the next one ends the program. A read that waits for input is
/// broken off.
void requestStop(int /*signal*/) {
  stop = true;
}

void stopOn(int signal) {
  struct sigaction action{};
  action.sa_handler = requestStop;
  action.sa_flags = SA_RESETHAND;
  sigaction(signal, &action, nullptr);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  std::ios::sync_with_stdio(false);
  stopOn(SIGINT);
  stopOn(SIGTERM);
  // A reader that goes away (pravik ... | head) ends the program without a word.
  signal(SIGPIPE, SIG_DFL);
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
