#pragma GCC visibility push(default)
#include "c/pravik_c.h"
#pragma GCC visibility pop

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>

#include "Pravik.h"
#include "Reading/TextToRecord.h"
#include "Utils/Day.h"
#include "backends/DefaultPlatform.h"
#include "backends/json/Answer.h"
#include "backends/json/ObservationsJson.h"
#include "backends/json/Wording.h"
#include "backends/opencv/Mat.h"
#include "backends/opencv/files/PictureHeader.h"
#include "c/HandleLog.h"

namespace pravik {

/// How a handle reads and tells.
struct HandleSettings {
  ReadingLimits limits;
  bool tellsReport = false;
  /// Of the messages; absent for those of the JSON.
  std::optional<Language> language;
};

}  // namespace pravik

struct pravik_handle {
  pravik::Platform platform;
  std::stop_source stop;
  pravik::HandleLog log;
  std::mutex settingsMutex;
  pravik::HandleSettings settings;
};

/// What a call gave, as texts that the caller may hold on to.
struct pravik_result {
  explicit pravik_result(const pravik::Answer& answer, std::optional<pravik::Language> language = {});

  pravik_status status = PRAVIK_OK;
  std::string json;
  /// Both empty without an error.
  std::string errorCode;
  std::string errorMessage;
};

