#pragma once

#include "Platform/Geometry.h"
#include "Reading/ReadingParts.h"
#include "Records/DocumentKind.h"
#include "Records/Observation.h"

namespace pravik {

/// A record with the report on its fields and on the picture. `blocks` are those that it was parsed from, on a card of
/// this size in pixels.
Reading withReport(const ReadingParts& parts, const Size& card, const Observations& blocks, Record record);

/// Whether a field's text cannot be what such a field says: empty though every card of the kind has it, or with what it
/// never holds, such as an address with the label of another field. `name` is that of the field in the record.
bool isDoubtful(const Record& record, std::string_view name);

}  // namespace pravik
