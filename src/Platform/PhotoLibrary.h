#pragma once

#include <string>

#include "Platform/Bitmap.h"

namespace pravik {

/// Where pictures are kept for a person to look at.
class PhotoLibrary {
 public:
  virtual ~PhotoLibrary() = default;

  /// Saves a picture under a label. Throws std::exception with a text that a user can read when it cannot.
  virtual void save(const Bitmap& bitmap, const std::string& label) = 0;
};

}  // namespace pravik
