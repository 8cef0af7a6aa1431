#include <iostream>

#include "Pravik.h"
#include "backends/DefaultPlatform.h"

int main(int argc, char** argv) try {
  const pravik::Platform platform = pravik::makeDefaultPlatform();
  const pravik::PravikSDK sdk(platform);
  const auto card = pravik::syncWait(sdk.recognizeIDCardFront(platform.imageCodec->load(argv[argc - 1])));
  if (!card) throw pravik::OCRError(card.error());
  std::cout << card->name << ' ' << card->idNumber << '\n';
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
