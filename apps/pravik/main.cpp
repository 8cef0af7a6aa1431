#include <unistd.h>

#include <atomic>
#include <csignal>
#include <iostream>
#include <opencv2/core/utility.hpp>
#include <string>
#include <vector>

#include "apps/pravik/CommandLine.h"
#include "apps/pravik/Installation.h"
#include "apps/pravik/ProgramMemory.h"

namespace {

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): a signal handler reaches nothing else.
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

/// OpenCV's own threads work on the pixels, as many as there are cores unless it is told otherwise.
pravik::Platform makePlatform(const pravik::DefaultPlatformOptions& options) {
  if (options.threads > 0) cv::setNumThreads(options.threads);
  return pravik::makeDefaultPlatform(options);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  pravik::cli::returnLargeBlocks();
  std::ios::sync_with_stdio(false);
  stopOn(SIGINT);
  stopOn(SIGTERM);
  // A reader that goes away (pravik ... | head) ends the program without a word.
  std::signal(SIGPIPE, SIG_DFL);
  const pravik::cli::Host host{.in = std::cin,
                               .out = std::cout,
                               .err = std::cerr,
                               .makePlatform = makePlatform,
                               .missingModels = pravik::cli::missingModels,
                               .brokenModels = pravik::cli::brokenModels,
                               .showsProgress = isatty(STDERR_FILENO) == 1,
                               .stop = &stop};
  return pravik::cli::run(std::vector<std::string>(arguments + 1, arguments + argumentCount), host);
}
