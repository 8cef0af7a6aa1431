#include "c/CallResult.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace pravik {
namespace {

/// The error codes in the order of their statuses, from 1 on.
constexpr std::array<std::string_view, PRAVIK_INTERNAL_ERROR> errorCodes{
    "recognition_failed", "parse_failure", "scene_mismatch",   "invalid_image",
    "insufficient_text",  "invalid_input", "invalid_argument", "internal_error"};

pravik_status statusOf(std::string_view errorCode) {
  const auto found = std::ranges::find(errorCodes, errorCode);
  return found == errorCodes.end() ? PRAVIK_INTERNAL_ERROR : static_cast<pravik_status>(found - errorCodes.begin() + 1);
}

Answer errorAnswer(pravik_status status, const std::string& message) {
  return {{"error", {{"code", errorCodes[static_cast<std::size_t>(status) - 1]}, {"message", message}}}};
}

}  // namespace

Answer invalidArgumentAnswer(const std::string& message) {
  return errorAnswer(PRAVIK_INVALID_ARGUMENT, message);
}

Answer internalErrorAnswer(const std::string& message) {
  return errorAnswer(PRAVIK_INTERNAL_ERROR, message);
}

}  // namespace pravik

pravik_result::pravik_result(const pravik::Answer& answer) : json(pravik::jsonText(answer)) {
  if (pravik::isRecognized(answer)) return;
  // From the text, where what is no UTF-8, such as the name of a folder, has been replaced.
  const auto error = pravik::Json::parse(json).at("error");
  errorCode = error.at("code").get<std::string>();
  errorMessage = error.at("message").get<std::string>();
  status = pravik::statusOf(errorCode);
}
