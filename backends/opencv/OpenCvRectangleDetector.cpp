#include "backends/opencv/OpenCvRectangleDetector.h"
namespace pravik {
std::vector<RectangleObservation> OpenCvRectangleDetector::detect(const Bitmap&, const RectangleRequest&) const { return {}; }
}
