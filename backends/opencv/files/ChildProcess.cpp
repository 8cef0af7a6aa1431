#include "backends/opencv/files/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <thread>

#include "backends/opencv/files/Descriptor.h"

namespace pravik {
namespace {

using Clock = std::chrono::steady_clock;

/// What a shell answers for a program that is not there.
constexpr int notFoundStatus = 127;

void limitTo(int resource, rlim_t most) {
  const rlimit limit{.rlim_cur = most, .rlim_max = most};
  ::setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

/// In the new process. Other threads may have held locks when it was split off, so nothing here may allocate.
[[noreturn]] void become(char* const* words, int input, int output, int nowhere, std::size_t memory, pid_t parent) {
  ::setpgid(0, 0);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(notFoundStatus);
  limitTo(RLIMIT_AS, memory);
  // A core would hold the document.
  limitTo(RLIMIT_CORE, 0);
  ::dup2(input, STDIN_FILENO);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(nowhere, STDERR_FILENO);
  ::close_range(STDERR_FILENO + 1, ~0U, 0);
  // The host may block or ignore signals, which would be handed down.
  ::signal(SIGPIPE, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  ::execvp(words[0], words);
  ::_exit(notFoundStatus);
}

/// A process that leads a group, which is ended with it at the latest when this goes away.
class Child {
 public:
  explicit Child(pid_t process) : process_(process) {}
  ~Child() {
    // Not yet waited for, so that its number is nobody else's.
    ::kill(-process_, SIGKILL);
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// How it ended, if it does before the deadline.
  ProcessEnd waitUntil(Clock::time_point deadline) const {
    constexpr std::chrono::milliseconds pause{2};
    for (; Clock::now() < deadline; std::this_thread::sleep_for(pause)) {
      siginfo_t end{};
      // Fails when the host has the system wait for its children; what was written must do then.
      if (::waitid(P_PID, static_cast<id_t>(process_), &end, WEXITED | WNOHANG | WNOWAIT) != 0) return ProcessEnd::well;
      if (end.si_pid == 0) continue;
      if (end.si_code == CLD_EXITED && end.si_status == 0) return ProcessEnd::well;
      return end.si_code == CLD_EXITED && end.si_status == notFoundStatus ? ProcessEnd::notFound : ProcessEnd::failed;
    }
    return ProcessEnd::tookTooLong;
  }

 private:
  pid_t process_;
};

/// Reads until the other side closes; otherwise says which limit ended it.
ProcessEnd readAll(int from, Clock::time_point deadline, std::size_t most, std::vector<std::uint8_t>& bytes) {
  std::array<std::uint8_t, 65536> part{};
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return ProcessEnd::tookTooLong;
    pollfd ready{.fd = from, .events = POLLIN, .revents = 0};
    if (::poll(&ready, 1, static_cast<int>(std::min<std::int64_t>(left, 60'000))) <= 0) continue;
    const ssize_t length = ::read(from, part.data(), part.size());
    if (length < 0 && errno == EINTR) continue;
    if (length <= 0) return ProcessEnd::well;
    bytes.insert(bytes.end(), part.begin(), part.begin() + length);
    if (bytes.size() > most) return ProcessEnd::wroteTooMuch;
  }
}

}  // namespace

ProcessOutput runProcess(const std::vector<std::string>& command, int input, const ProcessLimits& limits) {
  const auto deadline = Clock::now() + limits.time;
  std::vector<char*> words;
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no process can be started");
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const Descriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));

  const pid_t parent = ::getpid();
  const pid_t process = ::fork();
  if (process < 0) throw std::runtime_error("no process can be started");
  if (process == 0) become(words.data(), input, writing.get(), nowhere.get(), limits.memory, parent);
  // Whichever of the two is first.
  ::setpgid(process, process);
  const Child child(process);
  writing = Descriptor();

  ProcessOutput output;
  output.end = readAll(reading.get(), deadline, limits.output, output.bytes);
  if (output.end == ProcessEnd::well) output.end = child.waitUntil(deadline);
  return output;
}

}  // namespace pravik
