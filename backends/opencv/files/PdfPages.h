#pragma once

#include <chrono>
#include <cstdint>
#include <span>

#include "Platform/ImageCodec.h"

namespace pravik {

/// How long drawing may take: one page, or telling how many there are; and all pages of a file together.
struct PdfLimits {
  std::chrono::milliseconds page = std::chrono::seconds(20);
  std::chrono::milliseconds file = std::chrono::minutes(10);
};

/// The pages of a PDF, each drawn by a process of its own, `pdftoppm` of poppler-utils: at 300 dots an inch, or fewer
/// when a page is large. Nothing is written to the disk. Throws std::runtime_error, as the pages do, when that program
/// is not installed, takes too long, or cannot read the document.
PictureFile pdfPages(std::span<const std::uint8_t> file, const PdfLimits& limits = {});

}  // namespace pravik
