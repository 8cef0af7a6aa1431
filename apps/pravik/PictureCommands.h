#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Pravik.h"
#include "apps/pravik/Answer.h"
#include "apps/pravik/Settings.h"

namespace pravik::cli {

/// A command that reads pictures with the SDK.
struct PictureCommand {
  std::string_view kind;
  std::string_view description;
  std::string_view example;
  /// Whether it needs the text models.
  bool readsText;
  /// Whether --scene applies.
  bool hasScene;
  Answer (*answer)(const PravikSDK& sdk, const Image& image, PravikSDK::SceneType scene);
};

std::span<const PictureCommand> pictureCommands();

/// Reads every picture and writes the answers in the order of the files, each as soon as its turn comes.
ExitStatus answerPictures(const PictureCommand& command, const std::vector<std::string>& files,
                          PravikSDK::SceneType scene, const Settings& settings, const Host& host);

}  // namespace pravik::cli
