#pragma once

#include <string>

#include "apps/pravik/Settings.h"

namespace pravik::cli {

/// `pravik stats`: what the picture's statistics are and which enhancement they ask for.
ExitStatus showStatistics(const std::string& file, const Settings& settings, const Host& host);

}  // namespace pravik::cli
