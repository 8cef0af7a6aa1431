#pragma once

#include <cstdint>

namespace pravik {

/// Whether the program may use the camera: the user was not asked yet, may not decide, said no, or said yes.
enum class CameraAuthorizationStatus : std::uint8_t { notDetermined, restricted, denied, authorized };

}  // namespace pravik
