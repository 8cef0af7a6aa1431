#pragma once

#include <deque>
#include <mutex>
#include <stdexcept>

#include "Platform/Platform.h"

// Scripted fakes of the ports: each gives what the test set, and keeps what it was asked.
namespace pravik::test {

class FakeTextEngine : public TextEngine {
 public:
  std::vector<RecognizedText> blocks;
  /// What the next calls give, one after the other, before it is `blocks` again.
  mutable std::deque<std::vector<RecognizedText>> script;
  /// When set, every call fails with this text.
  std::optional<std::string> failure;
  /// What every look at a row of digits sees; absent for an engine that does not read digits alone.
  std::optional<SeenDigits> seenDigits;
  mutable std::vector<TextRequest> requests;
  mutable std::vector<Bitmap> pictures;

  std::vector<RecognizedText> recognize(const Bitmap& bitmap, const TextRequest& request) const override {
    requests.push_back(request);
    // What the test compares is what a caller asks for; the limit is each call's own.
    requests.back().limit = {};
    pictures.push_back(bitmap);
    if (failure) throw std::runtime_error(*failure);
    if (script.empty()) return blocks;
    auto next = std::move(script.front());
    script.pop_front();
    return next;
  }
  bool readsDigits() const override { return seenDigits.has_value(); }
  std::vector<SeenDigits> readDigits(const std::vector<Bitmap>& rows, DigitReader /*reader*/,
                                     const WorkLimit& /*limit*/) const override {
    return seenDigits ? std::vector<SeenDigits>(rows.size(), *seenDigits) : std::vector<SeenDigits>{};
  }
};

/// A row of digits seen surely and evenly spaced; nothing is seen where `text` has no digit.
inline SeenDigits seenRow(std::string_view text) {
  constexpr double pitch = 0.04;
  SeenDigits seen;
  double position = 0.02;
  for (const char c : text) {
    position += pitch;
    if (c < '0' || c > '9') continue;
    seen.push_back({.position = position, .probabilities = {}});
    seen.back().probabilities[static_cast<std::size_t>(c - '0')] = 0.9F;
  }
  return seen;
}

/// Gives the picture back unchanged unless the test scripts something else.
class FakeRenderer : public ImageRenderer {
 public:
  std::function<std::optional<Bitmap>(const Bitmap&)> rendered = [](const Bitmap& bitmap) { return bitmap; };
  std::optional<Bitmap> thumbnail;
  mutable std::vector<std::vector<ImageFilter>> filters;

  std::optional<Bitmap> render(const Bitmap& bitmap, std::span<const ImageFilter> asked) const override {
    filters.emplace_back(asked.begin(), asked.end());
    return rendered(bitmap);
  }
  std::optional<Bitmap> greyThumbnail(const Bitmap& /*bitmap*/, int /*width*/, int /*height*/) const override {
    return thumbnail;
  }
};

class FakeRectangleDetector : public RectangleDetector {
 public:
  std::vector<RectangleObservation> rectangles;
  bool fails = false;
  mutable std::vector<RectangleRequest> requests;

  std::vector<RectangleObservation> detect(const Bitmap& /*bitmap*/, const RectangleRequest& request) const override {
    requests.push_back(request);
    if (fails) throw std::runtime_error("the detector is broken");
    return rectangles;
  }
};

/// May be asked by several threads at once.
class FakeBarcodeDetector : public BarcodeDetector {
 public:
  std::vector<BarcodeObservation> codes;
  std::optional<std::string> failure;
  mutable std::vector<std::size_t> symbologyCounts;

  std::vector<BarcodeObservation> detect(const Bitmap& /*bitmap*/, std::span<const BarcodeSymbology> symbologies,
                                         const WorkLimit& /*limit*/) const override {
    const std::lock_guard lock(mutex_);
    symbologyCounts.push_back(symbologies.size());
    if (failure) throw std::runtime_error(*failure);
    return codes;
  }

 private:
  mutable std::mutex mutex_;
};

/// Keeps the labels, and has no room for the original of a bank card.
class FakePhotoLibrary : public PhotoLibrary {
 public:
  std::vector<std::string> labels;
  void save(const Bitmap& /*bitmap*/, const std::string& label) override {
    labels.push_back(label);
    if (label == "银行卡-原图") throw std::runtime_error("the disk is full");
  }
};

/// The fakes that read pictures, and the platform that they make.
struct FakeParts {
  std::shared_ptr<FakeTextEngine> engine = std::make_shared<FakeTextEngine>();
  std::shared_ptr<FakeRenderer> renderer = std::make_shared<FakeRenderer>();
  std::shared_ptr<FakeRectangleDetector> rectangles = std::make_shared<FakeRectangleDetector>();
  std::shared_ptr<FakeBarcodeDetector> barcodes = std::make_shared<FakeBarcodeDetector>();

  Platform makePlatform(std::shared_ptr<Dispatch> dispatch = nullptr) const {
    Platform platform;
    platform.textEngine = engine;
    platform.imageRenderer = renderer;
    platform.rectangleDetector = rectangles;
    platform.barcodeDetector = barcodes;
    platform.dispatch = std::move(dispatch);
    return platform;
  }
};

/// A block of text whose centre lies at `centreY` measured from the top.
inline RecognizedText textBlock(std::string text, double centreX, double centreY) {
  return {TextCandidate{std::move(text), 0.9F}, Rect{centreX - 0.05, 1 - centreY - 0.01, 0.1, 0.02}};
}

/// What is read on the portrait side of an identity card.
inline std::vector<RecognizedText> portraitSide() {
  return {textBlock("姓名 张三", 0.2, 0.15), textBlock("性别 男 民族 汉", 0.25, 0.28),
          textBlock("住址 北京市东城区景山前街4号", 0.3, 0.55),
          textBlock("公民身份号码 11010119900307123X", 0.5, 0.88)};
}

}  // namespace pravik::test
