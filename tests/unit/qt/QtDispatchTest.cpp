#include "backends/qt/QtDispatch.h"

#include <gmock/gmock.h>

#include <thread>

#include "tests/unit/qt/ShownScanner.h"

namespace pravik {
namespace {

using namespace std::chrono_literals;

TEST(QtDispatch, RunsTheMainQueueInOrderOnItsThreadAndNeverAtOnce) {
  QtDispatch dispatch;
  const auto main = std::this_thread::get_id();
  std::vector<int> order;
  bool isOnMain = true;
  const auto note = [&](int number) {
    dispatch.async([&, number] {
      order.push_back(number);
      isOnMain = isOnMain && std::this_thread::get_id() == main;
    });
  };
  dispatch.asyncAfter(30ms, [&] { order.push_back(9); });
  note(1);
  EXPECT_TRUE(order.empty());
  std::jthread([&] { note(2); }).join();
  dispatch.asyncGlobal([&] { dispatch.asyncAfter(1ms, [&] { order.push_back(3); }); });
  EXPECT_TRUE(test::waitUntil([&] { return order.size() == 4; }));
  EXPECT_THAT(order, testing::ElementsAre(1, 2, 3, 9));
  EXPECT_TRUE(isOnMain);
}

TEST(QtDispatch, DropsDelayedWorkThatIsCalledOffOrOutlivesIt) {
  int ran = 0;
  WorkItem late;
  {
    QtDispatch dispatch;
    dispatch.asyncAfter(1ms, [&] { ++ran; }).cancel();
    late = dispatch.asyncAfter(200ms, [&] { ++ran; });
    test::wait(5ms);
    dispatch.async([&] { ++ran; });
  }
  test::wait(250ms);
  late.cancel();
  EXPECT_EQ(ran, 0);
}

}  // namespace
}  // namespace pravik
