#pragma once

#include <QWidget>

namespace pravik {

/// Opens the page of the system's settings where the user decides which programs may use the camera; where there is
/// none that can be opened, says over `parent` (which may be null) what to do.
void openCameraSettings(QWidget* parent);

}  // namespace pravik
