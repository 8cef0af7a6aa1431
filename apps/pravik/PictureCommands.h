#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Pravik.h"
#include "apps/pravik/Settings.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// What may be asked of some of the commands.
struct PictureOptions {
  /// The kind of document that decides how a picture is prepared for raw text.
  PravikSDK::SceneType scene = PravikSDK::SceneType::idCard;
  /// Whether the answer for a bank card tells the stage that gave its number.
  bool tellsStage = false;
  /// Whether all pictures show the same bank card and give one answer together.
  bool sameCard = false;
  /// Where the pictures of every stage of reading a bank card go; empty for none.
  std::filesystem::path debugImages;
};

/// The options that a command has beside the shared ones.
enum class OwnOptions : std::uint8_t { none, scene, bankCard };

/// A command that reads pictures with the SDK.
struct PictureCommand {
  std::string_view kind;
  std::string_view description;
  std::string_view example;
  /// Whether it needs the text models.
  bool readsText;
  OwnOptions options;
  Answer (*answer)(const PravikSDK& sdk, const Image& image, const PictureOptions& options);
};

std::span<const PictureCommand> pictureCommands();

/// Reads every picture and writes the answers in the order of the files, each as soon as its turn comes.
ExitStatus answerPictures(const PictureCommand& command, const std::vector<std::string>& files,
                          const PictureOptions& options, const Settings& settings, const Host& host);

}  // namespace pravik::cli
