#include "Utils/ChineseText.h"

#include <unicode/translit.h>
#include <unicode/ucnv.h>
#include <unicode/uniset.h>
#include <unicode/uset.h>

#include <algorithm>
#include <memory>

#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

constexpr std::string_view dotPattern = R"((?<=\p{Han}) *[.•‧ㆍ・．·] *(?=\p{Han}))";
constexpr std::string_view middleDot = "·";

/// All characters of GB 2312; empty when ICU was built without its table.
icu::UnicodeSet simplifiedPrint() {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open("ibm-1383_P110-1999", &status);
  icu::UnicodeSet characters;
  if (U_SUCCESS(status)) ucnv_getUnicodeSet(converter, characters.toUSet(), UCNV_ROUNDTRIP_SET, &status);
  ucnv_close(converter);
  return characters;
}

std::unique_ptr<icu::Transliterator> toSimplified() {
  UErrorCode status = U_ZERO_ERROR;
  return std::unique_ptr<icu::Transliterator>(
      icu::Transliterator::createInstance("Traditional-Simplified", UTRANS_FORWARD, status));
}

char32_t simplifiedForm(char32_t character) {
  if (!isIdeograph(character)) return character;
  static const icu::UnicodeSet common = simplifiedPrint();
  if (common.isEmpty() || common.contains(static_cast<UChar32>(character))) return character;
  // Each thread has its own: ICU does not promise that one can be shared.
  thread_local const std::unique_ptr<icu::Transliterator> transliterator = toSimplified();
  if (!transliterator) return character;
  icu::UnicodeString text(static_cast<UChar32>(character));
  transliterator->transliterate(text);
  const UChar32 simplified = text.char32At(0);
  return text.countChar32() == 1 && common.contains(simplified) ? static_cast<char32_t>(simplified) : character;
}

}  // namespace

std::string withSimplifiedCharacters(std::string_view text) {
  std::u32string points = codePoints(text);
  std::ranges::transform(points, points.begin(), simplifiedForm);
  return utf8(points);
}

std::string withMiddleDots(std::string_view text) {
  return RegexHelper::replace(dotPattern, text, middleDot);
}

}  // namespace pravik
