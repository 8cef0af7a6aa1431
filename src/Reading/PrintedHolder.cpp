#include "Reading/PrintedHolder.h"

#include <string_view>

#include "Parsers/CardText.h"
#include "Utils/RegexHelper.h"

namespace pravik {
namespace {

/// Two to four characters behind the label, up to a space or the end of the line. The hundred commonest surnames and
/// the commonest of two characters keep out what else follows the label: "持卡人签名", "姓名拼音".
constexpr std::string_view holderPattern =
    "(?:持卡人|姓名)[ :]*("
    "(?=[王李张刘陈杨黄赵吴周徐孙马朱胡郭何林高罗郑梁谢宋唐许韩邓冯曹彭曾肖田董潘袁蔡蒋余杜叶程魏苏吕丁卢姚沈钟姜崔谭陆"
    "范汪廖石金韦贾夏付方邹熊白孟秦邱侯江尹薛闫段雷龙黎史陶贺毛郝顾龚邵万覃武钱戴严莫孔]|欧阳|上官|司徒|诸葛|司马)"
    "\\p{Han}{2,4})(?= |$)";

}  // namespace

std::optional<std::string> chineseHolder(const Observations& observations) {
  for (const std::string& line : cardText(observations).lineTexts)
    if (auto name = RegexHelper::captureGroup(1, holderPattern, line)) return name;
  return std::nullopt;
}

}  // namespace pravik
