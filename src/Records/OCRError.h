#pragma once

#include <cstdint>
#include <exception>
#include <map>
#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace pravik {

/// The one error of every public operation: a value that can also be thrown. Two errors are equal when they are
/// the same case with the same texts.
class OCRError : public std::exception {
 public:
  enum class Case : std::uint8_t {
    recognitionFailed,
    parseFailure,
    sceneMismatch,
    invalidImage,
    insufficientText,
    cameraPermissionDenied,
    photoLibraryPermissionDenied,
    cancelled
  };

  /// The text engine failed; `reason` is its own text.
  static OCRError recognitionFailed(std::string reason) { return OCRError(Case::recognitionFailed, std::move(reason)); }
  /// A field could not be parsed.
  static OCRError parseFailure(std::string field) { return OCRError(Case::parseFailure, std::move(field)); }
  /// The picture shows another kind of document than the one asked for; both are display names.
  static OCRError sceneMismatch(std::string expected, std::string detected) {
    return OCRError(Case::sceneMismatch, std::move(expected), std::move(detected));
  }
  static OCRError invalidImage() { return OCRError(Case::invalidImage); }
  static OCRError insufficientText() { return OCRError(Case::insufficientText); }
  static OCRError cameraPermissionDenied() { return OCRError(Case::cameraPermissionDenied); }
  static OCRError photoLibraryPermissionDenied() { return OCRError(Case::photoLibraryPermissionDenied); }
  static OCRError cancelled() { return OCRError(Case::cancelled); }

  Case kind() const { return kind_; }
  /// A stable name in snake case, such as "scene_mismatch".
  std::string errorCode() const;
  /// The text shown to users.
  std::string errorDescription() const;
  /// The library's version, the error's code and its texts, for a crash or analytics report.
  std::map<std::string, std::string> reportContext() const;
  /// The same text as errorDescription().
  const char* what() const noexcept override { return description_.c_str(); }

  bool operator==(const OCRError& other) const {
    return kind_ == other.kind_ && first_ == other.first_ && second_ == other.second_;
  }

 private:
  explicit OCRError(Case kind, std::string first = {}, std::string second = {});

  Case kind_;
  std::string first_;
  std::string second_;
  std::string description_;
};

/// A value, or the error that kept it from being.
template <class T>
using Result = tl::expected<T, OCRError>;

}  // namespace pravik
