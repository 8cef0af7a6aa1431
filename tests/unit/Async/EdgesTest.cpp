#include <gtest/gtest.h>

#include <asio/bind_cancellation_slot.hpp>
#include <asio/cancellation_signal.hpp>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <future>
#include <optional>
#include <thread>
#include <utility>

#include "Async/RunOnPool.h"
#include "Platform/AsioDispatch.h"
#include "Platform/ManualDispatch.h"
#include "Pravik.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

// What happens to a recognition when something around it goes away, or throws.
namespace pravik {
namespace {

using namespace std::chrono_literals;

/// An engine that counts its calls, waits until it is let go on, and keeps whether it was asked to stop.
class GatedEngine final : public TextEngine {
 public:
  std::promise<void> goOn;
  mutable std::atomic<int> calls = 0;
  mutable std::atomic<int> answers = 0;
  mutable std::atomic<bool> wasStopped = false;

  std::vector<RecognizedText> recognize(const Bitmap& /*bitmap*/, const TextRequest& request) const override {
    ++calls;
    gate_.wait();
    wasStopped = request.limit.stop.stop_requested();
    ++answers;
    return {};
  }

 private:
  std::shared_future<void> gate_{goOn.get_future()};
};

struct Fixture : test::FakeParts {
  std::shared_ptr<GatedEngine> gated = std::make_shared<GatedEngine>();
  Image photo{.bitmap = test::plainPicture(400, 250, 200, 200, 200)};

  Platform gatedPlatform() const {
    Platform platform = makePlatform(std::make_shared<AsioDispatch>(1));
    platform.textEngine = gated;
    return platform;
  }
};

/// A dispatch whose pool, or whose main queue, loses its work.
class LossyDispatch final : public Dispatch {
 public:
  explicit LossyDispatch(bool losesPool) : losesPool_(losesPool) {}
  void async(std::function<void()> work) override {
    if (losesPool_) work();
  }
  WorkItem asyncAfter(std::chrono::milliseconds /*delay*/, std::function<void()> /*work*/) override { return {}; }
  void asyncGlobal(std::function<void()> work) override {
    if (!losesPool_) std::thread(std::move(work)).join();
  }
  std::shared_ptr<SerialQueue> makeSerialQueue(const std::string& /*label*/) override { return nullptr; }

 private:
  bool losesPool_;
};

/// Keeps what a call ends with.
Task<void> keepErrorOf(Task<BankCardInfo> call, std::optional<OCRError>& error) {
  try {
    co_await std::move(call);
  } catch (const OCRError& thrown) {
    error = thrown;
  }
}

TEST(Edges, ALoopThatIsDestroyedUnwindsItsCallerAndStopsTheWork) {
  const Fixture f;
  const PravikSDK sdk(f.gatedPlatform());
  std::optional<OCRError> error;
  {
    asio::io_context loop;
    asio::co_spawn(loop, keepErrorOf(sdk.recognizeBankCard(f.photo), error), asio::detached);
    while (f.gated->calls == 0) loop.poll();
  }
  f.gated->goOn.set_value();
  while (f.gated->answers == 0) std::this_thread::yield();
  EXPECT_FALSE(error) << "nobody was left to be told";
  EXPECT_TRUE(f.gated->wasStopped);
}

TEST(Edges, APortThatDropsItsCallbackCancels) {
  const Fixture f;
  for (const bool losesPool : {true, false}) {
    const PravikSDK sdk(f.makePlatform(std::make_shared<LossyDispatch>(losesPool)));
    std::vector<Result<IDCardFrontInfo>> results;
    sdk.recognizeIDCardFront(f.photo, [&](Result<IDCardFrontInfo> result) { results.push_back(std::move(result)); });
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].error(), OCRError::cancelled());
    if (losesPool) {
      EXPECT_EQ(syncWait(sdk.recognizeIDCardFront(f.photo)).error(), OCRError::cancelled());
    }
  }
}

TEST(Edges, ACallIsCalledOffByItsTokenOrByAsioBeforeTheNextStage) {
  for (const bool byAsio : {true, false}) {
    const Fixture f;
    const PravikSDK sdk(f.gatedPlatform());
    std::stop_source stop;
    asio::cancellation_signal signal;
    std::optional<OCRError> error;
    asio::io_context loop;
    asio::co_spawn(loop, keepErrorOf(sdk.recognizeBankCard(f.photo, {.stop = stop.get_token()}), error),
                   asio::bind_cancellation_slot(signal.slot(), asio::detached));
    while (f.gated->calls == 0) loop.poll();
    if (byAsio)
      signal.emit(asio::cancellation_type::terminal);
    else
      stop.request_stop();
    if (!byAsio) f.gated->goOn.set_value();
    loop.run();
    EXPECT_EQ(error, OCRError::cancelled());
    if (byAsio) f.gated->goOn.set_value();
    EXPECT_EQ(f.gated->calls, 1);
  }
}

