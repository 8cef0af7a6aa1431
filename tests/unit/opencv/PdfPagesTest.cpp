#include "backends/opencv/files/PdfPages.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "backends/opencv/files/OpenCvImageCodec.h"
#include "support/TemporaryFolder.h"

namespace pravik {
namespace {

using testing::HasSubstr;

/// A document whose pages are 72 x 36 points, red on the left half, and so is each page of it. `trailer` goes into the
/// dictionary at its end.
std::string documentOf(int pages, const std::string& size = "72 36", const std::string& trailer = {}) {
  std::vector<std::string> objects{"<</Type/Catalog/Pages 2 0 R>>", "",
                                   "<</Length 23>>stream\n1 0 0 rg 0 0 36 36 re f\nendstream"};
  std::string kids;
  for (int i = 0; i < pages; ++i) {
    kids += std::to_string(objects.size() + 1) + " 0 R ";
    objects.push_back("<</Type/Page/Parent 2 0 R/MediaBox[0 0 " + size + "]/Contents 3 0 R/Resources<<>>>>");
  }
  objects[1] = "<</Type/Pages/Kids[" + kids + "]/Count " + std::to_string(pages) + ">>";
  std::string file = "%PDF-1.4\n", places;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const std::string place = std::to_string(file.size());
    places += std::string(10 - place.size(), '0') + place + " 00000 n \n";
    file += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
  }
  const std::string start = std::to_string(file.size()), count = std::to_string(objects.size() + 1);
  return file + "xref\n0 " + count + "\n0000000000 65535 f \n" + places + "trailer\n<</Size " + count + "/Root 1 0 R" +
         trailer + ">>\nstartxref\n" + start + "\n%%EOF\n";
}

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Puts a shell script of this name first on the PATH, for as long as this lives.
class StandIn {
 public:
  StandIn(const std::string& name, const std::string& script) {
    const std::string file = folder_.write(name, "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    ::setenv("PATH", (folder_.path().string() + ":" + path_).c_str(), 1);
  }
  /// Nothing is on the PATH.
  StandIn() { ::setenv("PATH", folder_.path().c_str(), 1); }
  ~StandIn() { ::setenv("PATH", path_.c_str(), 1); }
  StandIn(const StandIn&) = delete;
  StandIn& operator=(const StandIn&) = delete;

  const test::TemporaryFolder& folder() const { return folder_; }

 private:
  test::TemporaryFolder folder_;
  std::string path_ = std::getenv("PATH");
};

/// Why the first page of a document cannot be drawn.
std::string errorOf(const std::string& document, const PdfLimits& limits = {}) {
  try {
    pdfPages(bytesOf(document), limits).decode(0);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no error";
}

TEST(PdfPages, DrawsEachPageAtThreeHundredDotsAnInchAndLargeOnesSmaller) {
  const std::string two = documentOf(2);
  const PictureFile file = OpenCvImageCodec().open(std::vector<std::uint8_t>(two.begin(), two.end()));
  ASSERT_EQ(file.pageCount, 2);
  const Bitmap page = file.decode(1).bitmap.value();
  EXPECT_EQ(page.width(), 300);
  EXPECT_EQ(page.height(), 150);
  EXPECT_EQ(std::vector<int>(page.row(75) + 4 * 20, page.row(75) + 4 * 21), (std::vector<int>{0, 0, 255, 255}));
  EXPECT_EQ(std::vector<int>(page.row(75) + 4 * 280, page.row(75) + 4 * 281), (std::vector<int>{255, 255, 255, 255}));

  const std::string poster = documentOf(1, "999999999 499999999");
  EXPECT_EQ(pdfPages(bytesOf(poster)).decode(0).bitmap->width(), 4961);
  const std::string thread = documentOf(1, "2000000 1");
  EXPECT_LE(pdfPages(bytesOf(thread)).decode(0).bitmap->width(), 4961);
}

TEST(PdfPages, CountsMorePagesThanAreRead) {
  EXPECT_EQ(pdfPages(bytesOf(documentOf(maximumPages + 900))).pageCount, maximumPages + 900);
}

TEST(PdfPages, SaysWhatIsWrongWithADocument) {
  const std::string whole = documentOf(1);
  EXPECT_EQ(errorOf(whole.substr(0, whole.size() / 2)), "the PDF is damaged");
  EXPECT_EQ(errorOf("%PDF-1.7 and no more"), "the PDF is damaged");
  EXPECT_THAT(errorOf(documentOf(0)), HasSubstr("PDF"));
  const std::string key(32, '0');
  EXPECT_EQ(errorOf(documentOf(1, "72 36",
                               "/Encrypt<</Filter/Standard/V 1/R 2/P -4/O(" + key + ")/U(" + key + ")>>/ID[(a)(a)]")),
            "the PDF is protected by a password");
}

TEST(PdfPages, ProgramsThatFailAreEndedAndTheReasonIsTold) {
  const std::string document = documentOf(1);
  {
    const StandIn nothing;
    EXPECT_EQ(errorOf(document), "PDF needs the program pdfinfo: install poppler-utils");
  }
  const PdfLimits soon{.page = std::chrono::milliseconds(300)};
  const struct {
    const char* program;
    const char* script;
    const char* error;
  } cases[] = {
      {"pdfinfo", "exec sleep 1000", "takes too long"},
      {"pdftoppm", "exec sleep 1000", "takes too long"},
      {"pdftoppm", "exec >&- 2>&-; exec sleep 1000", "takes too long"},
      {"pdftoppm", "kill -SEGV $$", "damaged"},
      {"pdftoppm", "printf 'P6\\n4 4\\n255\\nabc'", "damaged"},
      {"pdftoppm", "printf 'P6\\n100000 100000\\n255\\n'", "damaged"},
      {"pdftoppm", "exit 3", "damaged"},
      {"pdfinfo", "exec yes", "damaged"},
      {"pdfinfo", "echo 'Pages: many'", "no pages"},
  };
  for (const auto& [program, script, error] : cases) {
    const StandIn standIn(program, script);
    EXPECT_THAT(errorOf(document, soon), HasSubstr(error)) << script;
  }
}

TEST(PdfPages, WhatAProgramStartedIsEndedWithIt) {
  const StandIn standIn("pdftoppm", "cd \"${0%/*}\"; sleep 1000 & echo $! > child; wait");
  EXPECT_THAT(errorOf(documentOf(1), {.page = std::chrono::milliseconds(500)}), HasSubstr("takes too long"));
  std::string child;
  std::ifstream(standIn.folder().path() / "child") >> child;
  ASSERT_FALSE(child.empty());
  // Until the system has ended it; whoever inherits it takes notice of that when he likes.
  for (std::string line; line.find(") Z ") == std::string::npos;) {
    std::ifstream stat("/proc/" + child + "/stat");
    if (!std::getline(stat, line)) break;
  }
}

TEST(PdfPages, AllPagesTogetherHaveTheirTime) {
  const std::string document = documentOf(3);
  const PictureFile file = pdfPages(bytesOf(document), {.file = std::chrono::seconds(1)});
  const StandIn slow("pdftoppm", "echo >> \"${0%/*}/runs\"; exec sleep 1000");
  EXPECT_THROW(file.decode(0), std::runtime_error);
  EXPECT_THROW(file.decode(1), std::runtime_error);
  EXPECT_EQ(std::filesystem::file_size(slow.folder().path() / "runs"), 1U) << "there was no time left for the second";
}

}  // namespace
}  // namespace pravik
