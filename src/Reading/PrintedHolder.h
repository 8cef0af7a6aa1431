#pragma once

#include <optional>
#include <string>

#include "Records/Observation.h"

namespace pravik {

/// The holder's name in Chinese that stands behind its label ("持卡人", "姓名") on one line of a bank card, as a social
/// security card has it: two to four characters of which the first is a common surname. Absent when there is none;
/// without the label nothing tells a name from another word.
std::optional<std::string> chineseHolder(const Observations& observations);

}  // namespace pravik
