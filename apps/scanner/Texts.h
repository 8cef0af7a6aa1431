#pragma once

#include <QString>
#include <cstdint>

namespace pravik::scanner {

/// What the application says, beside what the scanner itself says.
enum class Text : std::uint8_t {
  title,
  whatToScan,
  camera,
  chooseClip,
  noCamera,
  start,
  openPhoto,
  dropHint,
  reading,
  scanAgain,
  back,
  copy,
  copied,
  show,
  hide,
  cameraEnded,
  notAPhoto,
  ok,
  checkFailed,
};

/// In Chinese for users whose language that is, in English for all others.
QString text(Text which);

}  // namespace pravik::scanner
