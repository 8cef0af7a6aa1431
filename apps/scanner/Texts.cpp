#include "apps/scanner/Texts.h"

#include <array>

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
    Wording{"无法打开这张照片", "This photo cannot be opened"},
    Wording{"好", "OK"},
    Wording{"号码校验未通过，请与卡面核对。", "The number fails its check digit: compare it with the card."},
};
static_assert(wordings.size() == static_cast<std::size_t>(Text::checkFailed) + 1);

}  // namespace

QString text(Text which) {
  const Wording& wording = wordings.at(static_cast<std::size_t>(which));
  return inUserLanguage(wording.chinese, wording.english);
}

}  // namespace pravik::scanner