namespace {

using namespace pravik;

/// The error codes in the order of their statuses, from 1 on.
constexpr std::array<std::string_view, PRAVIK_CANCELLED> errorCodes{
    "recognition_failed", "parse_failure",    "scene_mismatch", "invalid_image", "insufficient_text",
    "invalid_input",      "invalid_argument", "internal_error", "cancelled"};

pravik_status statusOf(std::string_view errorCode) {
  const auto found = std::ranges::find(errorCodes, errorCode);
  return found == errorCodes.end() ? PRAVIK_INTERNAL_ERROR : static_cast<pravik_status>(found - errorCodes.begin() + 1);
}

/// {"error":{"code":…,"message":…}} for what is no error of the library proper.
Answer errorAnswer(pravik_status status, const std::string& message) {
  return {{"error", {{"code", errorCodes[static_cast<std::size_t>(status) - 1]}, {"message", message}}}};
}

Answer invalidArgumentAnswer(const std::string& message) {
  return errorAnswer(PRAVIK_INVALID_ARGUMENT, message);
}

Answer internalErrorAnswer(const std::string& message) {
  return errorAnswer(PRAVIK_INTERNAL_ERROR, message);
}

/// What a pravik_kind stands for; text and cards are no kind of document.
struct Kind {
  std::string_view name;
  const DocumentKind* document;
  bool isEveryCard = false;
};

/// In the order of pravik_kind.
const std::array<Kind, 6>& kinds() {
  static const auto kind = [](OCRScanMode mode) { return Kind{documentKind(mode).commandName, &documentKind(mode)}; };
  static const std::array<Kind, 6> all{kind(OCRScanMode::idCardFront), kind(OCRScanMode::idCardBack),
                                       kind(OCRScanMode::bankCard),    kind(OCRScanMode::qrCode),
                                       Kind{"text", nullptr},          Kind{"cards", nullptr, true}};
  return all;
}

/// Null for a number that is no kind.
const Kind* kindOf(int number) {
  const auto index = static_cast<std::size_t>(number);
  return index < kinds().size() ? &kinds()[index] : nullptr;
}

HandleSettings settingsOf(pravik_handle& handle) {
  const std::scoped_lock lock(handle.settingsMutex);
  return handle.settings;
}

/// Changes a setting, given that there is a handle and what it is to be can be.
template <class Change>
pravik_status set(pravik_handle* handle, bool canBe, const Change& change) {
  if (handle == nullptr || !canBe) return PRAVIK_INVALID_ARGUMENT;
  const std::scoped_lock lock(handle->settingsMutex);
  change(handle->settings);
  return PRAVIK_OK;
}

Answer recognized(const pravik_handle& handle, const HandleSettings& settings, const Kind& kind, const Image& image) {
  // One of its own for every call, so that what a failed photo gave is not kept.
  const PravikSDK sdk(handle.platform);
  if (kind.isEveryCard) {
    const auto cards = syncWait(sdk.recognizeCards(image, settings.limits));
    return cards ? cardsAnswer(*cards) : answerOf(cards.error());
  }
  if (kind.document == nullptr)
    return textAnswer(syncWait(sdk.recognizeRawText(image, SceneType::idCard, settings.limits)));
  const auto reading = syncWait(sdk.read(image, kind.document->mode, settings.limits));
  if (!reading) return answerOf(reading.error());
  Answer answer = readingAnswer(*reading);
  if (settings.tellsReport && reading->record && kind.document->isCard()) answer.update(reportJson(reading->report));
  return answer;
}

/// An answer's error, or that of its first card when none was read; null when something was.
Answer errorIn(const Answer& answer) {
  if (!answer.contains("cards")) return answer.contains("error") ? answer : Answer();
  const Json& cards = answer["cards"];
  if (std::ranges::any_of(cards, isRecognized)) return {};
  if (!cards.empty()) return cards.front();
  Answer none = answerOf(OCRError::insufficientText());
  none["report"] = answer["report"];
  return none;
}

Answer parsed(const DocumentKind& kind, const Observations& observations) {
  const std::optional<Record> record = recordIn(observations, kind.mode);
  return record ? recordAnswer(*record) : answerOf(OCRError::insufficientText());
}

/// Makes the result of a call, whatever it throws; null when there is not even memory for that.
template <class Call>
pravik_result* resultOf(const Call& call, std::optional<Language> language = {}) noexcept {
  try {
    try {
      return std::make_unique<pravik_result>(call(), language).release();
    } catch (const std::bad_alloc&) {
      return std::make_unique<pravik_result>(internalErrorAnswer("not enough memory")).release();
    } catch (const std::exception& error) {
      return std::make_unique<pravik_result>(internalErrorAnswer(error.what())).release();
    } catch (...) {
      return std::make_unique<pravik_result>(internalErrorAnswer("an unknown fault")).release();
    }
  } catch (...) {
    return nullptr;
  }
}

/// Loads a picture with `load` and reads it.
template <class Load>
Answer recognizedAnswer(const pravik_handle& handle, const HandleSettings& settings, const Kind& kind,
                        const Load& load) {
  Image image;
  try {
    image = load();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return withKind(kind.name, answerOf(OCRError::invalidImage(), error.what()));
  }
  return withKind(kind.name, recognized(handle, settings, kind, image));
}

/// Checks what all the calls share; `source` is the picture.
template <class Load>
pravik_result* recognize(pravik_handle* handle, int kindNumber, const void* source, const Load& load) {
  const HandleSettings settings = handle == nullptr ? HandleSettings{} : settingsOf(*handle);
  const auto read = [&] {
    const Kind* kind = kindOf(kindNumber);
    if (handle == nullptr) return invalidArgumentAnswer("the handle is null");
    if (kind == nullptr) return invalidArgumentAnswer("there is no such kind");
    if (source == nullptr) return invalidArgumentAnswer("the picture is null");
    const LogScope scope(&handle->log);
    return recognizedAnswer(*handle, settings, *kind, load);
  };
  return resultOf(read, settings.language);
}

/// How pixels are brought into the form of a bitmap.
struct PixelLayout {
  std::size_t pixelBytes = 0;
  /// Absent for pixels that are of a bitmap's form as they lie.
  std::optional<cv::ColorConversionCodes> conversion = {};
};

/// In the order of pravik_pixel_format.
constexpr std::array<PixelLayout, 5> pixelLayouts{
    {{4, {}}, {1, {}}, {3, cv::COLOR_BGR2BGRA}, {3, cv::COLOR_RGB2BGRA}, {4, cv::COLOR_RGBA2BGRA}}};

const PixelLayout* pixelLayout(int format) {
  const auto index = static_cast<std::size_t>(format);
  return index < pixelLayouts.size() ? &pixelLayouts[index] : nullptr;
}

/// Absent for null and for one that is not spoken; "" is that of the environment.
std::optional<Language> languageNamed(const char* name) {
  if (name == nullptr) return std::nullopt;
  if (*name == '\0') return environmentLanguage();
  const auto known = languagesByName();
  const auto named = std::ranges::find(known, std::string_view(name), &std::pair<std::string, Language>::first);
  return named == known.end() ? std::nullopt : std::optional(named->second);
}

/// What is wrong with the layout of pixels in memory; null when nothing is.
const char* problemWith(int width, int height, std::size_t stride, int format) {
  const PixelLayout* layout = pixelLayout(format);
  if (layout == nullptr) return "there is no such pixel format";
  if (width < 1 || height < 1) return "a picture has at least one pixel";
  if (stride / layout->pixelBytes < static_cast<std::size_t>(width)) return "the stride does not hold a row";
  constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
  if (stride > most / static_cast<std::size_t>(height)) return "the stride is larger than the memory";
  return nullptr;
}

/// A picture of pixels that belong to the caller. Throws std::runtime_error when they are too many.
Image imageOf(const std::uint8_t* pixels, int width, int height, std::size_t stride, int format) {
  requirePictureSize(width, height);
  const PixelLayout& layout = *pixelLayout(format);
  if (layout.conversion) {
    const int type = layout.pixelBytes == 4 ? CV_8UC4 : CV_8UC3;
    cv::Mat converted;
    cv::cvtColor(cv::Mat(height, width, type, const_cast<std::uint8_t*>(pixels), stride), converted,
                 *layout.conversion);
    return {.bitmap = toBitmap(converted)};
  }
  return {.bitmap = Bitmap(format == PRAVIK_BGRA8 ? PixelFormat::bgra8 : PixelFormat::grey8, width, height,
                           static_cast<std::ptrdiff_t>(stride), {pixels, [](const std::uint8_t*) {}})};
}

}  // namespace

