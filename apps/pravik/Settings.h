#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <stop_token>
#include <string>
#include <vector>

#include "Platform/Platform.h"
#include "Utils/OCRLogger.h"
#include "backends/DefaultPlatform.h"
#include "backends/json/Wording.h"

namespace pravik::cli {

/// What the tool ends with.
enum ExitStatus : std::uint8_t {
  allRecognized = 0,
  someNotRecognized = 1,
  usageError = 2,
  incompleteInstallation = 3,
  interrupted = 130,  ///< as a shell reports a program that Ctrl-C ended
};

/// How answers are written.
enum class Format : std::uint8_t { table, json, jsonl, csv };

/// The options that all commands share.
struct Settings {
  Format format = Format::table;
  /// Of the table.
  Language language = environmentLanguage();
  OCRLogger::Level logLevel = OCRLogger::Level::none;
  /// Whether a doubtful field, or a check that failed, counts as not recognised.
  bool isStrict = false;
  /// Where annotated pictures go; empty for none.
  std::filesystem::path annotate;
  /// Pictures that are read at the same time, at least 1.
  int jobs = 1;
  /// Threads that each of them may use; 0 shares the cores among them.
  int threads = 0;
  /// Where the text models are; empty for the usual place.
  std::filesystem::path models;
};

/// Makes the platform that a command works with.
using PlatformFactory = std::function<Platform(const DefaultPlatformOptions&)>;

/// What a command asks of the world around it.
struct Host {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  PlatformFactory makePlatform;
  /// What is wrong with the text models in a folder (empty for the usual place), one text for each file: those that
  /// are not there, at no cost; those that cannot be used, by opening them.
  std::function<std::vector<std::string>(const std::filesystem::path&)> missingModels;
  std::function<std::vector<std::string>(const std::filesystem::path&)> brokenModels;
  /// Whether `err` is a terminal that a person looks at.
  bool showsProgress = false;
  /// Asks to stop when the person wants to.
  std::stop_token stop = {};

  bool stopped() const { return stop.stop_requested(); }
};

}  // namespace pravik::cli
