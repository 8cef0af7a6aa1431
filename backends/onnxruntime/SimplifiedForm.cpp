#include "backends/onnxruntime/SimplifiedForm.h"

#include <unicode/translit.h>
#include <unicode/ucnv.h>
#include <unicode/uniset.h>
#include <unicode/uset.h>

#include <memory>

namespace pravik::ppocr {
namespace {

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

}  // namespace

std::string simplifiedForm(const std::string& character) {
  static const icu::UnicodeSet common = simplifiedPrint();
  icu::UnicodeString text = icu::UnicodeString::fromUTF8(character);
  if (common.isEmpty() || common.contains(text.char32At(0))) return character;
  // Each thread has its own: ICU does not promise that one can be shared.
  thread_local const std::unique_ptr<icu::Transliterator> transliterator = toSimplified();
  if (!transliterator) return character;
  transliterator->transliterate(text);
  if (text.countChar32() != 1 || !common.contains(text.char32At(0))) return character;
  std::string simplified;
  return text.toUTF8String(simplified);
}

}  // namespace pravik::ppocr
