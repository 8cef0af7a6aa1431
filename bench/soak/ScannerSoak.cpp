#include "bench/soak/ScannerSoak.h"

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <opencv2/videoio.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "apps/pravik/CommandLine.h"
#include "apps/pravik/Installation.h"
#include "bench/soak/Memory.h"

namespace pravik::bench {
namespace {

/// How often the memory is shown, in parts of a half.
constexpr int reports = 6;
constexpr double frameRate = 30;
const cv::Size frameSize(1280, 720);
constexpr int deskFrames = 90;
constexpr const char* cardClip = "id-front-easy-0002.avi";

/// A video of a desk with nothing on it.
void writeDesk(const std::string& path) {
  cv::VideoWriter writer(path, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), frameRate, frameSize);
  if (!writer.isOpened()) throw std::runtime_error("no video can be written to " + path);
  for (int i = 0; i < deskFrames; ++i) writer.write(cv::Mat(frameSize, CV_8UC3, cv::Scalar(90, 110, 130)));
}

/// Runs `pravik scan` in this process and gives the second of stream time at which it ended.
double scan(const Platform& platform, std::vector<std::string> words) {
  std::istringstream in;
  std::ostringstream out;
  words.insert(words.begin(), "scan");
  words.insert(words.end(), {"--mode", "idCardFront", "--format", "jsonl"});
  cli::run(words, {.in = in,
                   .out = out,
                   .err = std::cerr,
                   .makePlatform = [&](const DefaultPlatformOptions&) { return platform; },
                   .missingModels = cli::missingModels,
                   .brokenModels = cli::brokenModels});
  std::string last;
  std::istringstream lines(out.str());
  for (std::string line; std::getline(lines, line);) last = line;
  if (last.empty()) throw std::runtime_error("the scan said nothing");
  return nlohmann::json::parse(last)["time"];
}

void report(const char* what, double streamSeconds, std::chrono::steady_clock::time_point begin) {
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
  std::cout << what << ": " << streamSeconds / 60 << " min of stream time in " << passed.count() << " s, "
            << residentMegabytes() << " MB\n"
            << std::flush;
}

void watchDesk(const Platform& platform, const std::string& desk, double seconds) {
  const auto begin = std::chrono::steady_clock::now();
  double done = 0;
  for (int i = 0; i < reports; ++i) {
    done += scan(platform, {desk, "--loop", "--timeout", std::to_string(seconds / reports)});
    report("one screen, no card", done, begin);
  }
}

void readCards(const Platform& platform, const std::string& card, double seconds) {
  const auto begin = std::chrono::steady_clock::now();
  double done = 0;
  for (int i = 1; i <= reports; ++i) {
    while (done < seconds * i / reports) done += scan(platform, {card});
    report("screen after screen, a card each", done, begin);
  }
}

}  // namespace

void soakScanner(double minutes) {
  const std::filesystem::path desk =
      std::filesystem::temp_directory_path() / ("pravik-soak-" + std::to_string(::getpid()) + ".avi");
  writeDesk(desk.string());

  const Platform platform = makeDefaultPlatform();
  watchDesk(platform, desk.string(), minutes * 30);
  readCards(platform, (std::filesystem::path(PRAVIK_SAMPLES_DIRECTORY) / cardClip).string(), minutes * 30);
  std::filesystem::remove(desk);
}

}  // namespace pravik::bench
