#pragma once

#include <string>
#include <vector>

#include "apps/pravik/Settings.h"

namespace pravik::cli {

/// Runs the command that the words (without the program's name) ask for. Returns one of ExitStatus, also when an
/// exception ends the command.
int run(const std::vector<std::string>& words, const Host& host);

}  // namespace pravik::cli
