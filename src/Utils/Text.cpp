#include "Utils/Text.h"

#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>

namespace pravik {

namespace {

/// A code point and the bytes it was read from.
struct CodePoint {
  char32_t value;
  std::string_view bytes;
};

/// The longest sequence of bytes that stands for one code point.
constexpr std::size_t maximumSequence = 4;

/// The first code point of a text that is not empty.
CodePoint firstCodePoint(std::string_view text) {
  std::array<std::uint8_t, maximumSequence> bytes{};
  const std::string_view head = text.substr(0, maximumSequence);
  std::memcpy(bytes.data(), head.data(), head.size());
  std::size_t end = 0;
  UChar32 value = 0;
  U8_NEXT_OR_FFFD(bytes, end, head.size(), value);
  return {static_cast<char32_t>(value), text.substr(0, end)};
}

/// The last code point of a text that is not empty.
CodePoint lastCodePoint(std::string_view text) {
  std::array<std::uint8_t, maximumSequence> bytes{};
  const std::string_view tail = text.substr(text.size() - std::min(text.size(), maximumSequence));
  std::memcpy(bytes.data(), tail.data(), tail.size());
  const std::uint8_t* characters = bytes.data();
  auto start = static_cast<std::int32_t>(tail.size());
  UChar32 value = 0;
  U8_PREV_OR_FFFD(characters, 0, start, value);
  return {static_cast<char32_t>(value), text.substr(text.size() - tail.size() + static_cast<std::size_t>(start))};
}

template <class Visit>
void forEachCodePoint(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const CodePoint point = firstCodePoint(text);
    visit(point);
    text.remove_prefix(point.bytes.size());
  }
}

bool isSpaceOrTab(char32_t point) {
  return point == U'\t' || u_charType(static_cast<UChar32>(point)) == U_SPACE_SEPARATOR;
}

template <class Drop>
std::string_view trimmedStartWhere(std::string_view text, Drop drop) {
  while (!text.empty()) {
    const CodePoint first = firstCodePoint(text);
    if (!drop(first.value)) break;
    text.remove_prefix(first.bytes.size());
  }
  return text;
}

template <class Drop>
std::string_view trimmedWhere(std::string_view text, Drop drop) {
  text = trimmedStartWhere(text, drop);
  while (!text.empty()) {
    const CodePoint last = lastCodePoint(text);
    if (!drop(last.value)) break;
    text.remove_suffix(last.bytes.size());
  }
  return text;
}

/// Whether a code point is one of a few.
auto isOneOf(std::u32string_view codePoints) {
  return [codePoints](char32_t point) { return codePoints.find(point) != std::u32string_view::npos; };
}

/// The ASCII digit of a decimal digit of any script.
std::optional<char> asciiDigit(char32_t point) {
  const std::int32_t value = u_charDigitValue(static_cast<UChar32>(point));
  if (value < 0) return std::nullopt;
  return static_cast<char>('0' + value);
}

/// Calls `visit` with the end of each character. Throws std::runtime_error when ICU's data is missing.
template <class Visit>
void forEachCharacterEnd(std::string_view text, Visit visit) {
  UErrorCode status = U_ZERO_ERROR;
  // Making one costs a thousand times more than setting its text.
  thread_local const std::unique_ptr<icu::BreakIterator> boundaries(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  const icu::LocalUTextPointer bytes(
      utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
  if (boundaries) boundaries->setText(bytes.getAlias(), status);
  if (!boundaries || U_FAILURE(status)) throw std::runtime_error("缺少 Unicode 字符边界数据");
  for (std::int32_t end = boundaries->next(); end != icu::BreakIterator::DONE; end = boundaries->next())
    visit(static_cast<std::size_t>(end));
}

}  // namespace

std::vector<std::string_view> characters(std::string_view text) {
  std::vector<std::string_view> result;
  std::size_t start = 0;
  forEachCharacterEnd(text, [&](std::size_t end) {
    result.push_back(text.substr(start, end - start));
    start = end;
  });
  return result;
}

std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  forEachCharacterEnd(text, [&](std::size_t) { ++count; });
  return count;
}

std::u32string codePoints(std::string_view text) {
  std::u32string points;
  points.reserve(text.size());
  forEachCodePoint(text, [&](const CodePoint& point) { points += point.value; });
  return points;
}

std::string utf8(std::u32string_view codePoints) {
  std::string text;
  for (const char32_t point : codePoints) {
    std::array<char, maximumSequence> bytes{};
    std::size_t end = 0;
    U8_APPEND_UNSAFE(bytes, end, point);
    text.append(bytes.data(), end);
  }
  return text;
}

bool isIdeograph(char32_t codePoint) {
  return u_hasBinaryProperty(static_cast<UChar32>(codePoint), UCHAR_IDEOGRAPHIC) != 0;
}

std::string_view trimmed(std::string_view text) {
  return trimmedWhere(text, isSpaceOrTab);
}

std::string_view trimmed(std::string_view text, std::u32string_view codePoints) {
  return trimmedWhere(text, isOneOf(codePoints));
}

std::string_view trimmedStart(std::string_view text, std::u32string_view codePoints) {
  return trimmedStartWhere(text, isOneOf(codePoints));
}

std::vector<std::string_view> splitAtWhitespace(std::string_view text) {
  std::vector<std::string_view> pieces;
  const char* start = text.data();
  const auto endPiece = [&](const char* end) {
    if (end != start) pieces.emplace_back(start, static_cast<std::size_t>(end - start));
  };
  forEachCodePoint(text, [&](const CodePoint& point) {
    if (!isSpaceOrTab(point.value)) return;
    endPiece(point.bytes.data());
    start = point.bytes.data() + point.bytes.size();
  });
  endPiece(text.data() + text.size());
  return pieces;
}

std::vector<std::string_view> splitAtLineFeeds(std::string_view text) {
  std::vector<std::string_view> lines;
  for (auto end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  lines.push_back(text);
  return lines;
}

std::string asciiDigits(std::string_view text) {
  std::string digits;
  forEachCodePoint(text, [&](const CodePoint& point) {
    if (const auto digit = asciiDigit(point.value)) digits += *digit;
  });
  return digits;
}

std::string withAsciiDigits(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  forEachCodePoint(text, [&](const CodePoint& point) {
    if (const auto digit = asciiDigit(point.value))
      result += *digit;
    else
      result += point.bytes;
  });
  return result;
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool containsAny(std::string_view text, std::span<const std::string_view> parts) {
  return std::ranges::any_of(parts, [text](std::string_view part) { return contains(text, part); });
}

std::string replacingAll(std::string_view text, std::string_view part, std::string_view replacement) {
  std::string result;
  result.reserve(text.size());
  for (auto found = text.find(part); found != std::string_view::npos; found = text.find(part)) {
    result += text.substr(0, found);
    result += replacement;
    text.remove_prefix(found + part.size());
  }
  return result += text;
}

std::string removingAll(std::string_view text, std::string_view part) {
  return replacingAll(text, part, {});
}

std::string joined(std::span<const std::string> pieces, std::string_view separator) {
  std::string result;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (i > 0) result += separator;
    result += pieces[i];
  }
  return result;
}

std::string uppercased(std::string_view text) {
  std::string result;
  icu::StringByteSink<std::string> sink(&result);
  UErrorCode status = U_ZERO_ERROR;
  icu::CaseMap::utf8ToUpper("", 0, text, sink, nullptr, status);
  return result;
}

std::string lowercased(std::string_view text) {
  std::string result;
  icu::StringByteSink<std::string> sink(&result);
  UErrorCode status = U_ZERO_ERROR;
  icu::CaseMap::utf8ToLower("", 0, text, sink, nullptr, status);
  return result;
}

}  // namespace pravik
