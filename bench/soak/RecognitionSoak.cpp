#include "bench/soak/RecognitionSoak.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Utils/Format.h"
#include "apps/pravik/PictureCommands.h"
#include "backends/DefaultPlatform.h"
#include "bench/soak/Memory.h"

namespace pravik::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int tenths = 10;
/// By how many MB the highest mark of the second half may exceed that of the first: as much as pictures of other sizes
/// that meet in memory by chance.
constexpr double allowedGrowth = 24;

/// A picture with what reads it, and what that answered when nothing else ran.
struct Reading {
  const cli::PictureCommand* command;
  std::filesystem::path picture;
  Answer expected;
};

const cli::PictureCommand& commandFor(const std::string& kind) {
  return *std::ranges::find(cli::pictureCommands(), kind, &cli::PictureCommand::kind);
}

/// Every picture with the command of its kind, and one as plain text.
std::vector<Reading> sampleReadings() {
  const std::filesystem::path samples = PRAVIK_SAMPLES_DIRECTORY;
  std::vector<Reading> readings;
  std::ifstream truths(samples / "truth.jsonl");
  for (std::string line; std::getline(truths, line);) {
    const auto truth = nlohmann::json::parse(line);
    readings.push_back({&commandFor(truth["kind"]), samples / truth["file"].get<std::string>(), {}});
  }
  readings.push_back({&commandFor("text"), readings.front().picture, {}});
  return readings;
}

/// The soak that is under way. Callers share it.
class RecognitionSoak {
 public:
  RecognitionSoak(const RecognitionLoad& load, Platform platform)
      : load_(load), platform_(std::move(platform)), sdk_(platform_), readings_(sampleReadings()) {}

  bool run() {
    for (Reading& reading : readings_) reading.expected = answer(reading);
    std::cout << formatted("{} pictures read one by one, {:.0f} MB; {} recognitions follow, {} at a time\n",
                           readings_.size(), residentMegabytes(), load_.count, load_.callers)
              << std::flush;
    begin_ = Clock::now();
    {
      std::vector<std::jthread> callers;
      callers.reserve(static_cast<std::size_t>(load_.callers));
      for (int i = 0; i < load_.callers; ++i) callers.emplace_back([this] { call(); });
    }
    return showVerdict();
  }

 private:
  Answer answer(const Reading& reading) const {
    return cli::answerPicture(*reading.command, sdk_, platform_.imageCodec->load(reading.picture), {});
  }

  void call() {
    for (int item = next_++; item < load_.count; item = next_++) {
      const Reading& reading = readings_[static_cast<std::size_t>(item) % readings_.size()];
      const auto start = Clock::now();
      const Answer answered = answer(reading);
      note(reading, answered, Clock::now() - start);
    }
  }

  void note(const Reading& reading, const Answer& answered, std::chrono::duration<double, std::milli> latency) {
    const std::lock_guard lock(mutex_);
    if (answered != reading.expected) {
      ++differences_;
      std::cout << formatted("{} was read as {} and now as {}\n", reading.picture.filename().string(),
                             jsonText(reading.expected), jsonText(answered));
    }
    latencies_.push_back(latency.count());
    const int tenth = done_ * tenths / load_.count;
    auto& mark = highestMegabytes_.at(static_cast<std::size_t>(tenth));
    mark = std::max(mark, residentMegabytes());
    if (++done_ * tenths / load_.count > tenth) showTenth(mark);
  }

  double share(double part) {
    const auto place = latencies_.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(latencies_.size()));
    std::ranges::nth_element(latencies_, place);
    return *place;
  }

  void showTenth(double mark) {
    const std::chrono::duration<double> passed = Clock::now() - begin_;
    std::cout << formatted(
                     "{:6} done in {:6.0f} s, {:5.2f} a second; latency median {:.0f} ms, 90 % {:.0f} ms; "
                     "memory {:.0f} MB, at most {:.0f} MB\n",
                     done_, passed.count(), done_ / passed.count(), share(0.5), share(0.9), residentMegabytes(), mark)
              << std::flush;
    latencies_.clear();
  }

  bool showVerdict() const {
    const auto half = highestMegabytes_.begin() + tenths / 2;
    const double growth =
        *std::max_element(half, highestMegabytes_.end()) - *std::max_element(highestMegabytes_.begin(), half);
    std::cout << formatted("{} of {} differed; memory grew by {:.1f} MB in the second half, {} MB are allowed\n",
                           differences_, done_, growth, allowedGrowth);
    return differences_ == 0 && growth <= allowedGrowth;
  }

  RecognitionLoad load_;
  Platform platform_;
  PravikSDK sdk_;
  std::vector<Reading> readings_;
  Clock::time_point begin_;
  std::atomic<int> next_{0};

  std::mutex mutex_;
  /// The rest is guarded by the mutex. Latencies are those of this tenth, in milliseconds.
  std::vector<double> latencies_;
  std::array<double, tenths> highestMegabytes_{};
  int done_ = 0;
  int differences_ = 0;
};

}  // namespace

bool soakRecognitions(const RecognitionLoad& load) {
  return RecognitionSoak(load, makeDefaultPlatform({.modelDirectory = {}, .threads = load.engineThreads})).run();
}

}  // namespace pravik::bench
