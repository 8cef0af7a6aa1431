#pragma once

#include "Platform/View.h"

namespace pravik {

/// A full-screen page that a stage shows, without a status bar. A stage calls it on the main queue in the order of the
/// members: load once, layout after the load and whenever the root view's size or safe area has changed, appear and
/// disappear as often as it comes and goes.
class Screen {
 public:
  virtual ~Screen() = default;

  /// The root view. The stage sets its frame (at the origin) and safe area before the load and draws its tree.
  virtual View& view() = 0;

  virtual void viewDidLoad() = 0;
  virtual void viewDidLayoutSubviews() = 0;
  virtual void viewWillAppear() = 0;
  virtual void viewWillDisappear() = 0;
};

}  // namespace pravik
