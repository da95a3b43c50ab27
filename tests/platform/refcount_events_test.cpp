// Reference counting and synchronous events.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "TAEvents.h"
#include "TARefCounter.h"

namespace {

struct Counted : TARefCounter {
  explicit Counted(bool* destroyed) : _destroyed(destroyed) {}
  ~Counted() override { *_destroyed = true; }
  bool* _destroyed;
};

TEST(PlatformRefCounter, TheObjectIsDeletedAtZeroAndACopyStartsItsOwnCountAtOne) {
  bool destroyedA = false, destroyedB = false;
  Counted* a = new Counted(&destroyedA);
  EXPECT_EQ(1, a->GetRefCount());
  EXPECT_TRUE(a->AddRef() == 2 && a->AddRef() == 3);
  Counted* b = new Counted(*a);
  Counted other(&destroyedB);
  *b = other;  // assignment keeps the target's count
  EXPECT_EQ(0, b->Release());
  EXPECT_TRUE(destroyedB);  // b took other's flag pointer
  EXPECT_TRUE(a->Release() == 2 && a->Release() == 1 && !destroyedA);
  EXPECT_EQ(0, a->Release());
  EXPECT_TRUE(destroyedA);
}

struct NamedEvent : TAEvent {
  explicit NamedEvent(const char* name) : _name(name) {}
  const char* isA() const override { return _name; }
  const char* _name;
};

using Log = std::vector<std::string>;

// Records every delivery in a shared log and can run an action on receipt.
struct Recorder : TACallbackSubscriber {
  Recorder(const char* name, Log* log) : _name(name), _log(log) {}
  int ReceiveCallback(TACallbackPublisher* publisher, const TAEvent* event) override {
    _log->push_back(_name + ":" + event->isA());
    lastPublisher = publisher;
    if (onReceive) onReceive();
    return 0;
  }
  std::function<void()> onReceive;
  TACallbackPublisher* lastPublisher = nullptr;
  std::string _name;
  Log* _log;
};

TEST(PlatformEvents, SubscribersAreCalledOnceEachInSubscriptionOrderAndCopiesStartWithoutThem) {
  Log log;
  Recorder a("a", &log), b("b", &log), c("c", &log);
  TACallbackPublisher publisher, assigned;
  for (Recorder* r : {&b, &a, &c, &a, static_cast<Recorder*>(nullptr)}) publisher.AddSubscriber(r);  // a twice
  EXPECT_EQ(3, publisher.SubscriberCount());
  TACallbackPublisher copy(publisher);
  assigned = publisher;
  const NamedEvent event("EventLoadFile");
  EXPECT_TRUE(copy.SendCallback(&event) == 0 && assigned.SendCallback(&event) == 0 && log.empty());
  EXPECT_EQ(3, publisher.SendCallback(&event));
  EXPECT_EQ(Log({"b:EventLoadFile", "a:EventLoadFile", "c:EventLoadFile"}), log);
  EXPECT_EQ(&publisher, a.lastPublisher);
  publisher.RemoveSubscriber(&a);
  publisher.RemoveSubscriber(&a);  // absent: nothing happens
  log.clear();
  EXPECT_EQ(2, publisher.SendCallback(&event));
  EXPECT_EQ(Log({"b:EventLoadFile", "c:EventLoadFile"}), log);
}

TEST(PlatformEvents, ChangesDuringADeliveryTakeEffectAsDocumented) {
  Log log;
  Recorder a("a", &log), b("b", &log), c("c", &log), d("d", &log);
  TACallbackPublisher publisher;
  for (Recorder* r : {&a, &b, &c}) publisher.AddSubscriber(r);
  // a removes b (not called afterwards) and itself, and adds d (called from the next delivery on).
  a.onReceive = [&] { publisher.RemoveSubscriber(&b), publisher.RemoveSubscriber(&a), publisher.AddSubscriber(&d); };
  const NamedEvent event("E");
  EXPECT_EQ(2, publisher.SendCallback(&event));
  EXPECT_EQ(Log({"a:E", "c:E"}), log);
  log.clear();
  EXPECT_EQ(2, publisher.SendCallback(&event));
  EXPECT_EQ(Log({"c:E", "d:E"}), log);
}

}  // namespace
