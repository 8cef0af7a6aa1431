#include "backends/onnxruntime/Model.h"

#include <onnxruntime_cxx_api.h>
#include <onnxruntime_session_options_config_keys.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <mutex>
#include <new>
#include <numeric>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace pravik::ppocr {
namespace {

constexpr std::size_t inputRank = 4;

/// An environment with one arena for all models: what finding text is done with, reading it takes.
std::shared_ptr<Ort::Env> makeEnvironment() {
  const auto environment = std::make_shared<Ort::Env>(ORT_LOGGING_LEVEL_FATAL, "pravik");
  constexpr int usual = -1;
  try {
    environment->CreateAndRegisterAllocator(Ort::MemoryInfo::CreateCpu(OrtArenaAllocator, OrtMemTypeDefault),
                                            Ort::ArenaCfg(0, usual, usual, usual));
  } catch (const Ort::Exception&) {
    // A host that uses ONNX Runtime too shares the environment, and its arena when it has registered one.
  }
  return environment;
}

/// The one environment of the process, for as long as there are models: with the last of them its memory goes.
std::shared_ptr<Ort::Env> environment() {
  static std::mutex mutex;
  static std::weak_ptr<Ort::Env> current;
  const std::lock_guard lock(mutex);
  auto environment = current.lock();
  if (!environment) current = environment = makeEnvironment();
  return environment;
}

std::vector<char> readFile(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) throw std::runtime_error("the model file " + path + " is missing");
  std::ifstream file(path, std::ios::binary);
  std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  if (!std::filesystem::is_regular_file(path, ignored) || !file || bytes.empty())
    throw std::runtime_error("the model file " + path + " cannot be read");
  return bytes;
}

Ort::SessionOptions sessionOptions(int threadCount) {
  Ort::SessionOptions options;
  options.SetIntraOpNumThreads(threadCount);
  options.SetGraphOptimizationLevel(GraphOptimizationLevel::ORT_ENABLE_ALL);
  // Every picture has other sizes: a remembered memory plan would not fit the next one.
  options.DisableMemPattern();
  options.AddConfigEntry(kOrtSessionOptionsConfigUseEnvAllocators, "1");
  // Threads that spin while they wait take the core from all others that have work, and gain nothing.
  options.AddConfigEntry(kOrtSessionOptionsConfigAllowIntraOpSpinning, "0");
  return options;
}

std::vector<std::int64_t> floatShape(const Ort::TypeInfo& info) {
  if (info.GetONNXType() != ONNX_TYPE_TENSOR) return {};
  const auto tensor = info.GetTensorTypeAndShapeInfo();
  return tensor.GetElementType() == ONNX_TENSOR_ELEMENT_DATA_TYPE_FLOAT ? tensor.GetShape()
                                                                        : std::vector<std::int64_t>{};
}

std::size_t count(const std::vector<std::int64_t>& shape) {
  return static_cast<std::size_t>(std::accumulate(shape.begin(), shape.end(), std::int64_t{1}, std::multiplies<>()));
}

/// ONNX Runtime tells that there is no memory only in words.
bool tellsOfMemory(const Ort::Exception& error) {
  constexpr std::array<std::string_view, 3> words{"Failed to allocate memory", "bad_alloc", "bad allocation"};
  return std::ranges::any_of(words, [&](std::string_view text) {
    return std::string_view(error.what()).find(text) != std::string_view::npos;
  });
}

}  // namespace

struct Model::Session {
  std::shared_ptr<Ort::Env> env = environment();
  Ort::Session session{nullptr};
  std::string inputName;
  std::string outputName;
};

std::shared_ptr<float> allocateValues(const std::vector<std::int64_t>& shape) {
  return {new float[count(shape)](), std::default_delete<float[]>()};
}

Model::Model(const std::string& path, int threadCount, std::size_t outputRank) : session_(std::make_unique<Session>()) {
  const auto bytes = readFile(path);
  try {
    session_->session = Ort::Session(*session_->env, bytes.data(), bytes.size(), sessionOptions(threadCount));
  } catch (const Ort::Exception& error) {
    if (tellsOfMemory(error)) throw std::bad_alloc();
    throw std::runtime_error("the model file " + path + " is damaged: " + error.what());
  }
  const auto& session = session_->session;
  if (session.GetInputCount() == 1 && session.GetOutputCount() == 1)
    outputShape_ = floatShape(session.GetOutputTypeInfo(0));
  if (outputShape_.size() != outputRank || floatShape(session.GetInputTypeInfo(0)).size() != inputRank)
    throw std::runtime_error("the model file " + path + " holds another kind of model");
  const Ort::AllocatorWithDefaultOptions allocator;
  session_->inputName = session.GetInputNameAllocated(0, allocator).get();
  session_->outputName = session.GetOutputNameAllocated(0, allocator).get();
}

Model::~Model() = default;
Model::Model(Model&&) noexcept = default;
Model& Model::operator=(Model&&) noexcept = default;

Tensor Model::run(const Tensor& input) const {
  static const auto memory = Ort::MemoryInfo::CreateCpu(OrtDeviceAllocator, OrtMemTypeDefault);
  const char* inputName = session_->inputName.c_str();
  const char* outputName = session_->outputName.c_str();
  // ONNX Runtime takes a mutable pointer but only reads its inputs.
  const auto value = Ort::Value::CreateTensor<float>(memory, const_cast<float*>(input.values.get()), count(input.shape),
                                                     input.shape.data(), input.shape.size());
  try {
    auto outputs = session_->session.Run(Ort::RunOptions{nullptr}, &inputName, &value, 1, &outputName, 1);
    const auto output = std::make_shared<Ort::Value>(std::move(outputs.front()));
    return {output->GetTensorTypeAndShapeInfo().GetShape(), {output, output->GetTensorData<float>()}};
  } catch (const Ort::Exception& error) {
    if (tellsOfMemory(error)) throw std::bad_alloc();
    throw;
  }
}

std::string Model::metadata(const char* name) const {
  const Ort::AllocatorWithDefaultOptions allocator;
  const auto text = session_->session.GetModelMetadata().LookupCustomMetadataMapAllocated(name, allocator);
  return text ? text.get() : std::string();
}

}  // namespace pravik::ppocr
