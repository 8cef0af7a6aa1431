#include "Platform/AsioDispatch.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <vector>

namespace pravik {
namespace {

using std::chrono::milliseconds;

TEST(AsioDispatchTest, keepsTheOrderOfTheMainQueueOnOneThread) {
  AsioDispatch dispatch(2);
  std::vector<int> order;
  std::vector<std::thread::id> threads;
  std::promise<void> done;
  for (int i = 0; i < 100; ++i) {
    dispatch.async([&, i] {
      order.push_back(i);
      threads.push_back(std::this_thread::get_id());
    });
  }
  dispatch.async([&] { done.set_value(); });
  done.get_future().wait();
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    EXPECT_EQ(threads[static_cast<std::size_t>(i)], threads[0]);
  }
}

TEST(AsioDispatchTest, runsASerialQueueInOrderThoughThePoolHasMoreThreads) {
  AsioDispatch dispatch(4);
  const auto queue = dispatch.makeSerialQueue("test");
  std::vector<int> order;
  std::promise<void> done;
  for (int i = 0; i < 1000; ++i) queue->async([&order, i] { order.push_back(i); });
  queue->async([&done] { done.set_value(); });
  done.get_future().wait();
  ASSERT_EQ(order.size(), 1000U);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(AsioDispatchTest, runsDelayedWorkInTheOrderOfItsTimesUnlessCalledOff) {
  AsioDispatch dispatch(1);
  std::vector<int> order;
  std::promise<void> done;
  dispatch.asyncAfter(milliseconds(20), [&] {
    order.push_back(2);
    done.set_value();
  });
  dispatch.asyncAfter(milliseconds(5), [&] { order.push_back(1); });
  const WorkItem cancelled = dispatch.asyncAfter(milliseconds(10), [&] { order.push_back(99); });
  cancelled.cancel();
  cancelled.cancel();
  done.get_future().wait();
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(AsioDispatchTest, canBeLetGoByItsOwnWork) {
  auto dispatch = std::make_shared<AsioDispatch>(1);
  std::promise<void> released;
  std::promise<void> ran;
  dispatch->asyncGlobal([&, owner = dispatch]() mutable {
    released.get_future().wait();
    owner.reset();
    ran.set_value();
  });
  dispatch.reset();
  released.set_value();
  ran.get_future().wait();
}

}  // namespace
}  // namespace pravik
