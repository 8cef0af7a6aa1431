#pragma once

namespace pravik::bench {

/// Lets the scanner work for so many minutes of stream time and shows its memory: half of the time one screen watches
/// an empty desk, half of it screen after screen reads a card.
void soakScanner(double minutes);

}  // namespace pravik::bench
