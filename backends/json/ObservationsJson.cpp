#include "backends/json/ObservationsJson.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <vector>

namespace pravik {
namespace {

/// The format nests four deep; what lies beneath other keys may nest a little deeper.
constexpr int maximumDepth = 32;
/// By how much a box may stand over the edge of the picture: some engines round outwards.
constexpr double edgeTolerance = 0.01;

class InputError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Refuses what the JSON parser itself lets pass: deep nesting, and a key that stands twice in an object.
class StructureGuard {
 public:
  bool operator()(int depth, nlohmann::json::parse_event_t event, const nlohmann::json& value) {
    if (depth > maximumDepth) throw InputError(fmt::format("nested deeper than {} levels", maximumDepth));
    if (event == nlohmann::json::parse_event_t::object_start) keys_.emplace_back();
    if (event == nlohmann::json::parse_event_t::object_end) keys_.pop_back();
    if (event == nlohmann::json::parse_event_t::key && !keys_.back().insert(value.get<std::string>()).second)
      throw InputError(fmt::format("the key {} stands twice in an object",
                                   value.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace)));
    return true;
  }

 private:
  std::vector<std::set<std::string>> keys_;
};

const nlohmann::json& member(const nlohmann::json& object, const char* key, const std::string& where) {
  if (!object.is_object()) throw InputError(where + " is not an object");
  const auto found = object.find(key);
  if (found == object.end()) throw InputError(fmt::format("{} lacks \"{}\"", where, key));
  return *found;
}

double number(const nlohmann::json& object, const char* key, const std::string& where) {
  const nlohmann::json& value = member(object, key, where);
  if (!value.is_number()) throw InputError(fmt::format("{}: \"{}\" is not a number", where, key));
  return value.get<double>();
}

void requireWithin(double value, double least, double most, const char* what, const std::string& where) {
  if (value < least || value > most) throw InputError(fmt::format("{}: {} {} is outside 0...1", where, what, value));
}

Rect boundingBox(const nlohmann::json& box, const std::string& where) {
  const Rect rect{number(box, "x", where), number(box, "y", where), number(box, "width", where),
                  number(box, "height", where)};
  requireWithin(rect.width, 0, 1 + 2 * edgeTolerance, "width", where);
  requireWithin(rect.height, 0, 1 + 2 * edgeTolerance, "height", where);
  for (const double x : {rect.x, rect.x + rect.width})
    requireWithin(x, -edgeTolerance, 1 + edgeTolerance, "a horizontal edge at", where);
  for (const double y : {rect.y, rect.y + rect.height})
    requireWithin(y, -edgeTolerance, 1 + edgeTolerance, "a vertical edge at", where);
  return rect;
}

TextRecognizer::Observation observation(const nlohmann::json& object, std::size_t index) {
  const std::string where = fmt::format("observation {}", index);
  const nlohmann::json& text = member(object, "text", where);
  if (!text.is_string()) throw InputError(where + ": \"text\" is not a string");
  const double confidence = number(object, "confidence", where);
  requireWithin(confidence, 0, 1, "confidence", where);
  return {text.get<std::string>(), static_cast<float>(confidence),
          boundingBox(member(object, "boundingBox", where), where + ", boundingBox")};
}

Observations observations(const nlohmann::json& document) {
  const nlohmann::json& list = member(document, "observations", "the input");
  if (!list.is_array()) throw InputError("\"observations\" is not an array");
  Observations result;
  for (const nlohmann::json& object : list) result.push_back(observation(object, result.size()));
  return result;
}

/// Without the parser's own tag "[json.exception...] ", and without the input that it quotes: that may be what is
/// written on a card.
std::string readable(const nlohmann::json::exception& error) {
  std::string message = error.what();
  if (const auto end = message.find("] "); end != std::string::npos) message.erase(0, end + 2);
  for (const std::string_view quotation : {"; last read: '", " parsing '"})
    message = message.substr(0, message.find(quotation));
  return "not valid JSON: " + message;
}

}  // namespace

tl::expected<Observations, std::string> parseObservations(std::string_view text) {
  if (text.size() > maximumObservationsBytes)
    return tl::unexpected(fmt::format("longer than {} MiB", maximumObservationsBytes >> 20U));
  try {
    return observations(nlohmann::json::parse(text, StructureGuard{}));
  } catch (const nlohmann::json::exception& error) {
    return tl::unexpected(readable(error));
  } catch (const InputError& error) {
    return tl::unexpected(std::string(error.what()));
  }
}

}  // namespace pravik
