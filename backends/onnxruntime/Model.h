#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace pravik::ppocr {

/// Numbers in row-major order. `values` keeps alive whatever owns them.
struct Tensor {
  std::vector<std::int64_t> shape;
  std::shared_ptr<const float> values;
};

/// Fresh, zeroed numbers to be filled and then handed to a Tensor.
std::shared_ptr<float> allocateValues(const std::vector<std::int64_t>& shape);

/// A model with one tensor of floats going in (batch, channels, height, width) and one coming out. Threads may share
/// it.
class Model {
 public:
  /// Loads a file. `threadCount` threads work on one run. Throws std::runtime_error that names the file when it
  /// cannot be read, is no model, or has other inputs and outputs, and std::bad_alloc; `outputRank` is the number of
  /// dimensions expected.
  Model(const std::string& path, int threadCount, std::size_t outputRank);
  ~Model();
  Model(Model&&) noexcept;
  Model& operator=(Model&&) noexcept;

  /// Throws std::runtime_error when the model refuses the input, std::bad_alloc when there is no memory.
  Tensor run(const Tensor& input) const;

  /// A text that the file carries under this name; empty when it carries none.
  std::string metadata(const char* name) const;

  /// The shape of the output as the file declares it; -1 where it depends on the input.
  const std::vector<std::int64_t>& outputShape() const { return outputShape_; }

 private:
  struct Session;
  std::unique_ptr<Session> session_;
  std::vector<std::int64_t> outputShape_;
};

}  // namespace pravik::ppocr
