#include "apps/pravik/ScanEventWriter.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <string_view>

#include "Utils/Format.h"
#include "apps/pravik/Table.h"

namespace pravik::cli {
namespace {

std::string detailsOfState(const Json& event) {
  const std::string state = event["state"];
  return event.contains("message") ? state + ": " + event["message"].get<std::string>() : state;
}

std::string detailsOfHint(const Json& event) {
  return event["text"];
}

std::string detailsOfOutline(const Json& event) {
  const Json& box = event["boundingBox"];
  if (box.is_null()) return "none";
  return formatted("x {:.3f} y {:.3f} width {:.3f} height {:.3f}", box["x"].get<double>(), box["y"].get<double>(),
                   box["width"].get<double>(), box["height"].get<double>());
}

std::string detailsOfTimer(const Json& event) {
  return formatted("{:.1f} s {}", event["seconds"].get<double>(), event["change"].get<std::string>());
}

std::string detailsOfButton(const Json& event) {
  return event["shown"].get<bool>() ? "manual capture is offered" : "manual capture is hidden";
}

std::string detailsOfTap(const Json& /*event*/) {
  return "manual capture";
}

std::string detailsOfCapture(const Json& event) {
  return formatted("attempt {}", event["attempt"].get<int>());
}

std::string detailsOfAttempt(const Json& event) {
  return formatted("attempt {} failed", event["attempt"].get<int>());
}

struct EventText {
  std::string_view event;
  std::string (*details)(const Json& event);
};

constexpr std::array<EventText, 8> eventTexts{{{"state", detailsOfState},
                                               {"hint", detailsOfHint},
                                               {"outline", detailsOfOutline},
                                               {"timer", detailsOfTimer},
                                               {"button", detailsOfButton},
                                               {"tap", detailsOfTap},
                                               {"capture", detailsOfCapture},
                                               {"attempt", detailsOfAttempt}}};

std::string asLine(const Json& event) {
  const auto name = event["event"].get<std::string>();
  const auto* known = std::ranges::find(eventTexts, name, &EventText::event);
  return formatted("{:9.3f}  {:<8}  {}\n", event["time"].get<double>(), name,
                   known == eventTexts.end() ? "" : known->details(event));
}

}  // namespace

ScanEventWriter::ScanEventWriter(std::ostream& out, Format format)
    : out_(out), format_(format), answers_(out, format) {}

void ScanEventWriter::write(const Json& event) {
  if (format_ != Format::table) return answers_.write(event);
  out_ << asLine(event);
  if (event["event"] == "result") out_ << '\n' << asTable(event);
  out_.flush();
}

}  // namespace pravik::cli
