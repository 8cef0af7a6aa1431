#pragma once

#include <string>

#include "Platform/Font.h"
#include "Platform/View.h"

namespace pravik {

/// One line of text, centred in the frame and cut off with an ellipsis where it does not fit.
class Label : public View {
 public:
  std::string text;
  Color textColor = colors::white;
  Font font;
};

}  // namespace pravik
