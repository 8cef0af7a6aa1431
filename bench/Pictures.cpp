#include "bench/Pictures.h"

#include <cmath>
#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "backends/opencv/Mat.h"
#include "backends/opencv/files/OpenCvImageCodec.h"

namespace pravik::bench {
namespace {

/// The photographed portrait side of samples/ that every benchmark scales to the size it needs.
constexpr const char* portraitPhoto = "id-front-photo-0019.jpg";
constexpr const char* bankPhoto = "bank-card-silver-photo-0011.jpg";

Bitmap sample(const char* name) {
  const Image image = OpenCvImageCodec().load(std::filesystem::path(PRAVIK_SAMPLES_DIRECTORY) / name);
  if (!image.bitmap) throw std::runtime_error(std::string(name) + " has no pixels");
  return *image.bitmap;
}

}  // namespace

Bitmap photoOfSize(int width, int height) {
  const Bitmap photo = sample(portraitPhoto);
  cv::Mat scaled;
  cv::resize(asMat(photo), scaled, {width, height}, 0, 0, cv::INTER_AREA);
  return toBitmap(scaled);
}

Bitmap photoOfMegapixels(int megapixels) {
  const double height = std::sqrt(megapixels * 1e6 * 3 / 4);
  return photoOfSize(static_cast<int>(height * 4 / 3), static_cast<int>(height));
}

Bitmap bankCardPhoto() {
  return sample(bankPhoto);
}

}  // namespace pravik::bench
