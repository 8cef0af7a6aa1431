#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace pravik::cli {

// What a command line says of itself, for the shell and for `man`. The packages bring what these make.

/// A page for `man`, in section 1.
std::string manPage(const CLI::App& app);
/// Completion of commands, options and their values for a shell; what is none of them is a file.
std::string bashCompletion(const CLI::App& app);
std::string zshCompletion(const CLI::App& app);
std::string fishCompletion(const CLI::App& app);

}  // namespace pravik::cli
