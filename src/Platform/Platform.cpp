#include "Platform/Platform.h"

namespace pravik {

Platform& Platform::current() {
  static Platform platform;
  return platform;
}

}  // namespace pravik
