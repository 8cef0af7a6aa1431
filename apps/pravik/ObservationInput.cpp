#include "apps/pravik/ObservationInput.h"

#include <istream>

namespace pravik::cli {

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
