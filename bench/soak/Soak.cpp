#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <opencv2/videoio.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "apps/pravik/CommandLine.h"
#include "apps/pravik/Installation.h"

// Lets the scanner work for an hour of stream time, or for so many minutes as the argument says, and shows its memory:
// half of the time one screen watches an empty desk, half of it screen after screen reads a card.
namespace {

constexpr double usualMinutes = 60;
/// How often the memory is shown, in parts of a half.
constexpr int reports = 6;
constexpr double frameRate = 30;
const cv::Size frameSize(1280, 720);
constexpr int deskFrames = 90;
constexpr const char* cardClip = "id-front-easy-0002.avi";

/// What the process holds in memory, in MB (proc(5), /proc/self/statm).
double residentMegabytes() {
  std::ifstream file("/proc/self/statm");
  double total = 0;
  double resident = 0;
  file >> total >> resident;
  return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

/// A video of a desk with nothing on it.
void writeDesk(const std::string& path) {
  cv::VideoWriter writer(path, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), frameRate, frameSize);
  if (!writer.isOpened()) throw std::runtime_error("no video can be written to " + path);
  for (int i = 0; i < deskFrames; ++i) writer.write(cv::Mat(frameSize, CV_8UC3, cv::Scalar(90, 110, 130)));
}

/// Runs `pravik scan` in this process and gives the second of stream time at which it ended.
double scan(const pravik::Platform& platform, std::vector<std::string> words) {
  std::istringstream in;
  std::ostringstream out;
  words.insert(words.begin(), "scan");
  words.insert(words.end(), {"--mode", "idCardFront", "--format", "jsonl"});
  pravik::cli::run(words, {.in = in,
                           .out = out,
                           .err = std::cerr,
                           .makePlatform = [&](const pravik::DefaultPlatformOptions&) { return platform; },
                           .missingModels = pravik::cli::missingModels,
                           .brokenModels = pravik::cli::brokenModels});
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

void watchDesk(const pravik::Platform& platform, const std::string& desk, double seconds) {
  const auto begin = std::chrono::steady_clock::now();
  double done = 0;
  for (int i = 0; i < reports; ++i) {
    done += scan(platform, {desk, "--loop", "--timeout", std::to_string(seconds / reports)});
    report("one screen, no card", done, begin);
  }
}

void readCards(const pravik::Platform& platform, const std::string& card, double seconds) {
  const auto begin = std::chrono::steady_clock::now();
  double done = 0;
  for (int i = 1; i <= reports; ++i) {
    while (done < seconds * i / reports) done += scan(platform, {card});
    report("screen after screen, a card each", done, begin);
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const double minutes = argumentCount > 1 ? std::stod(arguments[1]) : usualMinutes;
  const std::filesystem::path desk =
      std::filesystem::temp_directory_path() / ("pravik-soak-" + std::to_string(::getpid()) + ".avi");
  writeDesk(desk.string());

  const pravik::Platform platform = pravik::makeDefaultPlatform();
  watchDesk(platform, desk.string(), minutes * 30);
  readCards(platform, (std::filesystem::path(PRAVIK_SAMPLES_DIRECTORY) / cardClip).string(), minutes * 30);
  std::filesystem::remove(desk);
}
