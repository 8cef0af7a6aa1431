#pragma once

#include <QAbstractButton>

#include "Platform/Geometry.h"
#include "Platform/View.h"

namespace pravik {

/// Something in a tree of views that can be pressed.
struct TouchArea {
  /// In points of the tree's root.
  Rect frame;
  /// For people who do not see it.
  QString name;
  bool isEnabled = true;
  /// For one of several to choose from: whether it is the chosen one.
  bool isChoice = false;
  bool isChosen = false;
};

/// The areas of a tree that can be pressed now, from the bottom to the top.
std::vector<TouchArea> touchAreas(const View& root);

/// Stands for one of these areas, unseen, so that the keyboard and screen readers find it. Draws nothing but a ring
/// when the keyboard has led there.
class TouchTarget : public QAbstractButton {
 public:
  explicit TouchTarget(QWidget* parent);

  /// Takes over the area's place (moved by `origin`), name and state.
  void place(const TouchArea& area, QPoint origin);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace pravik
