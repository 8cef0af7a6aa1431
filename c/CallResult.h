#pragma once

#include <string>

#include "backends/json/Answer.h"
#include "c/pravik_c.h"

/// What a call gave, as texts that the caller may hold on to.
struct pravik_result {
  explicit pravik_result(const pravik::Answer& answer);

  pravik_status status = PRAVIK_OK;
  std::string json;
  /// Both empty without an error.
  std::string errorCode;
  std::string errorMessage;
};

namespace pravik {

/// {"error":{"code":…,"message":…}} for what is no error of the library proper.
Answer invalidArgumentAnswer(const std::string& message);
Answer internalErrorAnswer(const std::string& message);

}  // namespace pravik
