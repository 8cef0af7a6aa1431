#include "Utils/OCRLogger.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "support/LogCapture.h"

namespace pravik {
namespace {

using Level = OCRLogger::Level;
using test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

std::string hello() {
  return "你好";
}

TEST(OCRLogger, WritesALinePerLevelAndThenCallsTheHook) {
  LogCapture log(Level::verbose);
  for (const auto& [level, tag] : std::vector<std::pair<Level, std::string>>{{Level::error, R"(\[ERROR\])"},
                                                                             {Level::warning, R"(\[WARN\] )"},
                                                                             {Level::info, R"(\[INFO\] )"},
                                                                             {Level::debug, R"(\[DEBUG\])"},
                                                                             {Level::verbose, R"(\[VERB\] )"}}) {
    log.clear();
    OCRLogger::log(level, hello, "a/b/Reader.cpp", 42);
    EXPECT_THAT(log.lines, ElementsAre(MatchesRegex(R"(\[Pravik\] [0-2][0-9]:[0-5][0-9]:[0-6][0-9]\.[0-9]{3} )" + tag +
                                                    R"( \[Reader.cpp:42\] 你好)")));
    EXPECT_THAT(log.printed, ElementsAre(log.lines.at(0) + "\n"));
    EXPECT_THAT(log.levels, ElementsAre(level));
  }
  std::size_t printedBefore = 0;
  OCRLogger::setOnLog([&](Level /*level*/, const std::string& /*line*/) { printedBefore = log.printed.size(); });
  log.clear();
  OCRLogger::info(hello);
  EXPECT_EQ(printedBefore, 1U);
  EXPECT_THAT(log.printed, ElementsAre(testing::HasSubstr(" [OCRLoggerTest.cpp:")));
}

TEST(OCRLogger, BuildsAMessageOnlyWhenItsLevelIsOn) {
  LogCapture log(Level::none);
  for (int level = 0; level <= 5; ++level) {
    OCRLogger::setLevel(*OCRLogger::levelFromRawValue(level));
    log.clear();
    int built = 0;
    const auto message = [&] { return std::to_string(++built); };
    OCRLogger::error(message);
    OCRLogger::warning(message);
    OCRLogger::info(message);
    OCRLogger::debug(message);
    OCRLogger::verbose(message);
    OCRLogger::log(Level::none, message, "x", 1);
    EXPECT_EQ(built, level);
    EXPECT_EQ(log.lines.size(), static_cast<std::size_t>(level));
  }
  EXPECT_EQ(OCRLogger::levelFromRawValue(-1), std::nullopt);
  EXPECT_EQ(OCRLogger::levelFromRawValue(6), std::nullopt);
}

TEST(OCRLogger, SaysOnceThatItIsOn) {
  LogCapture log(Level::none);
  OCRLogger::setLevel(Level::error);
  const std::string banner = "[Pravik] [INFO]  Pravik v1.1.1 (dev) 日志已启用（level=error）";
  EXPECT_THAT(log.printed, ElementsAre(banner + "\n"));
  EXPECT_THAT(log.lines, ElementsAre(banner));
  EXPECT_THAT(log.levels, ElementsAre(Level::info));
  log.clear();
  OCRLogger::setLevel(Level::info);
  OCRLogger::setLevel(Level::info);
  OCRLogger::setLevel(Level::none);
  EXPECT_THAT(log.printed, IsEmpty());
}

TEST(OCRLogger, DumpsAReadingInOnePiecePastTheHook) {
  const Observations reading{
      {"女", 1, {0.5, 0.86, 0.1, 0.02}}, {"性别", 1, {0.1, 0.86, 0.1, 0.04}}, {"住址", 1, {0.1, 0.4, 0.1, 0.1}}};
  LogCapture log(Level::debug);
  OCRLogger::dumpObservations(reading, "Front");
  EXPECT_THAT(log.printed, ElementsAre("========== Front ==========\n"
                                       "共 3 个文本块, 2 行\n"
                                       "---------- 按行输出 ----------\n"
                                       "  行0: [y=0.120] 性别 | 女\n"
                                       "  行1: [y=0.550] 住址\n"
                                       "---------- 原始文本 ----------\n"
                                       "性别 女\n住址\n"
                                       "==============================\n"));
  EXPECT_THAT(log.lines, IsEmpty());
  log.clear();
  OCRLogger::setLevel(Level::info);
  OCRLogger::dumpObservations(reading, "Front");
  EXPECT_THAT(log.printed, IsEmpty());
}

TEST(OCRLogger, WritesToStandardOutputUnlessToldOtherwise) {
  testing::internal::CaptureStdout();
  OCRLogger::setLevel(Level::error);
  OCRLogger::setLevel(Level::none);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "[Pravik] [INFO]  Pravik v1.1.1 (dev) 日志已启用（level=error）\n");
}

TEST(OCRLogger, MayBeSetUpWhileOtherThreadsLog) {
  std::atomic<int> written{0};
  std::atomic<int> broken{0};
  const auto count = [&](std::string_view text) {
    ++written;
    if (!text.starts_with("[Pravik] ") || !text.ends_with("\n")) ++broken;
  };
  OCRLogger::setSink(count);
  OCRLogger::setLevel(Level::info);
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 3; ++thread) {
      threads.emplace_back([] {
        for (int i = 0; i < 200; ++i) OCRLogger::info(hello);
      });
    }
    for (int i = 0; i < 200; ++i) {
      OCRLogger::setOnLog([](Level, const std::string&) {});
      OCRLogger::setSink(count);
      OCRLogger::setLevel(i % 2 == 0 ? Level::debug : Level::info);
    }
  }
  OCRLogger::setLevel(Level::none);
  OCRLogger::setOnLog({});
  OCRLogger::setSink({});
  EXPECT_EQ(written, 1 + 3 * 200);
  EXPECT_EQ(broken, 0);
}

}  // namespace
}  // namespace pravik
