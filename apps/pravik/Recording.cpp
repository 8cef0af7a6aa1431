#include "apps/pravik/Recording.h"

namespace pravik::cli {
namespace {

class RecordedTextEngine final : public TextEngine {
 public:
  RecordedTextEngine(std::shared_ptr<const TextEngine> engine, std::shared_ptr<Recording> recording)
      : engine_(std::move(engine)), recording_(std::move(recording)) {}

  std::vector<RecognizedText> recognize(const Bitmap& bitmap, const TextRequest& request) const override {
    std::vector<RecognizedText> texts = engine_->recognize(bitmap, request);
    ReadPicture picture{bitmap, {}};
    for (const RecognizedText& text : texts)
      if (text.topCandidate) picture.blocks.push_back({text.topCandidate->text, text.boundingBox});
    recording_->keep(std::move(picture));
    return texts;
  }

  bool readsDigits() const override { return engine_->readsDigits(); }
  std::vector<SeenDigits> readDigits(const std::vector<Bitmap>& rows, DigitReader reader,
                                     const WorkLimit& limit) const override {
    return engine_->readDigits(rows, reader, limit);
  }

 private:
  std::shared_ptr<const TextEngine> engine_;
  std::shared_ptr<Recording> recording_;
};

class RecordedBarcodeDetector final : public BarcodeDetector {
 public:
  RecordedBarcodeDetector(std::shared_ptr<const BarcodeDetector> detector, std::shared_ptr<Recording> recording)
      : detector_(std::move(detector)), recording_(std::move(recording)) {}

  std::vector<BarcodeObservation> detect(const Bitmap& bitmap, std::span<const BarcodeSymbology> symbologies,
                                         const WorkLimit& limit) const override {
    std::vector<BarcodeObservation> codes = detector_->detect(bitmap, symbologies, limit);
    ReadPicture picture{bitmap, {}};
    for (const BarcodeObservation& code : codes) picture.blocks.push_back({code.payload, code.boundingBox});
    recording_->keep(std::move(picture));
    return codes;
  }

 private:
  std::shared_ptr<const BarcodeDetector> detector_;
  std::shared_ptr<Recording> recording_;
};

}  // namespace

void Recording::keep(ReadPicture picture) {
  const std::lock_guard lock(mutex_);
  latest_ = std::move(picture);
}

std::optional<ReadPicture> Recording::take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(latest_, std::nullopt);
}

Platform recorded(Platform platform, const std::shared_ptr<Recording>& recording) {
  if (platform.textEngine)
    platform.textEngine = std::make_shared<RecordedTextEngine>(std::move(platform.textEngine), recording);
  if (platform.barcodeDetector)
    platform.barcodeDetector =
        std::make_shared<RecordedBarcodeDetector>(std::move(platform.barcodeDetector), recording);
  return platform;
}

}  // namespace pravik::cli
