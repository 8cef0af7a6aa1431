#include "apps/scanner/Texts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <algorithm>
#include <array>
#include <string_view>

#include "backends/qt/QtValues.h"

namespace pravik::scanner {
namespace {

struct Wording {
  const char* chinese;
  const char* english;
};

/// In the order of Text.
constexpr std::array wordings{
    Wording{"Pravik 扫描", "Pravik Scanner"},
    Wording{"扫描什么？", "What do you want to scan?"},
    Wording{"相机", "Camera"},
    Wording{"选择视频文件…", "Choose a video file…"},
    Wording{"未找到相机", "No camera found"},
    Wording{"开始扫描", "Start scanning"},
    Wording{"打开照片…", "Open a photo…"},
    Wording{"也可以把照片拖到窗口中。", "You can also drop a photo on the window."},
    Wording{"正在识别…", "Reading…"},
    Wording{"再次扫描", "Scan again"},
    Wording{"返回", "Back"},
    Wording{"复制", "Copy"},
    Wording{"已复制", "Copied"},
    Wording{"显示", "Show"},
    Wording{"隐藏", "Hide"},
    Wording{"相机画面已结束", "The camera's pictures have ended"},
    Wording{"好", "OK"},
};
static_assert(wordings.size() == static_cast<std::size_t>(Text::ok) + 1);

/// What the scanner's screens say, which is theirs in Chinese.
struct ScreenText {
  std::string_view source;
  const char* english;
  /// Where the screen speaks of what a desktop does not have; else absent.
  const char* chinese = nullptr;
};

constexpr std::array screenTexts{
    ScreenText{"银行卡", "Bank card"},
    ScreenText{"身份证正面", "ID front"},
    ScreenText{"身份证背面", "ID back"},
    ScreenText{"二维码/条形码", "Code"},
    ScreenText{"将银行卡正面对准此区域", "Hold the front of the bank card here"},
    ScreenText{"将身份证人像面对准此区域", "Hold the side with the portrait here"},
    ScreenText{"将身份证国徽面对准此区域", "Hold the side with the emblem here"},
    ScreenText{"将二维码/条形码对准此区域", "Hold the QR code or bar code here"},
    ScreenText{"请保持不动...", "Hold still…"},
    ScreenText{"正在拍照...", "Taking the photo…"},
    ScreenText{"正在识别...", "Reading…"},
    ScreenText{"识别成功", "Done"},
    ScreenText{"识别失败，请调整角度重试", "Not read: try another angle"},
    ScreenText{"识别失败，请重新对准卡片", "Not read: aim at the card anew"},
    ScreenText{"照片识别失败，请重新选择照片或者扫描", "Photo not read: take another, or scan"},
    ScreenText{"⚠️ 反光严重，请将卡片向前倾斜约10°", "⚠️ Strong glare: tilt the card by 10°"},
    ScreenText{"⚠️ 请稍微倾斜卡片以减少反光", "⚠️ Glare: tilt the card a little"},
    ScreenText{"⚠️ 光线不足，请开启手电筒", "⚠️ Too dark: turn on the torch"},
    ScreenText{"手动拍照", "Take photo"},
    ScreenText{"打开手电筒", "Turn on the torch"},
    ScreenText{"关闭手电筒", "Turn off the torch"},
    ScreenText{"需要相机权限", "The camera may not be used"},
    ScreenText{"请在 设置 → 隐私 → 相机 中允许访问", "Allow this program to use it in the system's settings.",
               "请在系统设置中允许本程序使用相机。"},
    ScreenText{"去设置", "Open settings"},
    ScreenText{"取消", "Cancel"},
};

/// Translates what the screens say into the language in use.
class ScreenTranslator : public QTranslator {
 public:
  bool isEmpty() const override { return false; }
  QString translate(const char* context, const char* source, const char* /*disambiguation*/,
                    int /*number*/) const override {
    if (context != std::string_view("Pravik")) return {};
    const auto* found = std::ranges::find(screenTexts, source, &ScreenText::source);
    if (found == screenTexts.end()) return {};
    return QString::fromUtf8(languageInUse() == Language::chinese ? found->chinese : found->english);
  }
};

}  // namespace

void useLanguage(Language language) {
  static ScreenTranslator screens;
  static QTranslator qt;
  const bool isChinese = language == Language::chinese;
  const QLocale locale = isChinese ? QLocale(QLocale::Chinese, QLocale::China) : QLocale(QLocale::English);
  QLocale::setDefault(locale);
  QCoreApplication::removeTranslator(&qt);
  if (isChinese && qt.load(locale, "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    QCoreApplication::installTranslator(&qt);
  QCoreApplication::removeTranslator(&screens);
  QCoreApplication::installTranslator(&screens);
}

Language languageInUse() {
  return QLocale().language() == QLocale::Chinese ? Language::chinese : Language::english;
}

QString text(Text which) {
  const Wording& wording = wordings.at(static_cast<std::size_t>(which));
  return inUserLanguage(wording.chinese, wording.english);
}

}  // namespace pravik::scanner
