#pragma once

#include <string>
#include <vector>

namespace pravik::ppocr {

/// Throws std::invalid_argument that names the first language tag (BCP 47) that the models do not read.
void requireLanguages(const std::vector<std::string>& tags);

}  // namespace pravik::ppocr