pravik_result::pravik_result(const Answer& answer, std::optional<Language> language) : json(jsonText(answer)) {
  Answer failed = errorIn(answer);
  if (failed.is_null()) return;
  // In the text, what is no UTF-8, such as the name of a folder, has been replaced.
  failed = Json::parse(jsonText(failed));
  errorCode = failed.at("error").at("code").get<std::string>();
  errorMessage = language ? explanation(failed, *language) : failed.at("error").at("message").get<std::string>();
  status = statusOf(errorCode);
}

const char* pravik_version(void) {
  return PravikSDK::version().c_str();
}

pravik_handle* pravik_create(const char* model_directory, int threads) {
  if (threads < 0) return nullptr;
  try {
    const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    auto handle = std::make_unique<pravik_handle>();
    handle->platform = makeDefaultPlatform(
        {.modelDirectory = model_directory == nullptr ? "" : model_directory, .threads = std::min(threads, cores)});
    // Without queues a call does all its work on the thread that it came on.
    handle->platform.dispatch.reset();
    handle->settings.limits.stop = handle->stop.get_token();
    return handle.release();
  } catch (...) {
    return nullptr;
  }
}

pravik_handle* pravik_share(pravik_handle* handle) {
  try {
    if (handle == nullptr) return nullptr;
    auto other = std::make_unique<pravik_handle>();
    other->platform = handle->platform;
    other->settings = settingsOf(*handle);
    other->settings.limits.stop = other->stop.get_token();
    return other.release();
  } catch (...) {
    return nullptr;
  }
}

pravik_status pravik_cancel(pravik_handle* handle) {
  if (handle == nullptr) return PRAVIK_INVALID_ARGUMENT;
  handle->stop.request_stop();
  return PRAVIK_OK;
}

void pravik_destroy(pravik_handle* handle) {
  const std::unique_ptr<pravik_handle> last(handle);
}

