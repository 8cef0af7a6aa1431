#include "apps/pravik/Progress.h"

#include <ostream>
#include <string>

namespace pravik::cli {
namespace {

constexpr std::size_t barWidth = 30;
/// Carriage return, then "erase to the end of the line" (ECMA-48, EL).
constexpr const char* clearLine = "\r\033[K";

}  // namespace

Progress::Progress(std::ostream& terminal, std::size_t total, bool shown)
    : terminal_(terminal), total_(total), shown_(shown && total > 1) {}

Progress::~Progress() {
  hide();
}

void Progress::show(std::size_t done) {
  if (!shown_) return;
  const std::size_t filled = barWidth * done / total_;
  terminal_ << clearLine << '[' << std::string(filled, '#') << std::string(barWidth - filled, '.') << "] " << done
            << " / " << total_ << std::flush;
}

void Progress::hide() {
  if (shown_) terminal_ << clearLine << std::flush;
}

}  // namespace pravik::cli
