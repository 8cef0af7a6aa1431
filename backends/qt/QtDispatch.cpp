#include "backends/qt/QtDispatch.h"

#include <QMetaObject>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <utility>

namespace pravik {
namespace {

struct DelayedWork {
  std::function<void()> run;
  std::atomic<bool> cancelled = false;
};

/// On the thread of the receiver, which owns the timer and takes it along when it goes.
void startTimer(QObject* receiver, std::chrono::milliseconds delay, const std::shared_ptr<DelayedWork>& work) {
  auto* timer = new QTimer(receiver);
  timer->setSingleShot(true);
  timer->setTimerType(Qt::PreciseTimer);
  QObject::connect(timer, &QTimer::timeout, receiver, [timer, work] {
    timer->deleteLater();
    if (!work->cancelled) work->run();
  });
  timer->start(delay);
}

}  // namespace

QtDispatch::QtDispatch(int poolThreads)
    : main_(std::make_unique<QObject>()), pool_(std::make_unique<AsioDispatch>(poolThreads)) {}

QtDispatch::~QtDispatch() {
  // The pool goes first: what still runs there may post to the main queue.
  pool_.reset();
  if (main_->thread() != QThread::currentThread()) main_.release()->deleteLater();
}

void QtDispatch::async(std::function<void()> work) {
  QMetaObject::invokeMethod(main_.get(), std::move(work), Qt::QueuedConnection);
}

WorkItem QtDispatch::asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) {
  auto delayed = std::make_shared<DelayedWork>();
  delayed->run = std::move(work);
  if (main_->thread() == QThread::currentThread())
    startTimer(main_.get(), delay, delayed);
  else
    async([receiver = main_.get(), delay, delayed] { startTimer(receiver, delay, delayed); });
  return WorkItem([waiting = std::weak_ptr(delayed)] {
    if (const auto item = waiting.lock()) item->cancelled = true;
  });
}

}  // namespace pravik
