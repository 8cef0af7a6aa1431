#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pravik::ppocr {

/// The characters that the recognition model tells apart, by the number of its output class. Class 0 is the blank that
/// separates characters; the last class is the space.
class KeyList {
 public:
  /// Characters without the blank and the space, one a line, in the order of the classes.
  explicit KeyList(const std::string& lines);

  /// Number of classes, the blank and the space included.
  int size() const { return static_cast<int>(texts_.size()); }
  /// The text of a class; the blank's is empty.
  const std::string& text(int label) const { return texts_[static_cast<std::size_t>(label)]; }
  /// The classes whose text is one of these; those that the model lacks are left out.
  std::vector<int> labelsOf(std::span<const std::string_view> texts) const;

 private:
  std::vector<std::string> texts_;
};

}  // namespace pravik::ppocr
