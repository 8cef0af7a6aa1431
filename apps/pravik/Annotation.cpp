#include "apps/pravik/Annotation.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <opencv2/imgproc.hpp>
#include <system_error>

#include "Reading/FieldSources.h"
#include "Records/DocumentKind.h"
#include "Utils/Format.h"
#include "backends/opencv/Mat.h"

namespace pravik::cli {
namespace {

/// The colours of Okabe and Ito ("Color Universal Design", 2008), which people with any colour vision tell apart.
const std::array<cv::Scalar, 7> colours{
    {{0, 94, 213}, {178, 114, 0}, {0, 159, 230}, {115, 158, 0}, {167, 121, 204}, {233, 180, 86}, {66, 228, 240}}};
const cv::Scalar unusedColour{153, 153, 153};
const cv::Scalar white = cv::Scalar::all(255), black{0, 0, 0, 255};

/// Side of a swatch of the legend in pixels, at least.
constexpr int smallestUnit = 8;

bool isHidden(std::string_view name) {
  const auto hides = [&](const RecordField& field) {
    return field.name == name && field.display == FieldDisplay::hidden;
  };
  return std::ranges::any_of(documentKinds(),
                             [&](const DocumentKind& kind) { return std::ranges::any_of(kind.fields, hides); });
}

/// The fields of a result that people are shown.
std::vector<std::string> shownFields(const Json& result) {
  std::vector<std::string> names;
  for (const auto& [name, value] : result.items())
    if (!isHidden(name)) names.push_back(name);
  return names;
}

const cv::Scalar& colourOf(const std::string& field, const std::vector<std::string>& fields) {
  const auto place = std::ranges::find(fields, field) - fields.begin();
  return field.empty() ? unusedColour : colours[static_cast<std::size_t>(place) % colours.size()];
}

cv::Rect pixels(const Rect& box, const cv::Mat& canvas) {
  const Rect drawn = inPixels(flipped(box), {static_cast<double>(canvas.cols), static_cast<double>(canvas.rows)});
  return {cvRound(drawn.x), cvRound(drawn.y), cvRound(drawn.width), cvRound(drawn.height)};
}

/// A strip for below the picture: a swatch and a name for each field that a block fed, and for what fed none, beside
/// each other; `unit` is a swatch's side.
cv::Mat legend(const std::vector<std::string>& fields, const std::set<std::string>& fed, int width, int unit) {
  const double fontScale = unit / 30.0;
  const int textThickness = std::max(1, unit / 16);
  cv::Mat strip(2 * unit, width, CV_8UC4, white);
  int x = unit / 2;
  const auto add = [&](const std::string& field) {
    if (!fed.contains(field)) return;
    const std::string name = field.empty() ? "not used" : field;
    cv::rectangle(strip, {x, unit / 2, unit, unit}, colourOf(field, fields), cv::FILLED);
    cv::putText(strip, name, {x + unit * 3 / 2, unit * 4 / 3}, cv::FONT_HERSHEY_SIMPLEX, fontScale, black,
                textThickness, cv::LINE_AA);
    x += cv::getTextSize(name, cv::FONT_HERSHEY_SIMPLEX, fontScale, textThickness, nullptr).width + unit * 5 / 2;
  };
  std::ranges::for_each(fields, add);
  add({});
  if (x <= width || unit <= smallestUnit) return strip;
  return legend(fields, fed, width, std::max(smallestUnit, unit * width / x));
}

}  // namespace

std::string fieldFedBy(std::string_view block, const Json& result) {
  std::string best;
  std::size_t longest = 0;
  for (const std::string& field : shownFields(result)) {
    if (!result[field].is_string()) continue;
    const auto value = result[field].get<std::string>();
    if (value.size() <= longest || !feeds(block, value)) continue;
    best = field;
    longest = value.size();
  }
  return best;
}

Bitmap annotatedPicture(const ReadPicture& picture, const Answer& answer) {
  cv::Mat canvas = asBgra(asMat(picture.bitmap)).clone();
  const Json result = isRecognized(answer) ? answer["result"] : Json::object();
  const int unit = std::max(smallestUnit, std::max(canvas.cols, canvas.rows) / 50);
  const std::vector<std::string> fields = shownFields(result);
  std::set<std::string> fed;
  for (const ReadBlock& block : picture.blocks) {
    const std::string field = fieldFedBy(block.text, result);
    cv::rectangle(canvas, pixels(block.boundingBox, canvas), colourOf(field, fields), std::max(1, unit / 8));
    fed.insert(field);
  }
  cv::vconcat(canvas, legend(fields, fed, canvas.cols, unit), canvas);
  return toBitmap(canvas);
}

Bitmap annotatedCards(const Bitmap& picture, const Answer& answer) {
  cv::Mat canvas = asBgra(asMat(picture)).clone();
  const int unit = std::max(smallestUnit, std::max(canvas.cols, canvas.rows) / 50);
  const auto draw = [&](const Json& corners, const cv::Scalar& colour, int thickness) {
    std::vector<cv::Point> points;
    for (const Json& corner : corners)
      points.emplace_back(cvRound(corner[0].get<double>()), cvRound(corner[1].get<double>()));
    cv::polylines(canvas, points, true, colour, thickness, cv::LINE_AA);
    return points;
  };
  std::size_t number = 0;
  for (const Json& card : answer["cards"]) {
    const cv::Scalar& colour = colours[number % colours.size()];
    for (const Json& field : card.value("fields", Json::object()))
      if (!field["corners"].is_null()) draw(field["corners"], colour, std::max(1, unit / 10));
    const cv::Point upperLeft = draw(card["corners"], colour, std::max(2, unit / 5)).front();
    const std::string kind = card["kind"].is_null() ? "unknown" : card["kind"].get<std::string>();
    cv::putText(canvas, formatted("{} {}", ++number, kind),
                {std::max(unit / 4, upperLeft.x), std::max(unit * 3 / 2, upperLeft.y - unit / 2)},
                cv::FONT_HERSHEY_SIMPLEX, unit / 24.0, colour, std::max(2, unit / 10), cv::LINE_AA);
  }
  return toBitmap(canvas);
}

std::filesystem::path freePath(const std::filesystem::path& folder, const PicturePage& page, const std::string& suffix,
                               const std::string& extension, std::set<std::string>& taken) {
  std::string start = page.file == "-" ? "stdin" : std::filesystem::path(page.file).stem().string();
  if (page.page) start += "-page-" + std::to_string(*page.page);
  start += suffix;
  std::string name = start + extension;
  for (int number = 2; !taken.insert(name).second; ++number) name = formatted("{}-{}{}", start, number, extension);
  return folder / name;
}

std::string problemWithFolder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) return error.message();
  const std::filesystem::path probe = folder / ".pravik-writable";
  if (!std::ofstream(probe)) return "no files can be written there";
  std::filesystem::remove(probe, error);
  return {};
}

}  // namespace pravik::cli
