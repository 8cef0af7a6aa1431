#pragma once

#include <atomic>
#include <sstream>

#include "Platform/AsioDispatch.h"
#include "apps/pravik/CommandLine.h"
#include "backends/json/Answer.h"
#include "support/Fakes.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

namespace pravik::cli {

/// "Decodes" a file by its name: "bad..." cannot be read, "pages3..." has three pages of which the second is damaged,
/// every other one is a grey picture.
class FakeCodec : public ImageCodec {
 public:
  PictureFile open(std::vector<std::uint8_t> file) const override {
    if (file.empty()) throw std::runtime_error("the file is empty");
    return {1, [](int) { return grey(); }};
  }
  PictureFile open(const std::filesystem::path& path) const override {
    const std::string name = path.filename().string();
    if (name.starts_with("bad")) throw std::runtime_error("not a picture");
    if (!name.starts_with("pages")) return open({1});
    return {std::stoi(name.substr(5)), [](int page) {
              if (page == 1) throw std::runtime_error("the picture is damaged");
              return grey();
            }};
  }
  std::vector<std::uint8_t> encode(const Bitmap& /*bitmap*/, ImageFileFormat /*format*/) const override {
    return {'j', 'p', 'g'};
  }

 private:
  static Image grey() { return {.bitmap = test::plainPicture(40, 30, 200, 200, 200)}; }
};

/// Runs the tool in this process on fakes.
struct CommandRun : test::FakeParts {
  std::string input;
  std::vector<std::string> missing, broken;
  bool showsProgress = false;
  bool outputFails = false;
  std::stop_source stop;
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
                                         Platform platform = makePlatform(std::make_shared<AsioDispatch>(2));
                                         platform.imageCodec = std::make_shared<FakeCodec>();
                                         return platform;
                                       },
                                   .missingModels = [this](const std::filesystem::path&) { return missing; },
                                   .brokenModels = [this](const std::filesystem::path&) { return broken; },
                                   .showsProgress = showsProgress,
                                   .stop = stop.get_token()});
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
};

using test::portraitSide;
using test::TemporaryFolder;

}  // namespace pravik::cli
