#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"
#include "Platform/Platform.h"

namespace pravik::cli {

/// A block of text or a code where it was read; the box is normalised with the origin at the lower left.
struct ReadBlock {
  std::string text;
  Rect boundingBox;
};

/// A picture as an engine got it, with what it read there.
struct ReadPicture {
  Bitmap bitmap;
  std::vector<ReadBlock> blocks;
};

/// Keeps the latest picture that was read.
class Recording {
 public:
  void keep(ReadPicture picture);
  /// The latest picture since the last call.
  std::optional<ReadPicture> take();

 private:
  std::mutex mutex_;
  std::optional<ReadPicture> latest_;
};

/// The same platform, except that what its text engine and its barcode detector read is kept in the recording.
Platform recorded(Platform platform, const std::shared_ptr<Recording>& recording);

}  // namespace pravik::cli
