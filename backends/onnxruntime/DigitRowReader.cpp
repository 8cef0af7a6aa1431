#include "backends/onnxruntime/DigitRowReader.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <span>
#include <stdexcept>

#include "backends/onnxruntime/CtcDecoder.h"

namespace pravik::ppocr {
namespace {

// As the network was trained.
constexpr int rowHeight = 32;
constexpr int stepWidth = 4;
constexpr int classCount = 11;
/// Added to the deviation that a row is divided by, so that a blank row stays quiet.
constexpr double leastDeviation = 4;
constexpr int widthStep = 32;
constexpr int maximumWidth = 1024;
/// Rows that go through the network at once: bounds the memory of a run.
constexpr std::ptrdiff_t maximumBatch = 16;

int scaledWidth(const cv::Mat& row) {
  return std::clamp(row.cols * rowHeight / row.rows, stepWidth, maximumWidth);
}
int paddedWidth(const cv::Mat& row) {
  return (scaledWidth(row) + widthStep - 1) / widthStep * widthStep;
}

/// Grey with mean 0 and deviation 1; on the right of the row its last column goes on.
cv::Mat prepared(const cv::Mat& row) {
  cv::Mat grey, scaled, values;
  cv::cvtColor(row, grey, cv::COLOR_BGR2GRAY);
  cv::resize(grey, scaled, {scaledWidth(row), rowHeight}, 0, 0,
             row.rows > rowHeight ? cv::INTER_AREA : cv::INTER_LINEAR);
  cv::Scalar mean, deviation;
  cv::meanStdDev(scaled, mean, deviation);
  const double scale = 1 / (deviation[0] + leastDeviation);
  scaled.convertTo(values, CV_32F, scale, -mean[0] * scale);
  cv::copyMakeBorder(values, values, 0, 0, 0, paddedWidth(row) - values.cols, cv::BORDER_REPLICATE);
  return values;
}

const DigitClasses& ownClasses() {
  static const DigitClasses classes{{{1}, {2}, {3}, {4}, {5}, {6}, {7}, {8}, {9}, {10}}};
  return classes;
}

}  // namespace

DigitRowReader::DigitRowReader(const std::string& modelPath, int threadCount) : model_(modelPath, threadCount, 3) {
  if (model_.outputShape().back() != classCount)
    throw std::runtime_error("the model file " + modelPath + " is no reader of digit rows");
}

std::vector<SeenDigits> DigitRowReader::read(const std::vector<cv::Mat>& rows, const WorkLimit& limit) const {
  std::vector<SeenDigits> seen(rows.size());
  for (std::size_t next = 0; next < rows.size() && !limit.isSpent();) {
    const int width = paddedWidth(rows[next]);
    std::vector<cv::Mat> batch;
    while (next + batch.size() < rows.size() && std::ssize(batch) < maximumBatch &&
           paddedWidth(rows[next + batch.size()]) == width)
      batch.push_back(prepared(rows[next + batch.size()]));
    const std::vector<std::int64_t> shape{std::ssize(batch), 1, rowHeight, width};
    const auto values = allocateValues(shape);
    float* place = values.get();
    for (const cv::Mat& row : batch) place = std::ranges::copy(std::span(row.ptr<float>(), row.total()), place).out;
    const Tensor output = model_.run({shape, values});
    const auto length = static_cast<std::size_t>(output.shape[1] * classCount);
    for (std::size_t i = 0; i < batch.size(); ++i, ++next) {
      const double used = static_cast<double>(scaledWidth(rows[next])) / stepWidth;
      seen[next] = decodeDigits({output.values.get() + i * length, length}, classCount, ownClasses(), used);
    }
  }
  return seen;
}

}  // namespace pravik::ppocr
