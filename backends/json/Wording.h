#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "backends/json/Answer.h"

namespace pravik {

/// What a person reads. Records, errors in JSON and the log have a language of their own.
enum class Language : std::uint8_t { chinese, english };

/// As people name them: "zh" and "en".
std::vector<std::pair<std::string, Language>> languagesByName();
/// That of the environment (LC_ALL, LC_MESSAGES, LANG, the first that is set): Chinese, and English for all others.
Language environmentLanguage();

/// An answer's error, in a sentence: {"error":{"code":…,"message":…},…}.
std::string errorText(const Answer& answer, Language language);
/// What there is to add to it; empty for nothing.
std::string reasonText(const Answer& answer, Language language);
/// Both in one sentence.
std::string explanation(const Answer& answer, Language language);
/// The stable code that the sentence belongs to: that of the report, "no_code_found", where it says more than the
/// error.
std::string errorCode(const Answer& answer);
/// What is to be told beside a field of a record: "! " and the failed check, or "? doubtful"; empty for nothing.
std::string fieldNote(const Answer& answer, std::string_view field, Language language);
/// What the failure of a check means; empty for one that is not known.
std::string checkText(std::string_view check, Language language);
/// What a warning with this code means; the code of one that is not known.
std::string warningText(std::string_view code, Language language);
/// All of it by code, for programs that draw answers: {"kinds":{NAME:{"label":…,"fields":{NAME:{"label":…,"display":
/// "shown"|"masked"|"hidden"},…}},…},"errors":{CODE:…},"reasons":{CODE:…},"warnings":{CODE:…},"checks":{NAME:…}}.
Json wordings(Language language);
/// A text of this program's own, "no such file".
std::string ownText(const std::string& english, Language language);

}  // namespace pravik
