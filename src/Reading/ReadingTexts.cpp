#include <array>
#include <cstddef>

#include "Reading/Reading.h"

namespace pravik {
namespace {

struct CodedTexts {
  std::string_view code;
  std::string_view chinese;
  std::string_view english;
};

/// In the order of UnreadReason.
constexpr std::array<CodedTexts, 11> reasonTexts{{
    {"invalid_picture", "图片没有像素或过大", "the picture has no pixels, or too many"},
    {"too_small", "图片太小，看不清文字，请使用更大的图片或靠近拍摄",
     "the picture is too small to make out the print: use a larger one, or move closer"},
    {"too_dark", "图片太暗，请在更亮的地方拍摄", "the picture is too dark: take it in more light"},
    {"no_card_found", "没有找到卡片，请让卡片完整出现在画面中并与背景有明显区别",
     "no card was found: show all of it, on a ground that differs from it"},
    {"no_text_found", "找到了卡片，但没有找到文字，请检查是否对焦清晰、没有反光",
     "a card but no text on it was found: check that it is in focus and without glare"},
    {"no_number_found", "找到了文字，但没有找到必需的内容（号码，或签发机关和有效期限），请正对卡片重新拍摄",
     "text was found, but not what such a document cannot do without (its number, or its office and validity): take "
     "the picture from straight above"},
    {"wrong_document", "图片中是另一种证件，请选择正确的类型",
     "the picture shows another kind of document: choose that"},
    {"no_code_found", "没有找到二维码或条形码", "no QR code or bar code was found"},
    {"time_spent", "识别超过了时间限制，请裁剪图片或放宽限制",
     "the time limit was over before a record was found: crop the picture, or allow more time"},
    {"cancelled", "识别已取消", "the reading was called off"},
    {"engine_failed", "识别引擎无法工作，原因见错误信息", "a part of the engine cannot work: the error tells which"},
}};

/// In the order of ReadingWarning.
constexpr std::array<CodedTexts, 11> warningTexts{{
    {"blurred", "图片模糊，请对焦并保持静止", "the picture is blurred: focus, and hold still"},
    {"glare", "卡片有反光，请稍微倾斜", "light is reflected by the card: tilt it a little"},
    {"dark", "图片偏暗", "the picture is dark"},
    {"overexposed", "图片过曝", "the picture is overexposed"},
    {"too_small", "卡片在图片中太小，请靠近拍摄", "the card is small in the picture: move closer"},
    {"cut_off", "卡片没有完整出现在图片中", "the card goes on beyond the picture"},
    {"grey_copy", "这是黑白复印件或灰度图片", "this is a copy without colour"},
    {"screen", "这是从屏幕上翻拍的", "this is a photo of a display"},
    {"expired", "证件已过有效期", "the card has expired"},
    {"not_yet_valid", "证件尚未生效", "the card is not yet valid"},
    {"check_failed", "校验未通过", "a check of the record failed"},
}};

const CodedTexts& textsOf(UnreadReason reason) {
  return reasonTexts.at(static_cast<std::size_t>(reason));
}

const CodedTexts& textsOf(ReadingWarning warning) {
  return warningTexts.at(static_cast<std::size_t>(warning));
}

}  // namespace

std::string_view codeOf(UnreadReason reason) {
  return textsOf(reason).code;
}

std::string_view chineseText(UnreadReason reason) {
  return textsOf(reason).chinese;
}

std::string_view englishText(UnreadReason reason) {
  return textsOf(reason).english;
}

std::string_view codeOf(ReadingWarning warning) {
  return textsOf(warning).code;
}

std::string_view chineseText(ReadingWarning warning) {
  return textsOf(warning).chinese;
}

std::string_view englishText(ReadingWarning warning) {
  return textsOf(warning).english;
}

}  // namespace pravik
