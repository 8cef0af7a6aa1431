#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <opencv2/core/utility.hpp>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "apps/pravik/CommandLine.h"
#include "apps/pravik/Installation.h"
#include "apps/pravik/ProgramMemory.h"

namespace {

/// How long the pictures under way may take to finish once the person wants to stop.
constexpr timespec patience{.tv_sec = 1, .tv_nsec = 500'000'000};

/// The first Ctrl-C or SIGTERM asks the work under way to end, and after a while ends the program, for a library may
/// be deaf to it; the next one ends it at once. To be made before any other thread, which then leaves the signals to
/// this one.
class StopSignals {
 public:
  StopSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    std::thread([signals = signals_, source = source_]() mutable {
      int signal = 0;
      sigwait(&signals, &signal);
      source.request_stop();
      sigtimedwait(&signals, nullptr, &patience);
      std::_Exit(pravik::cli::interrupted);
    }).detach();
  }

  std::stop_token token() const { return source_.get_token(); }

 private:
  sigset_t signals_{};
  std::stop_source source_;
};

/// OpenCV's own threads work on the pixels, as many as there are cores unless it is told otherwise.
pravik::Platform makePlatform(const pravik::DefaultPlatformOptions& options) {
  if (options.threads > 0) cv::setNumThreads(options.threads);
  return pravik::makeDefaultPlatform(options);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  pravik::cli::returnLargeBlocks();
  std::ios::sync_with_stdio(false);
  const StopSignals signals;
  // A reader that goes away (pravik ... | head) ends the program without a word.
  std::signal(SIGPIPE, SIG_DFL);
  const pravik::cli::Host host{.in = std::cin,
                               .out = std::cout,
                               .err = std::cerr,
                               .makePlatform = makePlatform,
                               .missingModels = pravik::cli::missingModels,
                               .brokenModels = pravik::cli::brokenModels,
                               .showsProgress = isatty(STDERR_FILENO) == 1,
                               .stop = signals.token()};
  return pravik::cli::run(std::vector<std::string>(arguments + 1, arguments + argumentCount), host);
}
