#pragma once

#include <QString>
#include <cstdint>

#include "backends/json/Wording.h"

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
  ok,
};

/// Has everything that is shown from now on in one language: the application's texts, the screens' and Qt's own, where
/// its translations are installed. Needs a QApplication.
void useLanguage(Language language);
/// The one in use.
Language languageInUse();

QString text(Text which);

}  // namespace pravik::scanner
