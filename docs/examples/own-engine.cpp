// Reads an identity card with a text engine of one's own; needs pravik::pravik alone. Usage: own-engine WORDS
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Pravik.h"

namespace {

/// A word as the engine gives it; the box in pixels from the top left of the picture.
struct Word {
  double left = 0, top = 0, width = 0, height = 0;
  float confidence = 0;
  std::string text;
};

/// Stands for the engine that a program has already: it finds the words of the picture in a file, one a line.
std::vector<Word> wordsOn(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::vector<Word> words;
  for (std::string line; std::getline(file, line);) {
    std::istringstream columns(line);
    Word word;
    columns >> word.left >> word.top >> word.width >> word.height >> word.confidence >> word.text;
    if (columns) words.push_back(word);
  }
  return words;
}

class OwnEngine : public pravik::TextEngine {
 public:
  explicit OwnEngine(std::string path) : path_(std::move(path)) {}

  std::vector<pravik::RecognizedText> recognize(const pravik::Bitmap& bitmap,
                                                const pravik::TextRequest& /*request*/) const override {
    std::vector<pravik::RecognizedText> blocks;
    for (const Word& word : wordsOn(path_)) {
      // Boxes are shares of the picture with the origin at its lower left.
      const pravik::Rect box{word.left / bitmap.width(), 1 - (word.top + word.height) / bitmap.height(),
                             word.width / bitmap.width(), word.height / bitmap.height()};
      blocks.push_back({pravik::TextCandidate{word.text, word.confidence}, box});
    }
    return blocks;
  }

 private:
  std::string path_;
};

/// For an engine that prepares its pictures itself: a filter that a renderer lacks is skipped, and this one lacks all.
class NoFilters : public pravik::ImageRenderer {
 public:
  std::optional<pravik::Bitmap> render(const pravik::Bitmap& bitmap,
                                       std::span<const pravik::ImageFilter> /*filters*/) const override {
    return bitmap;
  }
  std::optional<pravik::Bitmap> greyThumbnail(const pravik::Bitmap& /*bitmap*/, int /*width*/,
                                              int /*height*/) const override {
    return std::nullopt;
  }
};

}  // namespace

int main(int argumentCount, char** arguments) try {
  pravik::Platform platform;
  platform.textEngine = std::make_shared<OwnEngine>(arguments[argumentCount - 1]);
  platform.imageRenderer = std::make_shared<NoFilters>();
  const pravik::PravikSDK sdk(platform);

  // The program's own picture, here a blank one of the size that the words were measured on.
  constexpr int width = 1011, height = 638;
  const auto format = pravik::PixelFormat::grey8;
  const pravik::Bitmap picture(format, width, height, width, pravik::allocatePixels(format, width, height));

  const auto card = pravik::syncWait(sdk.recognizeIDCardFront({.bitmap = picture}));
  if (!card) throw pravik::OCRError(card.error());
  std::cout << card->name << ' ' << card->birthDate << ' ' << card->idNumber << '\n' << card->address << '\n';
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
