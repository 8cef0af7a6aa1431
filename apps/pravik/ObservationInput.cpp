#include "apps/pravik/ObservationInput.h"

#include <istream>

#include "backends/json/ObservationsJson.h"

namespace pravik::cli {

std::optional<std::string> nextLine(std::istream& in) {
  std::string line;
  std::streambuf& buffer = *in.rdbuf();
  int c = buffer.sbumpc();
  if (c == std::char_traits<char>::eof()) return std::nullopt;
  for (; c != '\n' && c != std::char_traits<char>::eof(); c = buffer.sbumpc())
    if (line.size() <= maximumObservationsBytes) line += static_cast<char>(c);
  return line;
}

std::string wholeText(std::istream& in) {
  std::string whole;
  std::streambuf& buffer = *in.rdbuf();
  for (int c = buffer.sbumpc(); c != std::char_traits<char>::eof(); c = buffer.sbumpc()) {
    whole += static_cast<char>(c);
    if (whole.size() > maximumObservationsBytes) break;
  }
  return whole;
}

}  // namespace pravik::cli
