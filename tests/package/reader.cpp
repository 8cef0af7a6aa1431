// A program outside the tree that answers as the command line does: reader KIND PICTURE...
#include <exception>
#include <iostream>
#include <string>

#include "Pravik.h"
#include "backends/DefaultPlatform.h"
#include "backends/json/Answer.h"

namespace {

pravik::Answer answer(const pravik::PravikSDK& sdk, const pravik::Image& picture, const std::string& kind) {
  for (const pravik::DocumentKind& document : pravik::documentKinds())
    if (document.commandName == kind) return pravik::readingAnswer(syncWait(sdk.read(picture, document.mode)).value());
  return pravik::invalidInputAnswer("there is no such kind");
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  const pravik::Platform platform = pravik::makeDefaultPlatform();
  const pravik::PravikSDK sdk(platform);
  for (int i = 2; i < argumentCount; ++i) {
    pravik::Json line{{"file", arguments[i]}, {"kind", arguments[1]}};
    line.update(answer(sdk, platform.imageCodec->load(arguments[i]), arguments[1]));
    std::cout << pravik::jsonText(line) << '\n';
  }
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
