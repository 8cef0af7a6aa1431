#include "Platform/AsioDispatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <set>
#include <thread>

namespace pravik {
namespace {

using std::chrono::milliseconds;

TEST(AsioDispatchTest, KeepsTheOrderOfItsQueuesThoughThePoolHasMoreThreads) {
  AsioDispatch dispatch(4);
  const auto queue = dispatch.makeSerialQueue("test");
  std::vector<int> onMain, onQueue;
  std::set<std::thread::id> mainThreads;
  std::promise<void> mainDone, queueDone;
  for (int i = 0; i < 1000; ++i) {
    dispatch.async([&, i] {
      onMain.push_back(i);
      mainThreads.insert(std::this_thread::get_id());
    });
    queue->async([&, i] { onQueue.push_back(i); });
  }
  dispatch.async([&] { mainDone.set_value(); });
  queue->async([&] { queueDone.set_value(); });
  mainDone.get_future().wait();
  queueDone.get_future().wait();
  EXPECT_EQ(mainThreads.size(), 1U);
  for (const std::vector<int>& order : {onMain, onQueue})
    EXPECT_TRUE(order.size() == 1000 && std::ranges::is_sorted(order));
}

TEST(AsioDispatchTest, RunsDelayedWorkInTheOrderOfItsTimesUnlessCalledOff) {
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

TEST(AsioDispatchTest, CanBeLetGoByItsOwnWork) {
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

TEST(AsioDispatchTest, IsOutlivedByItsQueuesButNotByItsWork) {
  auto dispatch = std::make_unique<AsioDispatch>(1);
  const auto queue = dispatch->makeSerialQueue("test");
  std::promise<void> blocks;
  dispatch->asyncGlobal([&blocks] { blocks.get_future().wait_for(milliseconds(50)); });
  const auto owned = std::make_shared<std::shared_ptr<SerialQueue>>(dispatch->makeSerialQueue("owned"));
  const auto work = [owned] {};
  queue->async(work);
  (*owned)->async(work);
  dispatch->asyncAfter(std::chrono::hours(1), work);
  dispatch.reset();
  queue->async(work);
  EXPECT_EQ(owned.use_count(), 2) << "the work that never ran is gone";
}

}  // namespace
}  // namespace pravik
