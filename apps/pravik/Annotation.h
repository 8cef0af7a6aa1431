#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Bitmap.h"
#include "apps/pravik/Recording.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// The field of the result that a block of text fed, such as "idNumber"; empty when it fed none.
std::string fieldFedBy(std::string_view blockText, const Json& result);

/// The picture with a box around each block in the colour of the field that it fed, and a legend below.
Bitmap annotatedPicture(const ReadPicture& picture, const Answer& answer);

/// Where the annotated pictures of these files go: names inside the folder, one for each file and no two the same, and
/// none that a picture handed in is likely to have.
std::vector<std::filesystem::path> annotatedPaths(const std::filesystem::path& folder,
                                                  const std::vector<std::string>& files);

/// Makes the folder when it is missing and tries to write into it. Returns what is wrong, or nothing.
std::string problemWithFolder(const std::filesystem::path& folder);

}  // namespace pravik::cli
