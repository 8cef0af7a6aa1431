#include "apps/pravik/Installation.h"

#include <fmt/format.h>
#include <openssl/evp.h>
#include <unicode/uversion.h>

#include <array>
#include <fstream>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <ostream>

#include "PravikVersion.h"
#include "apps/pravik/Answer.h"
#include "apps/pravik/Table.h"
#include "backends/onnxruntime/ModelFiles.h"
#include "backends/zxing/ZXingBarcodeDetector.h"

namespace pravik::cli {
namespace {

struct PinnedModel {
  const char* file;
  const char* sha256;
};

/// The files that tools/setup fetches. Others of the same shape work too, but are worth a remark.
constexpr std::array<PinnedModel, 4> pinnedModels{
    {{detectionModelFile, "30a86f5731181461d08021402766601e4302a9b9b9666be8aff402696339cdff"},
     {recognitionModelFile, "06b3e6af6c59a1ba5d53790ed8c2e4b2de389870b6cf5a97f349f3412cb269c0"},
     {directionModelFile, "491843a3c65de46295864c6815e41127eaa812c4dac1e19c6850ec49da9d3640"},
     {keyListFile, "28b2362ad4ab2dc38769aa72feb535e3a9ddb3fd2a7585a05920e6393b1dc7f7"}}};

std::filesystem::path folderOf(const std::filesystem::path& models) {
  return models.empty() ? defaultModelDirectory() : models;
}

/// In hexadecimal digits; empty when the file cannot be read.
std::string sha256(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
  if (!file || !context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) return {};
  std::array<char, 65536> buffer{};
  while (file.read(buffer.data(), buffer.size()) || file.gcount() > 0)
    EVP_DigestUpdate(context.get(), buffer.data(), static_cast<std::size_t>(file.gcount()));
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  EVP_DigestFinal_ex(context.get(), digest.data(), &length);
  std::string digits;
  for (unsigned int i = 0; i < length; ++i) digits += fmt::format("{:02x}", digest.at(i));
  return digits;
}

std::string icuVersion() {
  UVersionInfo version;
  u_getVersion(version);
  std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
  u_versionToString(version, text.data());
  return text.data();
}

/// The version of a model is its content.
std::string modelVersion(const ModelFileStatus& model) {
  const std::string digest = sha256(model.path);
  if (digest.empty()) return {};
  for (const PinnedModel& pinned : pinnedModels)
    if (model.name == pinned.file && digest == pinned.sha256) return "SHA-256 as pinned";
  return "SHA-256 " + digest + ", not the pinned file";
}

Json toJson(const Part& part) {
  return {{"part", part.name},
          {"version", part.version.empty() ? Json(nullptr) : Json(part.version)},
          {"problem", part.problem.empty() ? Json(nullptr) : Json(part.problem)}};
}

void writeTable(const std::vector<Part>& parts, std::ostream& out) {
  int width = 0;
  for (const Part& part : parts) width = std::max(width, displayWidth(part.name));
  for (const Part& part : parts) {
    out << (part.problem.empty() ? "ok       " : "MISSING  ") << padded(part.name, width + 2) << part.version;
    if (!part.problem.empty()) out << (part.version.empty() ? "" : "  ") << part.problem;
    out << '\n';
  }
}

void writeJson(const std::vector<Part>& parts, bool lines, std::ostream& out) {
  Json array = Json::array();
  for (const Part& part : parts) {
    if (lines) out << text(toJson(part)) << '\n';
    array.push_back(toJson(part));
  }
  if (!lines) out << text(array, true) << '\n';
}

}  // namespace

std::vector<Part> installedParts(const std::filesystem::path& models) {
  std::vector<Part> parts{{"pravik", PravikVersion::fullDescription(), {}},
                          {"ICU", icuVersion(), {}},
                          {"OpenCV", cv::getVersionString(), {}},
                          {"ONNX Runtime", onnxRuntimeVersion(), {}},
                          {"ZXing-C++", ZXingBarcodeDetector::libraryVersion(), {}}};
  for (const ModelFileStatus& model : checkModels(folderOf(models).string()))
    parts.push_back({model.name, modelVersion(model), model.problem});
  return parts;
}

std::vector<std::string> missingModels(const std::filesystem::path& models) {
  const std::filesystem::path folder = folderOf(models);
  std::vector<std::string> missing;
  for (const PinnedModel& model : pinnedModels) {
    std::error_code error;
    const std::filesystem::path path = modelPath(folder.string(), model.file);
    if (!std::filesystem::is_regular_file(path, error)) missing.push_back(path.string() + ": no such file");
  }
  return missing;
}

std::vector<std::string> brokenModels(const std::filesystem::path& models) {
  std::vector<std::string> broken;
  for (const ModelFileStatus& model : checkModels(folderOf(models).string()))
    if (!model.isUsable()) broken.push_back(model.path + ": " + model.problem);
  return broken;
}

ExitStatus reportIncomplete(const std::vector<std::string>& problems, std::ostream& err) {
  err << "pravik: the installation is incomplete:\n";
  for (const std::string& problem : problems) err << "  " << problem << '\n';
  err << "Run " << setupCommand << " to mend it, or name another folder of text models with --models DIR.\n";
  return incompleteInstallation;
}

ExitStatus doctor(const Settings& settings, const Host& host) {
  const std::vector<Part> parts = installedParts(settings.models);
  if (settings.format == Format::table)
    writeTable(parts, host.out);
  else
    writeJson(parts, settings.format == Format::jsonl, host.out);
  std::vector<std::string> problems;
  for (const Part& part : parts)
    if (!part.problem.empty()) problems.push_back(part.name + ": " + part.problem);
  return problems.empty() ? allRecognized : reportIncomplete(problems, host.err);
}

}  // namespace pravik::cli
