// A program outside the tree that answers as the command line does: reader KIND PICTURE...
#include <iostream>
#include <string>

#include "Pravik.h"
#include "backends/DefaultPlatform.h"
#include "backends/json/Checks.h"

namespace {

pravik::Answer answer(const pravik::PravikSDK& sdk, const pravik::Image& picture, const std::string& kind) {
  using pravik::syncWait;
  if (kind == "id-front") return pravik::cardAnswer(syncWait(sdk.recognizeIDCardFront(picture)));
  if (kind == "id-back") return pravik::cardAnswer(syncWait(sdk.recognizeIDCardBack(picture)));
  if (kind == "bank-card") return pravik::cardAnswer(syncWait(sdk.recognizeBankCard(picture)));
  return pravik::codeAnswer(syncWait(sdk.recognizeCode(picture, pravik::OCRScanMode::qrCode)));
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const pravik::Platform platform = pravik::makeDefaultPlatform();
  const pravik::PravikSDK sdk(platform);
  for (int i = 2; i < argumentCount; ++i) {
    pravik::Json line{{"file", arguments[i]}, {"kind", arguments[1]}};
    line.update(answer(sdk, platform.imageCodec->load(arguments[i]), arguments[1]));
    std::cout << pravik::jsonText(line) << '\n';
  }
}
