#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "apps/pravik/ProgramMemory.h"
#include "bench/soak/RecognitionSoak.h"
#include "bench/soak/ScannerSoak.h"

namespace {

constexpr int largestCount = 100'000'000;
constexpr int wrongUsage = 2;

int soak(int argumentCount, char** arguments) {
  CLI::App app("Lets Pravik work for long in one process and shows that its memory stays flat.", "pravik-soak");
  app.require_subcommand(1);

  pravik::bench::RecognitionLoad load;
  CLI::App& recognitions = *app.add_subcommand(
      "recognitions",
      "Read the pictures of samples/ over and over from several threads. Fails when an answer is not "
      "that of a reading on its own, or when memory grows.");
  recognitions.add_option("COUNT", load.count, "Recognitions (5000)")->check(CLI::Range(10, largestCount));
  recognitions.add_option("--threads", load.callers, "Threads that share the one SDK (8)")->check(CLI::Range(1, 256));
  recognitions.add_option("--engine-threads", load.engineThreads, "Threads of one model run, 0 for one a core (1)")
      ->check(CLI::Range(0, 256));

  double minutes = 60;
  CLI::App& scanner = *app.add_subcommand(
      "scanner", "Run the live scanner: half of the time before an empty desk, half of it reading card after card.");
  scanner.add_option("MINUTES", minutes, "Minutes of stream time (60)")->check(CLI::PositiveNumber);

  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : wrongUsage;
  }
  if (recognitions.parsed()) return pravik::bench::soakRecognitions(load) ? 0 : 1;
  pravik::bench::soakScanner(minutes);
  return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  pravik::cli::returnLargeBlocks();
  try {
    return soak(argumentCount, arguments);
  } catch (const std::exception& error) {
    std::cerr << "pravik-soak: " << error.what() << '\n';
    return wrongUsage;
  }
}