TEST(Edges, WhenTheTimeIsOverWhatWasReadDecides) {
  Fixture f;
  f.engine->blocks = {test::textBlock("招商银行", 0.3, 0.1)};
  const PravikSDK sdk(f.makePlatform());
  const auto reading = syncWait(sdk.read(f.photo, OCRScanMode::bankCard, {.time = 0ms}));
  ASSERT_TRUE(reading);
  EXPECT_EQ(reading->record.error(), OCRError::insufficientText());
  EXPECT_EQ(reading->report.unreadReason, UnreadReason::timeSpent);
  EXPECT_TRUE(f.engine->pictures.empty());
}

TEST(Edges, WhatHostsThrowCostsNoRecord) {
  Fixture f;
  f.engine->blocks = test::portraitSide();
  OCRLogger::setSink([](std::string_view) { throw 1; });
  OCRLogger::setOnLog([](OCRLogger::Level, const std::string&) { throw std::runtime_error("the hook is broken"); });
  OCRLogger::setLevel(OCRLogger::Level::debug);
  const auto dispatch = std::make_shared<AsioDispatch>(1);
  const PravikSDK sdk(f.makePlatform(dispatch));
  std::promise<bool> told;
  sdk.recognizeIDCardFront(f.photo, [&](const Result<IDCardFrontInfo>& result) {
    told.set_value(result.has_value());
    throw 2;
  });
  EXPECT_TRUE(told.get_future().get());
  std::promise<void> stillAlive;
  dispatch->async([&] { stillAlive.set_value(); });
  stillAlive.get_future().wait();
  OCRLogger::setLevel(OCRLogger::Level::none);
  OCRLogger::setOnLog({});
  OCRLogger::setSink({});
}

TEST(Edges, AnEngineMayThrowAnything) {
  struct OddEngine : TextEngine {
    std::vector<RecognizedText> recognize(const Bitmap& /*bitmap*/, const TextRequest& /*request*/) const override {
      throw 3;
    }
  };
  Fixture f;
  Platform platform = f.makePlatform();
  platform.textEngine = std::make_shared<OddEngine>();
  EXPECT_EQ(syncWait(PravikSDK(platform).recognizeIDCardFront(f.photo)).error(),
            OCRError::recognitionFailed("未知异常"));
}

TEST(Edges, TheCallersThreadNeitherParsesNorValidates) {
  Fixture f;
  f.engine->blocks = test::portraitSide();
  std::atomic<bool> onCallersThread = false;
  OCRLogger::setSink([](std::string_view) {});
  OCRLogger::setOnLog([&, caller = std::this_thread::get_id()](OCRLogger::Level, const std::string&) {
    if (std::this_thread::get_id() == caller) onCallersThread = true;
  });
  const PravikSDK sdk(f.makePlatform(std::make_shared<AsioDispatch>(1)));
  OCRLogger::setLevel(OCRLogger::Level::verbose);
  onCallersThread = false;
  EXPECT_TRUE(syncWait(sdk.recognizeIDCardFront(f.photo)));
  OCRLogger::setLevel(OCRLogger::Level::none);
  OCRLogger::setOnLog({});
  OCRLogger::setSink({});
  EXPECT_FALSE(onCallersThread);
}

TEST(Edges, WhatWorkHeldIsGoneBeforeItsCallerIsAnswered) {
  const auto dispatch = std::make_shared<ManualDispatch>();
  auto engine = std::make_shared<int>(7);
  const std::weak_ptr<int> watched = engine;
  std::optional<bool> wasGone;
  runAndAnswer<int>(
      dispatch, [engine = std::exchange(engine, nullptr)]() -> Result<int> { return *engine; },
      [&](const Result<int>& result) { wasGone = result == 7 && watched.expired(); });
  dispatch->runGlobal();
  EXPECT_EQ(wasGone, true);
}

void logWhileTheProgramEnds() {
  OCRLogger::setSink([](std::string_view) {});
  OCRLogger::setLevel(OCRLogger::Level::info);
  std::thread([] {
    while (true) OCRLogger::info([] { return std::string("still reading"); });
  }).detach();
  std::this_thread::sleep_for(20ms);
  std::exit(0);
}

TEST(EdgesDeathTest, ARecognitionMayLogWhileTheProgramEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(logWhileTheProgramEnds(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace pravik
