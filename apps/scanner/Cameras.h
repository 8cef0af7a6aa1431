#pragma once

#include <QString>
#include <string>
#include <vector>

namespace pravik::scanner {

/// A camera of this machine.
struct Camera {
  /// What opens it.
  std::string source;
  QString name;
};

/// Empty when there is none, or when the system does not tell.
std::vector<Camera> listCameras();

}  // namespace pravik::scanner
