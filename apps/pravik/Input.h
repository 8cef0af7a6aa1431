#pragma once

#include <cstddef>
#include <deque>
#include <fstream>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "Platform/Image.h"
#include "Platform/ImageCodec.h"

namespace pravik::cli {

/// The first picture in a file, or in the standard input when the file is "-"; or why it cannot be read, in words.
tl::expected<Image, std::string> readPicture(const std::string& file, const ImageCodec& codec, std::istream& in);

/// What a person names as pictures.
struct PictureNames {
  /// Files, folders, and "-" for the standard input.
  std::vector<std::string> inputs;
  /// A file that names more of them, one a line, or "-"; empty for none.
  std::string list;
  /// Whether the names in the list end with a NUL and not with their line.
  bool isListNul = false;
  /// Whether a folder also stands for the folders within it.
  bool isRecursive = false;
};

/// One picture: a file, or a page of it.
struct PicturePage {
  /// As it was named.
  std::string file;
  /// From 1; absent when the file has one page.
  std::optional<int> page;
  /// Throws std::runtime_error with a readable text when there is no picture.
  std::function<Image()> decode;
};

/// The pictures that a person names, in their order, each opened when its turn comes: of any number of files but the
/// names within the folders is held. A folder stands for the files in it whose names end like a picture's, in the order
/// of their names; hidden ones, and links to folders, are left out. What cannot be opened is a picture that cannot be
/// decoded, and so are the pages beyond `maximumPages` together.
class PictureQueue {
 public:
  /// Throws std::runtime_error when the list cannot be read.
  PictureQueue(const PictureNames& names, const ImageCodec& codec, std::istream& in);

  /// The next picture; nothing at the end. May wait for a list that somebody is still writing.
  std::optional<PicturePage> next();
  /// How many of the next pictures there are, `most` at most.
  std::size_t countAhead(std::size_t most);
  /// How many pictures there are, as far as is known before the files are opened; nothing while a list may name more.
  std::optional<std::size_t> count() const;

 private:
  /// A file; or a folder for which there is none to read, with the reason.
  struct Named {
    std::string file;
    std::string problem;
  };

  void add(const std::string& input);
  void addFolder(const std::string& folder);
  std::optional<Named> nextName();
  void open(const Named& name);

  const ImageCodec& codec_;
  std::istream& in_;
  std::ifstream listFile_;
  /// Null without a list, and when it is over.
  std::istream* list_ = nullptr;
  char listEnd_;
  bool isRecursive_;
  std::deque<Named> names_;
  /// Those of the file that is open, and those that were counted ahead.
  std::deque<PicturePage> pages_;
  std::size_t given_ = 0;
};

/// The next line without its end, or nothing at the end of the input. Of a line that is too long to be parsed, just
/// enough is kept to tell.
std::optional<std::string> nextLine(std::istream& in, char end = '\n');
/// Everything up to the end of the input, or just enough of it to tell that it is too long.
std::string wholeText(std::istream& in);

}  // namespace pravik::cli
