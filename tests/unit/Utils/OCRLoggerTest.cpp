#include "Utils/OCRLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

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
  struct Case {
    Level level;
    std::string tag;
  };
  LogCapture log(Level::verbose);
  for (const auto& [level, tag] : std::vector<Case>{{Level::error, R"(\[ERROR\])"},
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
    EXPECT_THAT(log.printedBeforeHook, ElementsAre(1));
  }
}

TEST(OCRLogger, NamesTheCallingFileWithoutItsPath) {
  LogCapture log(Level::info);
  OCRLogger::info(hello);
  OCRLogger::log(Level::info, hello, "Reader", 7);
  EXPECT_THAT(log.lines, ElementsAre(testing::HasSubstr(" [OCRLoggerTest.cpp:"), testing::HasSubstr(" [Reader:7] ")));
}

TEST(OCRLogger, BuildsAMessageOnlyWhenItsLevelIsOn) {
  int built = 0;
  const auto message = [&] { return std::to_string(++built); };
  const auto logAll = [&] {
    built = 0;
    OCRLogger::error(message);
    OCRLogger::warning(message);
    OCRLogger::info(message);
    OCRLogger::debug(message);
    OCRLogger::verbose(message);
    OCRLogger::log(Level::none, message, "x", 1);
  };
  LogCapture log(Level::none);
  for (int level = 0; level <= 5; ++level) {
    OCRLogger::setLevel(*OCRLogger::levelFromRawValue(level));
    logAll();
    EXPECT_EQ(built, level);
  }
  OCRLogger::setLevel(Level::none);
  log.clear();
  logAll();
  EXPECT_EQ(built, 0);
  EXPECT_THAT(log.printed, IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
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

TEST(OCRLogger, KnowsItsLevelsByNumberAndName) {
  EXPECT_EQ(OCRLogger::levelFromRawValue(-1), std::nullopt);
  EXPECT_EQ(OCRLogger::levelFromRawValue(6), std::nullopt);
  EXPECT_EQ(OCRLogger::levelFromRawValue(2), Level::warning);
  EXPECT_EQ(OCRLogger::caseName(Level::verbose), "verbose");
}

TEST(OCRLogger, DumpsAReadingInOnePiecePastTheHook) {
  const Observations reading{
      {"女", 1, {0.5, 0.86, 0.1, 0.02}}, {"性别", 1, {0.1, 0.86, 0.1, 0.04}}, {"住址", 1, {0.1, 0.4, 0.1, 0.1}}};
  LogCapture log(Level::debug);
  OCRLogger::dumpObservations(reading, "Front");
  OCRLogger::dumpObservations({}, "Empty");
  EXPECT_THAT(log.printed, ElementsAre("========== Front ==========\n"
                                       "共 3 个文本块, 2 行\n"
                                       "---------- 按行输出 ----------\n"
                                       "  行0: [y=0.120] 性别 | 女\n"
                                       "  行1: [y=0.550] 住址\n"
                                       "---------- 原始文本 ----------\n"
                                       "性别 女\n住址\n"
                                       "==============================\n",
                                       "========== Empty ==========\n"
                                       "共 0 个文本块, 0 行\n"
                                       "---------- 按行输出 ----------\n"
                                       "---------- 原始文本 ----------\n"
                                       "\n"
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
