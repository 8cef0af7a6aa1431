#include "apps/pravik/Installation.h"

#include <openssl/evp.h>
#include <unicode/uversion.h>

#include <array>
#include <fstream>
#include <map>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <ostream>

#include "Records/PravikVersion.h"
#include "Utils/Format.h"
#include "apps/pravik/Table.h"
#include "backends/json/Answer.h"
#include "backends/onnxruntime/ModelFiles.h"
#include "backends/zxing/ZXingBarcodeDetector.h"

namespace pravik::cli {
namespace {

constexpr std::array modelFiles{detectionModelFile, recognitionModelFile, directionModelFile};
/// Written by tools/setup into the folder of the models: the digest and the name of each file, as sha256sum prints
/// them.
constexpr const char* pinnedDigests = "SHA256SUMS";

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
  for (unsigned int i = 0; i < length; ++i) digits += formatted("{:02x}", digest.at(i));
  return digits;
}

std::string icuVersion() {
  UVersionInfo version;
  u_getVersion(version);
  std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
  u_versionToString(version, text.data());
  return text.data();
}

/// The pinned digest of a model by its name.
std::map<std::string, std::string> readPinnedDigests(const std::filesystem::path& folder) {
  std::map<std::string, std::string> pinned;
  std::ifstream file(folder / pinnedDigests);
  for (std::string digest, name; file >> digest >> name;) pinned[name] = digest;
  return pinned;
}

/// The version of a model is its content.
std::string modelVersion(const ModelFileStatus& model, const std::map<std::string, std::string>& pinned) {
  const std::string digest = sha256(model.path);
  if (digest.empty()) return {};
  const auto known = pinned.find(model.name);
  if (known == pinned.end()) return "SHA-256 " + digest;
  return "SHA-256 " + digest + (known->second == digest ? ", as pinned" : ", not the pinned file");
}

Json toJson(const Part& part) {
  return {{"part", part.name},
          {"version", part.version.empty() ? Json(nullptr) : Json(part.version)},
          {"problem", part.problem.empty() ? Json(nullptr) : Json(part.problem)}};
}

const char* state(const Part& part) {
  if (part.problem.empty()) return "ok       ";
  return part.version.empty() ? "MISSING  " : "BROKEN   ";
}

void writeTable(const std::vector<Part>& parts, std::ostream& out) {
  int width = 0;
  for (const Part& part : parts) width = std::max(width, displayWidth(part.name));
  for (const Part& part : parts) {
    out << state(part) << padded(part.name, width + 2) << part.version;
    if (!part.problem.empty()) out << (part.version.empty() ? "" : "  ") << part.problem;
    out << '\n';
  }
}

void writeJson(const std::vector<Part>& parts, bool lines, std::ostream& out) {
  Json array = Json::array();
  for (const Part& part : parts) {
    if (lines) out << jsonText(toJson(part)) << '\n';
    array.push_back(toJson(part));
  }
  if (!lines) out << jsonText(array, true) << '\n';
}

/// An installation brings its models; a source tree fetches them.
const char* remedy() {
  return defaultModelDirectory().parent_path().filename() == "pravik" ? "Install Pravik (libpravik1) anew"
                                                                      : "Run tools/setup";
}

}  // namespace

std::vector<Part> installedParts(const std::filesystem::path& models) {
  std::vector<Part> parts{{"pravik", PravikVersion::fullDescription(), {}},
                          {"ICU", icuVersion(), {}},
                          {"OpenCV", cv::getVersionString(), {}},
                          {"ONNX Runtime", onnxRuntimeVersion(), {}},
                          {"ZXing-C++", ZXingBarcodeDetector::libraryVersion(), {}}};
  const auto pinned = readPinnedDigests(folderOf(models));
  for (const ModelFileStatus& model : checkModels(folderOf(models).string()))
    parts.push_back({model.name, modelVersion(model, pinned), model.problem});
  return parts;
}

std::vector<std::string> missingModels(const std::filesystem::path& models) {
  const std::filesystem::path folder = folderOf(models);
  std::vector<std::string> missing;
  for (const char* file : modelFiles) {
    std::error_code error;
    const std::filesystem::path path = modelPath(folder.string(), file);
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
  err << remedy() << " to mend it, or name another folder of text models with --models DIR.\n";
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