pravik_status pravik_set_log(pravik_handle* handle, int level, pravik_log_function function, void* context) {
  try {
    const auto known = OCRLogger::levelFromRawValue(level);
    if (handle == nullptr || !known) return PRAVIK_INVALID_ARGUMENT;
    handle->log.send(*known, function, context);
    return PRAVIK_OK;
  } catch (...) {
    return PRAVIK_INTERNAL_ERROR;
  }
}

pravik_status pravik_set_time_limit(pravik_handle* handle, double seconds) {
  constexpr double mostSeconds = 7 * 24 * 3600;
  const bool isTime = seconds >= 0.001 && seconds <= mostSeconds;
  return set(handle, isTime, [&](HandleSettings& settings) {
    settings.limits.time = std::chrono::milliseconds(std::llround(seconds * 1000));
  });
}

pravik_status pravik_set_report(pravik_handle* handle, int is_told) {
  return set(handle, is_told == 0 || is_told == 1,
             [&](HandleSettings& settings) { settings.tellsReport = is_told == 1; });
}

pravik_status pravik_set_date(pravik_handle* handle, const char* day) {
  if (day == nullptr) return PRAVIK_INVALID_ARGUMENT;
  const auto date = dayNamed(day);
  const bool isToday = *day == '\0';
  return set(handle, date || isToday, [&](HandleSettings& settings) { settings.limits.date = date; });
}

pravik_status pravik_set_language(pravik_handle* handle, const char* language) {
  try {
    const std::optional<Language> known = languageNamed(language);
    return set(handle, known.has_value(), [&](HandleSettings& settings) { settings.language = known; });
  } catch (...) {
    return PRAVIK_INTERNAL_ERROR;
  }
}

pravik_result* pravik_recognize_file(pravik_handle* handle, int kind, const char* path) {
  return recognize(handle, kind, path, [&] { return handle->platform.imageCodec->load(path); });
}

pravik_result* pravik_recognize_memory(pravik_handle* handle, int kind, const void* bytes, size_t size) {
  return recognize(handle, kind, bytes, [&] {
    return handle->platform.imageCodec->decode(std::span(static_cast<const std::uint8_t*>(bytes), size));
  });
}

pravik_result* pravik_recognize_pixels(pravik_handle* handle, int kind, const uint8_t* pixels, int width, int height,
                                       size_t stride, int format) {
  if (const char* problem = problemWith(width, height, stride, format))
    return resultOf([&] { return invalidArgumentAnswer(problem); });
  return recognize(handle, kind, pixels, [&] { return imageOf(pixels, width, height, stride, format); });
}

pravik_result* pravik_parse(int kindNumber, const char* observations) {
  return resultOf([&] {
    const Kind* kind = kindOf(kindNumber);
    if (kind == nullptr || kind->document == nullptr || !kind->document->isCard())
      return invalidArgumentAnswer("the kind is not that of a card");
    if (observations == nullptr) return invalidArgumentAnswer("the text is null");
    const LogScope nowhere(nullptr);
    const auto blocks = parseObservations(observations);
    return blocks ? withKind(kind->name, parsed(*kind->document, *blocks)) : invalidInputAnswer(blocks.error());
  });
}

pravik_result* pravik_wordings(const char* language) {
  return resultOf([&] {
    const std::optional<Language> known = languageNamed(language);
    return known ? wordings(*known) : invalidArgumentAnswer("there is no such language");
  });
}

pravik_status pravik_result_status(const pravik_result* result) {
  return result == nullptr ? PRAVIK_INTERNAL_ERROR : result->status;
}

const char* pravik_result_json(const pravik_result* result) {
  if (result == nullptr) return R"({"error":{"code":"internal_error","message":"not enough memory"}})";
  return result->json.c_str();
}

const char* pravik_result_error_code(const pravik_result* result) {
  return result == nullptr ? "internal_error" : result->errorCode.c_str();
}

const char* pravik_result_error_message(const pravik_result* result) {
  return result == nullptr ? "not enough memory" : result->errorMessage.c_str();
}

void pravik_result_free(pravik_result* result) {
  const std::unique_ptr<pravik_result> last(result);
}
