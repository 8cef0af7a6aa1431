#include "apps/pravik/ObservationInput.h"

#include <fmt/format.h>

#include <istream>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <vector>

namespace pravik::cli {
namespace {

using nlohmann::json;

/// The format nests four deep; what lies beneath other keys may nest a little deeper.
constexpr int maximumDepth = 32;
/// By how much a box may stand over the edge of the picture: some engines round outwards.
constexpr double edgeTolerance = 0.01;
/// What the JSON parser says about a text may quote the text; no more than this of it is passed on.
constexpr std::size_t maximumMessageBytes = 200;

class InputError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Refuses what the JSON parser itself lets pass: deep nesting, and a key that stands twice in an object.
class StructureGuard {
 public:
  bool operator()(int depth, json::parse_event_t event, const json& value) {
    if (depth > maximumDepth) throw InputError(fmt::format("nested deeper than {} levels", maximumDepth));
    if (event == json::parse_event_t::object_start) keys_.emplace_back();
    if (event == json::parse_event_t::object_end) keys_.pop_back();
    if (event == json::parse_event_t::key && !keys_.back().insert(value.get<std::string>()).second)
      throw InputError(fmt::format("the key {} stands twice in an object",
                                   value.dump(-1, ' ', true, json::error_handler_t::replace)));
    return true;
  }

 private:
  std::vector<std::set<std::string>> keys_;
};

const json& member(const json& object, const char* key, const std::string& where) {
  if (!object.is_object()) throw InputError(where + " is not an object");
  const auto found = object.find(key);
  if (found == object.end()) throw InputError(fmt::format("{} lacks \"{}\"", where, key));
  return *found;
}

double number(const json& object, const char* key, const std::string& where) {
  const json& value = member(object, key, where);
  if (!value.is_number()) throw InputError(fmt::format("{}: \"{}\" is not a number", where, key));
  return value.get<double>();
}

void requireWithin(double value, double least, double most, const char* what, const std::string& where) {
  if (value < least || value > most) throw InputError(fmt::format("{}: {} {} is outside 0...1", where, what, value));
}

Rect boundingBox(const json& box, const std::string& where) {
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

TextRecognizer::Observation observation(const json& object, std::size_t index) {
  const std::string where = fmt::format("observation {}", index);
  const json& text = member(object, "text", where);
  if (!text.is_string()) throw InputError(where + ": \"text\" is not a string");
  const double confidence = number(object, "confidence", where);
  requireWithin(confidence, 0, 1, "confidence", where);
  return {text.get<std::string>(), static_cast<float>(confidence),
          boundingBox(member(object, "boundingBox", where), where + ", boundingBox")};
}

Observations observations(const json& document) {
  const json& list = member(document, "observations", "the input");
  if (!list.is_array()) throw InputError("\"observations\" is not an array");
  Observations result;
  for (const json& object : list) result.push_back(observation(object, result.size()));
  return result;
}

/// Without the parser's own tag "[json.exception...] ".
std::string readable(const json::exception& error) {
  std::string message = error.what();
  if (const auto end = message.find("] "); end != std::string::npos) message.erase(0, end + 2);
  if (message.size() > maximumMessageBytes) message = message.substr(0, maximumMessageBytes) + "...";
  return "not valid JSON: " + message;
}

}  // namespace

tl::expected<Observations, std::string> parseObservations(std::string_view text) {
  try {
    return observations(json::parse(text, StructureGuard{}));
  } catch (const json::exception& error) {
    return tl::unexpected(readable(error));
  } catch (const InputError& error) {
    return tl::unexpected(std::string(error.what()));
  }
}

std::optional<InputText> nextLine(std::istream& in) {
  InputText line;
  std::streambuf& buffer = *in.rdbuf();
  int c = buffer.sbumpc();
  if (c == std::char_traits<char>::eof()) return std::nullopt;
  for (; c != '\n' && c != std::char_traits<char>::eof(); c = buffer.sbumpc()) {
    if (line.text.size() < maximumInputBytes)
      line.text += static_cast<char>(c);
    else
      line.tooLong = true;
  }
  return line;
}

InputText wholeText(std::istream& in) {
  InputText whole;
  std::streambuf& buffer = *in.rdbuf();
  for (int c = buffer.sbumpc(); c != std::char_traits<char>::eof(); c = buffer.sbumpc()) {
    if (whole.text.size() == maximumInputBytes) {
      whole.tooLong = true;
      break;
    }
    whole.text += static_cast<char>(c);
  }
  return whole;
}

}  // namespace pravik::cli
