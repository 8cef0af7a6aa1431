// Makes a record of text that something else has read; needs pravik::pravik alone.
#include <iostream>

#include "Parsers/IDCardBackParser.h"

int main() {
  // Text, confidence, and the box in shares of the picture with the origin at its lower left.
  const pravik::Observations blocks{{"签发机关 凤台县公安局", 0.98F, {0.38, 0.20, 0.45, 0.06}},
                                    {"有效期限 2015.03.01-2035.03.01", 0.97F, {0.38, 0.10, 0.50, 0.06}}};
  const auto card = pravik::IDCardBackParser{}.parse(blocks);
  if (!card) return 1;
  std::cout << card->issuingAuthority << ' ' << card->validityPeriod << '\n';
}
