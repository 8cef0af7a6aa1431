#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "blackbox/Tool.h"

namespace pravik::cli {
namespace {

using Clock = std::chrono::steady_clock;

/// The built tool, waiting on standard input for the second line of blocks after it has answered the first.
class WaitingTool {
 public:
  WaitingTool() {
    std::array<int, 2> in{}, out{};
    EXPECT_EQ(::pipe2(in.data(), O_CLOEXEC) + ::pipe2(out.data(), O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::array<std::string, 5> words{PRAVIK_TOOL, "parse", "id-front", "--format", "jsonl"};
    std::array<char*, 6> arguments{};
    for (std::size_t i = 0; i < words.size(); ++i) arguments.at(i) = words.at(i).data();
    EXPECT_EQ(::posix_spawn(&process_, PRAVIK_TOOL, &actions, nullptr, arguments.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(in[0]);
    ::close(out[1]);
    in_ = in[1];
    out_ = out[0];
    char c = 0;
    EXPECT_EQ(::write(in_, "\n", 1), 1);
    while (::read(out_, &c, 1) == 1 && c != '\n') continue;
  }
  ~WaitingTool() {
    ::close(in_);
    ::close(out_);
  }
  WaitingTool(const WaitingTool&) = delete;
  WaitingTool& operator=(const WaitingTool&) = delete;

  void signal(int number) const { ::kill(process_, number); }
  /// The exit status; a signal's number below zero.
  int wait() const {
    int status = 0;
    ::waitpid(process_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t process_ = 0;
  int in_ = -1, out_ = -1;
};

TEST(Signals, TheFirstEndsTheToolInTwoSecondsWhateverItWaitsForAndTheSecondAtOnce) {
  const WaitingTool once, twice;
  const auto begin = Clock::now();
  once.signal(SIGTERM);
  twice.signal(SIGINT);
  // Two signals that arrive together are one.
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  twice.signal(SIGTERM);
  EXPECT_EQ(twice.wait(), interrupted);
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(1));
  EXPECT_EQ(once.wait(), interrupted);
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(2));
}

}  // namespace
}  // namespace pravik::cli
