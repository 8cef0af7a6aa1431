#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "Pravik.h"
#include "apps/pravik/Input.h"
#include "apps/pravik/Settings.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// What may be asked of some of the commands.
struct PictureOptions {
  /// The kind of document that decides how a picture is prepared for raw text.
  SceneType scene = SceneType::idCard;
  /// Whether the answer for a bank card tells the stage that gave its number.
  bool tellsStage = false;
  /// Whether the answer tells how each field was read.
  bool tellsReport = false;
  /// Whether all pictures show the same bank card and give one answer together.
  bool sameCard = false;
  /// Where the pictures of every stage of a reading go; empty for none.
  std::filesystem::path debugImages;
  ReadingLimits limits;
};

/// A command that reads pictures with the SDK.
struct PictureCommand {
  std::string_view kind;
  std::string_view description;
  /// What it reads; null for raw text, and for whatever cards there are.
  const DocumentKind* document;
  bool readsEveryCard = false;

  bool readsCards() const { return readsEveryCard || (document != nullptr && document->isCard()); }
  /// Whether it needs the text models.
  bool readsText() const { return document == nullptr || document->isCard(); }
};

std::span<const PictureCommand> pictureCommands();

/// Reads one picture.
Answer answerPicture(const PictureCommand& command, const PravikSDK& sdk, const Image& image,
                     const PictureOptions& options);

/// Reads every picture and writes the answers in the order of the pictures, each as soon as its turn comes.
ExitStatus answerPictures(const PictureCommand& command, const PictureNames& names, const PictureOptions& options,
                          const Settings& settings, const Host& host);

}  // namespace pravik::cli
