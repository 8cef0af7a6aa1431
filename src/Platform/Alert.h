#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace pravik {

/// A question with a choice of answers. It closes by itself before the chosen answer's handler is called.
struct Alert {
  enum class ActionStyle : std::uint8_t { normal, cancel };

  struct Action {
    std::string title;
    ActionStyle style = ActionStyle::normal;
    std::function<void()> handler;
  };

  std::string title;
  std::string message;
  std::vector<Action> actions;
};

}  // namespace pravik
