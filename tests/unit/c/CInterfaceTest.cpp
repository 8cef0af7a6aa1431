#include <gtest/gtest.h>
#include <pravik_c.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

// NOLINTBEGIN(cppcoreguidelines-*): memory as the operators of a program get it.
namespace {

/// A larger piece of memory is not to be had on this thread.
thread_local std::size_t largestAllocation = std::numeric_limits<std::size_t>::max();

}  // namespace

// Also those of the library: there is one operator for the whole process.
void* operator new(std::size_t size) {
  void* memory = size > largestAllocation ? nullptr : std::malloc(std::max<std::size_t>(size, 1));
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

// NOLINTEND(cppcoreguidelines-*)

namespace {

using Handle = std::unique_ptr<pravik_handle, decltype(&pravik_destroy)>;
using CallResult = std::unique_ptr<pravik_result, decltype(&pravik_result_free)>;
using Lines = std::vector<std::string>;

constexpr int width = 64;
constexpr int height = 48;
const std::vector<std::uint8_t> blank(width* height, 200);

constexpr auto nothing = R"({"observations":[]})";

Handle handle() {
  return {pravik_create(nullptr, 1), pravik_destroy};
}

CallResult owned(pravik_result* result) {
  return {result, pravik_result_free};
}

CallResult readBlank(const Handle& handle, pravik_kind kind) {
  return owned(
      pravik_recognize_pixels(handle.get(), kind, blank.data(), width, height, std::size_t{width}, PRAVIK_GREY8));
}

void collect(void* lines, pravik_log_level /*level*/, const char* line) {
  static_cast<Lines*>(lines)->emplace_back(line);
  // What a listener does itself is not logged to it.
  owned(pravik_parse(PRAVIK_ID_FRONT, nothing));
}

int linesWith(const Lines& lines, const std::string& text) {
  return static_cast<int>(
      std::ranges::count_if(lines, [&](const auto& line) { return line.find(text) != std::string::npos; }));
}

TEST(CInterface, AnswersWhatIsWrong) {
  const Handle handle = ::handle();
  const Handle elsewhere{pravik_create("no/such/folder\xFF", 1), pravik_destroy};
  pravik_handle* h = handle.get();
  const auto pixels = [&](int w, int h2, std::size_t stride, int format) {
    return pravik_recognize_pixels(h, PRAVIK_CODE, blank.data(), w, h2, stride, format);
  };
  constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
  constexpr int largest = std::numeric_limits<int>::max();
  const struct {
    pravik_status status;
    std::string code;
    std::vector<pravik_result*> results;
  } cases[]{
      {PRAVIK_INTERNAL_ERROR, "internal_error", {nullptr}},
      {PRAVIK_INVALID_ARGUMENT,
       "invalid_argument",
       {pravik_recognize_file(nullptr, PRAVIK_CODE, "a.jpg"), pravik_recognize_file(h, PRAVIK_CODE, nullptr),
        pravik_recognize_file(h, 7, "a.jpg"), pravik_recognize_memory(h, PRAVIK_CODE, nullptr, 0),
        pravik_recognize_pixels(h, PRAVIK_CODE, nullptr, 1, 1, 1, PRAVIK_GREY8), pixels(0, 1, 1, PRAVIK_GREY8),
        pixels(1, -1, 1, PRAVIK_GREY8), pixels(2, 1, 7, PRAVIK_BGRA8), pixels(1, 3, most / 2, PRAVIK_GREY8),
        pixels(1, 1, 4, 5), pixels(2, 1, 5, PRAVIK_RGB8), pravik_parse(PRAVIK_TEXT, nothing), pravik_parse(-1, nothing),
        pravik_parse(PRAVIK_ID_BACK, nullptr)}},
      {PRAVIK_INVALID_IMAGE,
       "invalid_image",
       {pixels(largest, 1, std::size_t{largest}, PRAVIK_GREY8), pixels(largest, 1, most / 4, PRAVIK_BGR8),
        pravik_recognize_file(h, PRAVIK_CODE, "no/such\xFF file"), pravik_recognize_memory(h, PRAVIK_CODE, "GIF", 3),
        pravik_recognize_memory(h, PRAVIK_CODE, "GIF", most)}},
      {PRAVIK_INVALID_INPUT, "invalid_input", {pravik_parse(PRAVIK_ID_BACK, "{\"observations\":[\"\xFF\"]}")}},
      {PRAVIK_INSUFFICIENT_TEXT,
       "insufficient_text",
       {pravik_parse(PRAVIK_ID_BACK, nothing), readBlank(handle, PRAVIK_CODE).release()}},
      {PRAVIK_RECOGNITION_FAILED, "recognition_failed", {readBlank(elsewhere, PRAVIK_TEXT).release()}},
  };
  for (const auto& [status, code, results] : cases) {
    for (pravik_result* result : results) {
      const std::string json = pravik_result_json(result);
      EXPECT_EQ(pravik_result_status(result), status) << json;
      EXPECT_EQ(pravik_result_error_code(result), code) << json;
      EXPECT_NE(json.find('"' + code + '"'), std::string::npos) << json;
      EXPECT_NE(json.find(pravik_result_error_message(result)), std::string::npos) << json;
      EXPECT_EQ(json.find('\xFF'), std::string::npos) << json;
      pravik_result_free(result);
    }
  }
  EXPECT_EQ(pravik_create(nullptr, -1), nullptr);
  EXPECT_EQ(pravik_set_log(nullptr, PRAVIK_LOG_INFO, collect, nullptr), PRAVIK_INVALID_ARGUMENT);
  EXPECT_EQ(pravik_set_log(h, 6, collect, nullptr), PRAVIK_INVALID_ARGUMENT);
  for (const pravik_status status :
       {pravik_set_report(nullptr, 1), pravik_set_report(h, -1), pravik_set_date(nullptr, ""),
        pravik_set_date(h, nullptr), pravik_set_date(h, "2026-02-29"), pravik_set_date(h, "2026-1-311"),
        pravik_set_date(h, "2026-01-31 "), pravik_set_language(nullptr, "en"), pravik_set_language(h, nullptr),
        pravik_set_language(h, "EN")})
    EXPECT_EQ(status, PRAVIK_INVALID_ARGUMENT);
}

TEST(CInterface, APictureWithoutACardSaysSo) {
  const Handle handle = ::handle();
  EXPECT_EQ(pravik_set_language(handle.get(), "en"), PRAVIK_OK);
  const CallResult result = readBlank(handle, PRAVIK_CARDS);
  EXPECT_EQ(pravik_result_status(result.get()), PRAVIK_INSUFFICIENT_TEXT);
  EXPECT_STREQ(pravik_result_error_message(result.get()),
               "the picture is too small to make out the print: use a larger one, or move closer");
  EXPECT_EQ(std::string(pravik_result_json(result.get())).rfind(R"({"kind":"cards","cards":[],"report":)", 0), 0U);
}

TEST(CInterface, TellsOfALackOfMemory) {
  const std::string text = '"' + std::string(100'000, 'a');
  largestAllocation = 10'000;
  const CallResult result = owned(pravik_parse(PRAVIK_ID_FRONT, text.c_str()));
  largestAllocation = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(pravik_result_status(result.get()), PRAVIK_INTERNAL_ERROR) << pravik_result_json(result.get());
}

TEST(CInterface, AHandleHearsTheLinesOfItsOwnCallsAtItsOwnLevel) {
  constexpr int calls = 3;
  const Handle codes = handle(), cards = handle(), silent = handle();
  Lines codeLines, cardLines;
  testing::internal::CaptureStdout();
  EXPECT_EQ(pravik_set_log(codes.get(), PRAVIK_LOG_INFO, collect, &codeLines), PRAVIK_OK);
  EXPECT_EQ(pravik_set_log(cards.get(), PRAVIK_LOG_WARNING, collect, &cardLines), PRAVIK_OK);
  std::thread other([&] {
    for (int i = 0; i < calls; ++i) {
      readBlank(codes, PRAVIK_CODE);
      readBlank(silent, PRAVIK_CODE);
    }
  });
  for (int i = 0; i < calls; ++i) {
    readBlank(cards, PRAVIK_CODE);
    readBlank(cards, PRAVIK_ID_FRONT);
  }
  other.join();
  EXPECT_EQ(linesWith(codeLines, "[INFO]"), calls);
  EXPECT_EQ(codeLines.size(), std::size_t{calls});
  EXPECT_EQ(linesWith(cardLines, "[WARN]"), calls);
  EXPECT_EQ(cardLines.size(), std::size_t{calls});
  EXPECT_EQ(pravik_set_log(codes.get(), PRAVIK_LOG_NONE, collect, &codeLines), PRAVIK_OK);
  readBlank(codes, PRAVIK_CODE);
  EXPECT_EQ(codeLines.size(), std::size_t{calls});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(CInterface, ASharedHandleHasSettingsAndAnEndOfItsOwn) {
  Handle first = handle();
  EXPECT_EQ(pravik_set_language(first.get(), "en"), PRAVIK_OK);
  const Handle second{pravik_share(first.get()), pravik_destroy};
  EXPECT_EQ(pravik_set_language(second.get(), "zh"), PRAVIK_OK);
  EXPECT_STREQ(pravik_result_error_message(readBlank(first, PRAVIK_CODE).get()), "no QR code or bar code was found");
  EXPECT_STREQ(pravik_result_error_message(readBlank(second, PRAVIK_CODE).get()), "没有找到二维码或条形码");
  EXPECT_EQ(pravik_cancel(first.get()), PRAVIK_OK);
  for (const pravik_kind kind : {PRAVIK_ID_FRONT, PRAVIK_BANK_CARD, PRAVIK_CODE, PRAVIK_TEXT, PRAVIK_CARDS})
    EXPECT_EQ(pravik_result_status(readBlank(first, kind).get()), PRAVIK_CANCELLED) << kind;
  first.reset();
  EXPECT_EQ(pravik_result_status(readBlank(second, PRAVIK_CODE).get()), PRAVIK_INSUFFICIENT_TEXT);
  EXPECT_EQ(pravik_share(nullptr), nullptr);
  EXPECT_EQ(pravik_cancel(nullptr), PRAVIK_INVALID_ARGUMENT);
}

TEST(CInterface, TellsTheWordsForWhatStandsInTheAnswers) {
  const struct {
    const char* language;
    std::vector<const char*> parts;
  } cases[]{
      {"zh", {R"("idNumber":{"label":"公民身份号码","display":"masked"})", R"("luhn":"校验位错误")"}},
      {"en",
       {R"("id-back":{"label":"Identity card, emblem side")",
        R"("birthDay":{"label":"Day of birth","display":"hidden"})",
        R"("no_code_found":"no QR code or bar code was found")", R"("cancelled":"the reading was called off")",
        R"("blurred":")"}},
      {"fr", {R"("code":"invalid_argument")"}},
      {nullptr, {R"("code":"invalid_argument")"}},
  };
  for (const auto& [language, parts] : cases) {
    const CallResult result = owned(pravik_wordings(language));
    for (const char* part : parts)
      EXPECT_NE(std::string(pravik_result_json(result.get())).find(part), std::string::npos) << part;
  }
}

TEST(CInterface, ReadsPixelsInAnyOrderOfTheirChannels) {
  const Handle handle = ::handle();
  const std::vector<std::uint8_t> pixels(std::size_t{width} * height * 4, 128);
  for (const auto& [format, bytes] :
       {std::pair{PRAVIK_BGRA8, 4}, {PRAVIK_BGR8, 3}, {PRAVIK_RGB8, 3}, {PRAVIK_RGBA8, 4}})
    EXPECT_EQ(
        pravik_result_status(owned(pravik_recognize_pixels(handle.get(), PRAVIK_CODE, pixels.data(), width, height,
                                                           static_cast<std::size_t>(width * bytes), format))
                                 .get()),
        PRAVIK_INSUFFICIENT_TEXT);
}

TEST(CInterface, HandlesComeAndGoOnManyThreads) {
  const Handle shared = handle();
  const auto work = [&](int thread) {
    for (int round = 0; round < 3; ++round) {
      const Handle own = handle();
      Lines lines;
      pravik_set_log(own.get(), 2 + thread, collect, &lines);
      pravik_set_log(shared.get(), PRAVIK_LOG_DEBUG, [](void*, pravik_log_level, const char*) {}, nullptr);
      EXPECT_EQ(pravik_result_status(readBlank(own, PRAVIK_CODE).get()), PRAVIK_INSUFFICIENT_TEXT);
      EXPECT_EQ(pravik_result_status(readBlank(shared, PRAVIK_ID_BACK).get()), PRAVIK_INSUFFICIENT_TEXT);
      EXPECT_EQ(lines.empty(), thread == 0);
    }
  };
  std::array<std::thread, 3> threads;
  for (int thread = 0; std::thread & started : threads) started = std::thread(work, thread++);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
