#include <memory>
#include <span>
#include <stdexcept>

#include "Parsers/CardNumber.h"
#include "Pravik.h"
#include "backends/opencv/OpenCvImageRenderer.h"
#include "backends/opencv/files/OpenCvImageCodec.h"
#include "backends/opencv/files/PictureHeader.h"
#include "backends/opencv/finder/OpenCvRectangleDetector.h"
#include "backends/zxing/ZXingBarcodeDetector.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/Fakes.h"

using namespace pravik;

namespace {

/// What stands before it is a file with a picture, what stands behind it the text that the engine reads there.
constexpr std::string_view separator = "\n--text--\n";
/// More takes so long that the fuzzer would learn little.
constexpr std::int64_t maximumPixels = 96 * 96;

std::optional<Image> decoded(std::span<const std::uint8_t> file) {
  try {
    const PictureFormat format = formatOf(file);
    // Other people's decoders, one of them a process.
    if (format == PictureFormat::heic || format == PictureFormat::pdf) return std::nullopt;
    const PictureHeader header = readPictureHeader(file, format);
    const std::int64_t pixels = header.width * header.height;
    if (pixels > maximumPixels) return std::nullopt;
    Image image = OpenCvImageCodec().decode(file);
    fuzz::require(image.bitmap && image.bitmap->width() * image.bitmap->height() == pixels,
                  "a picture has the size that its header says");
    return image;
  } catch (const std::runtime_error& error) {
    fuzz::require(error.what()[0] != '\0', "a refusal gives its reason");
    return std::nullopt;
  }
}

}  // namespace

// A file with a picture through every recognition, with an engine that reads what the input says.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::logEverything();
  const std::string_view input = fuzz::asText(data, size);
  const std::size_t end = std::min(input.rfind(separator), input.size());
  const auto photo = decoded({data, end});
  if (!photo) return 0;

  const auto engine = std::make_shared<test::FakeTextEngine>();
  if (end < input.size())
    for (const auto& block : fuzz::observationsIn(input.substr(end + separator.size())))
      engine->blocks.push_back({TextCandidate{block.text, block.confidence}, block.boundingBox});
  Platform platform;
  platform.imageRenderer = std::make_shared<OpenCvImageRenderer>();
  platform.textEngine = engine;
  platform.rectangleDetector = std::make_shared<OpenCvRectangleDetector>();
  platform.barcodeDetector = std::make_shared<ZXingBarcodeDetector>();
  const PravikSDK sdk(platform);
  const auto front = syncWait(sdk.recognizeIDCardFront(*photo));
  fuzz::require(!front || front->idNumber.size() == 18, "a portrait side has its number");
  const auto back = syncWait(sdk.recognizeIDCardBack(*photo));
  fuzz::require(!back || !back->issuingAuthority.empty() || !back->validityPeriod.empty(),
                "an emblem side says something");
  const auto card = syncWait(sdk.recognizeBankCard(*photo));
  fuzz::require(!card || isValidCardNumber(asciiDigits(card->cardNumber)), "a bank card has a valid number");
  const auto code = syncWait(sdk.recognizeCode(*photo, OCRScanMode::qrCode));
  fuzz::require(!code || !code->payload.empty(), "a code says something");
  const auto text = syncWait(sdk.recognizeRawText(*photo, PravikSDK::SceneType::idCard));
  fuzz::require(text.has_value(), "the text of a picture is read");
  return 0;
}
