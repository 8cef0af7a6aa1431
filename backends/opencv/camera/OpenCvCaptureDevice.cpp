#include "backends/opencv/camera/OpenCvCaptureDevice.h"

#include <linux/videodev2.h>

#include <stdexcept>

#include "backends/opencv/camera/DeviceFile.h"

namespace pravik {

OpenCvCaptureDevice::OpenCvCaptureDevice(const VideoSource& source) {
  if (source.isCamera) camera_ = source.path;
}

void OpenCvCaptureDevice::lockForConfiguration() {
  // Each control is set in one request, so that nothing has to be held; the camera must only be there.
  if (camera_ && !DeviceFile(*camera_).isOpen()) throw std::runtime_error("the camera cannot be opened");
}

bool OpenCvCaptureDevice::supportsContinuousAutoFocus() const {
  return offers(V4L2_CID_FOCUS_AUTO);
}

void OpenCvCaptureDevice::setContinuousAutoFocus() {
  set(V4L2_CID_FOCUS_AUTO, 1);
}

bool OpenCvCaptureDevice::supportsContinuousAutoExposure() const {
  return offers(V4L2_CID_EXPOSURE_AUTO);
}

void OpenCvCaptureDevice::setContinuousAutoExposure() {
  // Cameras whose aperture is fixed know only the second of the two.
  if (!set(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_AUTO)) set(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY);
}

bool OpenCvCaptureDevice::hasTorch() const {
  return offers(V4L2_CID_FLASH_LED_MODE);
}

bool OpenCvCaptureDevice::isTorchOn() const {
  v4l2_control control{.id = V4L2_CID_FLASH_LED_MODE, .value = V4L2_FLASH_LED_MODE_NONE};
  return camera_ && DeviceFile(*camera_).control(VIDIOC_G_CTRL, control) && control.value == V4L2_FLASH_LED_MODE_TORCH;
}

void OpenCvCaptureDevice::setTorch(bool on) {
  set(V4L2_CID_FLASH_LED_MODE, on ? V4L2_FLASH_LED_MODE_TORCH : V4L2_FLASH_LED_MODE_NONE);
}

bool OpenCvCaptureDevice::offers(unsigned control) const {
  v4l2_queryctrl query{};
  query.id = control;
  return camera_ && DeviceFile(*camera_).control(VIDIOC_QUERYCTRL, query) &&
         (query.flags & (V4L2_CTRL_FLAG_DISABLED | V4L2_CTRL_FLAG_READ_ONLY)) == 0;
}

bool OpenCvCaptureDevice::set(unsigned control, int value) const {
  v4l2_control setting{.id = control, .value = value};
  return camera_ && DeviceFile(*camera_).control(VIDIOC_S_CTRL, setting);
}

}  // namespace pravik
