#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "Platform/Image.h"
#include "Platform/ImageRenderer.h"
#include "Platform/RectangleDetector.h"

namespace pravik {

/// Prepares a photo for text recognition: measures it, enhances it, straightens a card photographed at an angle,
/// and cuts out the band that carries a card number. An operation that cannot proceed gives nothing; none throws.
class ImagePreprocessor {
 public:
  /// The kind of card that the enhancement is meant for.
  enum class Scene : std::uint8_t { idCard, bankCard };

  /// What a photo's 64 x 64 grey thumbnail says; all from 0 to 1.
  struct Stats {
    /// Mean grey level.
    double mean = 0;
    /// Standard deviation of the grey level.
    double std = 0;
    /// Share of pixels darker than 0.25.
    double darkRatio = 0;
    /// Share of pixels brighter than 0.75.
    double brightRatio = 0;

    bool operator==(const Stats&) const = default;
  };

  /// How to enhance a picture.
  struct AdaptiveParams {
    /// 1 = unchanged.
    double contrast = 1;
    /// Added to grey levels of 0 to 1; 0 = unchanged.
    double brightness = 0;
    /// 0 = no sharpening.
    double sharpness = 0;
    /// 1 = unchanged, 0 = grey.
    double saturation = 1;
    /// The name of the preset that gave the values.
    std::string_view mode;

    bool operator==(const AdaptiveParams&) const = default;
  };

  /// An enhanced copy of a card number's band, with the name of the preset that made it.
  struct Variant {
    Bitmap bitmap;
    std::string_view label;
  };

  /// A card in a photo.
  struct FoundCard {
    /// The card's outline in the upright photo, in pixels from the top left; absent when none was found.
    std::optional<Quadrilateral> outline;
    /// What attemptPerspectiveCorrection() gives.
    std::optional<Image> straightened;
  };

  ImagePreprocessor(std::shared_ptr<const ImageRenderer> renderer, std::shared_ptr<const RectangleDetector> detector);

  /// The photo upright and enhanced by what its statistics ask for. Nothing when the image has no pixels or the
  /// rendering fails.
  std::optional<Bitmap> preprocessForIDCard(const Image& image) const { return preprocess(image, Scene::idCard); }
  std::optional<Bitmap> preprocessForBankCard(const Image& image) const { return preprocess(image, Scene::bankCard); }
  /// The photo upright and enhanced with the fixed preset of the second try.
  std::optional<Bitmap> preprocessForBankCardEnhanced(const Image& image) const;

  /// The outlines of all cards in an upright photo, in pixels from the top left, the most certain first.
  std::vector<Quadrilateral> cardOutlines(const Bitmap& bitmap) const;
  /// Where a photo shows a card.
  FoundCard findCard(const Image& image) const;
  /// The card cut out and straightened. Nothing when no rectangle was found, or it is too small, square to the
  /// frame already, or gave an implausible result.
  std::optional<Image> attemptPerspectiveCorrection(const Image& image) const { return findCard(image).straightened; }

  /// The part of a bitmap within a quadrilateral, straightened to a rectangle; pixels from the top left. Beyond the
  /// bitmap its edge is repeated. Nothing when the rendering fails.
  std::optional<Bitmap> straightened(const Bitmap& bitmap, const Quadrilateral& corners) const;

  /// Whether a rectangle that may be a card is seen in the photo; false when the detector fails.
  bool showsRectangle(const Image& image) const;

  /// The band at the height where a card number usually stands. Nothing when the band is too small.
  std::optional<Bitmap> cropToCardNumberRegion(const Bitmap& bitmap) const;
  /// The band around a row; `centerY` is its centre as a fraction of the height, from the top.
  std::optional<Bitmap> cropToCardNumberRegionDynamic(const Bitmap& bitmap, double centerY) const;
  /// Three differently enhanced copies of a band, without those whose rendering failed.
  std::vector<Variant> preprocessCardNumberROI(const Bitmap& bitmap) const;

  /// Measures a picture. When it cannot be sampled, the statistics of an ordinary photo.
  Stats analyzeImage(const Bitmap& bitmap) const;
  /// Chooses the enhancement for a picture with these statistics.
  static AdaptiveParams computeParams(const Stats& stats, Scene scene);

 private:
  std::vector<RectangleObservation> rectanglesIn(const Bitmap& bitmap, const RectangleRequest& request) const;
  std::optional<Image> corrected(const Bitmap& bitmap, const RectangleObservation& card) const;
  std::optional<Bitmap> preprocess(const Image& image, Scene scene) const;
  std::optional<Bitmap> enhance(const Bitmap& bitmap, const AdaptiveParams& params) const;

  std::shared_ptr<const ImageRenderer> renderer_;
  std::shared_ptr<const RectangleDetector> detector_;
};

}  // namespace pravik
