#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "Reading/CardReading.h"
#include "Reading/Reading.h"
#include "Records/DocumentKind.h"
#include "Records/OCRError.h"

namespace pravik {

/// JSON that keeps its keys in the order of the records.
using Json = nlohmann::ordered_json;

/// What one input was answered with: an object with "result" (and "checks" for a card), or with "error".
using Answer = Json;

/// {"result":…,"checks":…}: the record's fields by name and what it tells about itself; an absent field and a check
/// with nothing to compare are null. Without "checks" for a kind that has none.
Answer recordAnswer(const Record& record);
/// {"fields":{NAME:{"text":…,"confidence":…,"corners":[[x,y],…]},…},"outline":[[x,y],…],"dotsPerMillimetre":…}: how the
/// record was read; what is not known is null. A field also has "doubtful" and "glare" where they are true.
Json reportJson(const ReadingReport& report);
/// The record, with the codes of its "warnings" and the names of its "doubtful" fields where there are any; or
/// {"error":…,"report":{"reason":…,"text":…}}: the error and why nothing was read, which "text" tells a person.
Answer readingAnswer(const Reading& reading);
/// {"cards":[{"kind":…,"corners":[[x,y],…],"turned":…,"pair":…} and what readingAnswer() and reportJson() give, …]}:
/// the corners clockwise from the card's own upper left; "pair" only for the two sides of one identity card; a card
/// without a kind has null for it, and "text". No card also has the "report" why.
Answer cardsAnswer(const CardsReading& reading);

/// {"error":{"code":…,"message":…,"context":{…}}}. `reason` tells a person what the error itself cannot, such as why a
/// file could not be read, and stands in the context unless it is empty.
Answer answerOf(const OCRError& error, const std::string& reason = {});
/// {"result":{"text":…}}, or the error that kept text from being read.
Answer textAnswer(const Result<std::string>& result);
/// {"error":{"code":"invalid_input","message":…}}: what was handed in is not what the command reads.
Answer invalidInputAnswer(const std::string& message);

/// {"kind":…} and then the answer.
Answer withKind(std::string_view kind, const Answer& answer);

/// Whether a field of the record is doubtful, or a check of it failed; for cards whether one of them is so.
bool isQuestionable(const Answer& answer);
/// Whether the answer is a result, or cards of which each is one.
bool isRecognized(const Answer& answer);

/// JSON text on one line, or indented over several. Bytes that are no UTF-8 come out as U+FFFD.
std::string jsonText(const Json& json, bool indented = false);

}  // namespace pravik
