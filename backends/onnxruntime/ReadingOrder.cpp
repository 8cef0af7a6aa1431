#include "backends/onnxruntime/ReadingOrder.h"

#include <algorithm>
#include <cmath>

namespace pravik::ppocr {
namespace {

float centreX(const TextBox& box) {
  return (box.corners[0].x + box.corners[2].x) / 2;
}
float centreY(const TextBox& box) {
  return (box.corners[0].y + box.corners[2].y) / 2;
}

bool isSameRow(const TextBox& a, const TextBox& b) {
  return std::abs(centreY(a) - centreY(b)) < std::min(a.bounds().height, b.bounds().height) / 2;
}

}  // namespace

void sortInReadingOrder(std::vector<TextBox>& boxes) {
  std::ranges::stable_sort(boxes, {}, centreY);
  for (auto row = boxes.begin(); row != boxes.end();) {
    const auto end = std::find_if(row, boxes.end(), [&](const TextBox& box) { return !isSameRow(*row, box); });
    std::stable_sort(row, end, [](const TextBox& a, const TextBox& b) { return centreX(a) < centreX(b); });
    row = end;
  }
}

}  // namespace pravik::ppocr
