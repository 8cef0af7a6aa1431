#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "Records/BankCardInfo.h"
#include "Records/CodeScanResult.h"
#include "Records/IDCardBackInfo.h"
#include "Records/IDCardFrontInfo.h"
#include "Records/OCRScanMode.h"

namespace pravik {

/// The kind of document that a text is expected to come from; `idCard` is either side.
enum class SceneType : std::uint8_t { idCard, idCardFront, idCardBack, bankCard };

/// What a document of any kind says; the alternatives stand in the order of OCRScanMode.
using Record = std::variant<BankCardInfo, IDCardFrontInfo, IDCardBackInfo, CodeScanResult>;

/// A field's value: a text, a flag, or nothing for an absent optional.
using FieldValue = std::variant<std::monostate, std::string, bool>;

/// How a field is shown to people: as it is, masked until asked for, or not at all since another field says the same.
enum class FieldDisplay : std::uint8_t { shown, masked, hidden };

/// One field of a record.
struct RecordField {
  /// As in the record, such as "idNumber".
  std::string_view name;
  /// For people: "公民身份号码" and "Identity number".
  std::string_view chineseLabel;
  std::string_view englishLabel;
  FieldDisplay display;
  /// The field's value in a record of its kind.
  FieldValue (*value)(const Record& record);
};

/// All that depends on the kind of document, but for how it is read.
struct DocumentKind {
  OCRScanMode mode;
  /// The mode's name in the code, "idCardFront", which the scene shares.
  std::string_view modeName;
  /// On the command line and in JSON, "id-front".
  std::string_view commandName;
  /// For people: "身份证正面" and "Identity card, portrait side".
  std::string_view displayName;
  std::string_view englishName;
  /// What the scanner asks for: "将身份证人像面对准此区域".
  std::string_view hint;
  /// What its text is checked against; absent for what has no text, a code.
  std::optional<SceneType> scene;
  /// In the order of the record.
  std::span<const RecordField> fields;

  /// Whether it is a card with text on it, and no code.
  bool isCard() const { return scene.has_value(); }
};

/// Every kind, in the order of OCRScanMode.
std::span<const DocumentKind> documentKinds();
const DocumentKind& documentKind(OCRScanMode mode);
/// The kind that a record is of.
const DocumentKind& documentKind(const Record& record);

}  // namespace pravik
