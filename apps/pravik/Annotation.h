#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include "Platform/Bitmap.h"
#include "apps/pravik/Input.h"
#include "apps/pravik/Recording.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// The field of the result that a block of text fed, such as "idNumber"; empty when it fed none.
std::string fieldFedBy(std::string_view block, const Json& result);

/// The picture with a box around each block in the colour of the field that it fed, and a legend below.
Bitmap annotatedPicture(const ReadPicture& picture, const Answer& answer);

/// The upright picture with the outline, the number and the kind of each card on it, and a box around each field.
Bitmap annotatedCards(const Bitmap& picture, const Answer& answer);

/// Where something goes that is made of a picture: a name inside the folder like that of the picture, with what follows
/// it, and not among those that are taken, to which it is added.
std::filesystem::path freePath(const std::filesystem::path& folder, const PicturePage& page, const std::string& suffix,
                               const std::string& extension, std::set<std::string>& taken);

/// Makes the folder when it is missing and tries to write into it. Returns what is wrong, or nothing.
std::string problemWithFolder(const std::filesystem::path& folder);

}  // namespace pravik::cli
