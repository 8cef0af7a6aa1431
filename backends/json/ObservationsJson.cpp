#include "backends/json/ObservationsJson.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <vector>

#include "Utils/Format.h"

namespace pravik {
namespace {

/// The format nests four deep; what lies beneath other keys may nest a little deeper.
constexpr int maximumDepth = 32;
/// By how much a number may lie outside 0...1 and is moved to the nearer end: engines round, and let boxes stand over
/// the edge of the picture. What lies further out was measured in something else.
constexpr double tolerance = 0.05;

class InputError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Refuses what the JSON parser itself lets pass: deep nesting, and a key that stands twice in an object.
class StructureGuard {
 public:
  bool operator()(int depth, nlohmann::json::parse_event_t event, const nlohmann::json& value) {
    if (depth > maximumDepth) throw InputError(formatted("nested deeper than {} levels", maximumDepth));
    if (event == nlohmann::json::parse_event_t::object_start) keys_.emplace_back();
    if (event == nlohmann::json::parse_event_t::object_end) keys_.pop_back();
    if (event == nlohmann::json::parse_event_t::key && !keys_.back().insert(value.get<std::string>()).second)
      throw InputError(formatted("the key {} stands twice in an object",
                                 value.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace)));
    return true;
  }

 private:
  std::vector<std::set<std::string>> keys_;
};

const nlohmann::json& member(const nlohmann::json& object, const char* key, const std::string& where) {
  if (!object.is_object()) throw InputError(where + " is not an object");
  const auto found = object.find(key);
  if (found == object.end()) throw InputError(formatted("{} lacks \"{}\"", where, key));
  return *found;
}

double number(const nlohmann::json& object, const char* key, const std::string& where) {
  const nlohmann::json& value = member(object, key, where);
  if (!value.is_number()) throw InputError(formatted("{}: \"{}\" is not a number", where, key));
  return value.get<double>();
}

double clamped(double value, const char* what, const std::string& where) {
  if (value < -tolerance || value > 1 + tolerance)
    throw InputError(formatted("{}: {} {} is outside 0...1", where, what, value));
  return std::clamp(value, 0.0, 1.0);
}

Rect boundingBox(const nlohmann::json& box, const std::string& where) {
  const Rect rect{number(box, "x", where), number(box, "y", where), number(box, "width", where),
                  number(box, "height", where)};
  if (rect.width < 0 || rect.height < 0) throw InputError(where + ": a negative extent is outside 0...1");
  const double left = clamped(rect.x, "a horizontal edge at", where);
  const double right = clamped(rect.x + rect.width, "a horizontal edge at", where);
  const double bottom = clamped(rect.y, "a vertical edge at", where);
  const double top = clamped(rect.y + rect.height, "a vertical edge at", where);
  if (left == rect.x && right == rect.x + rect.width && bottom == rect.y && top == rect.y + rect.height) return rect;
  return {left, bottom, right - left, top - bottom};
}

Observation observation(const nlohmann::json& object, std::size_t index) {
  const std::string where = formatted("observation {}", index);
  const nlohmann::json& text = member(object, "text", where);
  if (!text.is_string()) throw InputError(where + ": \"text\" is not a string");
  const double confidence = clamped(number(object, "confidence", where), "confidence", where);
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
    return tl::unexpected(formatted("longer than {} MiB", maximumObservationsBytes >> 20U));
  try {
    return observations(nlohmann::json::parse(text, StructureGuard{}));
  } catch (const nlohmann::json::exception& error) {
    return tl::unexpected(readable(error));
  } catch (const InputError& error) {
    return tl::unexpected(std::string(error.what()));
  }
}

}  // namespace pravik
