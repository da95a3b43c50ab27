// Synchronous publish/subscribe. A publisher calls its subscribers in the order
// they subscribed, on the caller's thread. A subscriber removed during a delivery
// is not called afterwards; one added during it is first called at the next
// delivery. Neither side owns the other.
#ifndef TA_EVENTS_H
#define TA_EVENTS_H

#include <vector>
#include "vnxExport.h"

class VNX_EXPORT TAEvent {
 public:
  virtual const char* isA() const = 0;  // the event's name; receivers compare it exactly
  virtual ~TAEvent();
};

class TACallbackPublisher;

class VNX_EXPORT TACallbackSubscriber {
 public:
  virtual ~TACallbackSubscriber();
  virtual int ReceiveCallback(TACallbackPublisher* publisher, const TAEvent* event) = 0;
};

class VNX_EXPORT TACallbackPublisher {
 public:
  TACallbackPublisher() = default;
  TACallbackPublisher(const TACallbackPublisher&) {}  // subscriptions are not copied
  TACallbackPublisher& operator=(const TACallbackPublisher&) { return *this; }
  virtual ~TACallbackPublisher();

  // A subscriber already present is not added twice. Null is ignored.
  void AddSubscriber(TACallbackSubscriber* subscriber);
  void RemoveSubscriber(TACallbackSubscriber* subscriber);
  int SubscriberCount() const { return static_cast<int>(_subscribers.size()); }
  // Delivers event to every subscriber in subscription order; answers how many received it.
  int SendCallback(const TAEvent* event);

 private:
  std::vector<TACallbackSubscriber*> _subscribers;
};

#endif
