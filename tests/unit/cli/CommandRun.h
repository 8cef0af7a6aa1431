#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/AsioDispatch.h"
#include "apps/pravik/CommandLine.h"
#include "backends/json/Answer.h"
#include "support/Fakes.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

namespace pravik::cli {

/// "Decodes" a file by its name: "bad..." cannot be read, every other one is a grey picture.
class FakeCodec : public ImageCodec {
 public:
  Image decode(std::span<const std::uint8_t> file) const override {
    if (file.empty()) throw std::runtime_error("the file is empty");
    return {.bitmap = test::plainPicture(40, 30, 200, 200, 200)};
  }
  Image load(const std::filesystem::path& path) const override {
    if (path.filename().string().starts_with("bad")) throw std::runtime_error("not a picture");
    return {.bitmap = test::plainPicture(40, 30, 200, 200, 200)};
  }
  std::vector<std::uint8_t> encode(const Bitmap& /*bitmap*/, ImageFileFormat /*format*/) const override {
    return {'j', 'p', 'g'};
  }
};

/// Finds the same codes on every picture; may be asked by several threads at once.
class FixedCodes : public BarcodeDetector {
 public:
  std::vector<BarcodeObservation> codes;

  std::vector<BarcodeObservation> detect(const Bitmap& /*bitmap*/,
                                         std::span<const BarcodeSymbology> /*symbologies*/) const override {
    return codes;
  }
};

/// Runs the tool in this process on fakes.
struct CommandRun {
  std::shared_ptr<test::FakeTextEngine> engine = std::make_shared<test::FakeTextEngine>();
  std::shared_ptr<FixedCodes> barcodes = std::make_shared<FixedCodes>();
  std::shared_ptr<test::FakeRectangleDetector> rectangles = std::make_shared<test::FakeRectangleDetector>();
  std::string input;
  std::vector<std::string> missing, broken;
  bool showsProgress = false;
  bool outputFails = false;
  std::atomic<bool> stop{false};
  /// What the platform was made with.
  DefaultPlatformOptions options;
  std::string out, err;

  int operator()(const std::vector<std::string>& words) {
    std::istringstream in(input);
    std::ostringstream outStream, errStream;
    if (outputFails) outStream.setstate(std::ios::badbit);
    const int status = run(words, {.in = in,
                                   .out = outStream,
                                   .err = errStream,
                                   .makePlatform =
                                       [this](const DefaultPlatformOptions& wanted) {
                                         options = wanted;
                                         return platform();
                                       },
                                   .missingModels = [this](const std::filesystem::path&) { return missing; },
                                   .brokenModels = [this](const std::filesystem::path&) { return broken; },
                                   .showsProgress = showsProgress,
                                   .stop = &stop});
    out = outStream.str();
    err = errStream.str();
    return status;
  }

  /// The answers of a run with --format jsonl.
  std::vector<Json> lines() const {
    std::vector<Json> answers;
    std::istringstream all(out);
    for (std::string line; std::getline(all, line);) answers.push_back(Json::parse(line));
    return answers;
  }

 private:
  Platform platform() const {
    Platform made;
    made.imageCodec = std::make_shared<FakeCodec>();
    made.imageRenderer = std::make_shared<test::FakeRenderer>();
    made.rectangleDetector = rectangles;
    made.textEngine = engine;
    made.barcodeDetector = barcodes;
    made.dispatch = std::make_shared<AsioDispatch>(2);
    return made;
  }
};

inline std::vector<RecognizedText> portraitSide() {
  return {test::textBlock("姓名 张三", 0.2, 0.15), test::textBlock("性别 男 民族 汉", 0.25, 0.28),
          test::textBlock("住址 北京市东城区景山前街4号", 0.3, 0.55),
          test::textBlock("公民身份号码 11010119900307123X", 0.5, 0.88)};
}

using test::TemporaryFolder;

}  // namespace pravik::cli
