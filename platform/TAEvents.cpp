#include "TAEvents.h"

#include <algorithm>

TAEvent::~TAEvent() = default;
TACallbackSubscriber::~TACallbackSubscriber() = default;
TACallbackPublisher::~TACallbackPublisher() = default;

void TACallbackPublisher::AddSubscriber(TACallbackSubscriber* subscriber) {
  if (!subscriber) return;
  if (std::find(_subscribers.begin(), _subscribers.end(), subscriber) != _subscribers.end()) return;
  _subscribers.push_back(subscriber);
}

void TACallbackPublisher::RemoveSubscriber(TACallbackSubscriber* subscriber) {
  auto it = std::find(_subscribers.begin(), _subscribers.end(), subscriber);
  if (it != _subscribers.end()) _subscribers.erase(it);
}

int TACallbackPublisher::SendCallback(const TAEvent* event) {
  // A snapshot keeps the order stable while receivers (un)subscribe; the
  // membership test skips anyone removed during this delivery.
  const std::vector<TACallbackSubscriber*> snapshot(_subscribers);
  int delivered = 0;
  for (TACallbackSubscriber* subscriber : snapshot) {
    if (std::find(_subscribers.begin(), _subscribers.end(), subscriber) == _subscribers.end()) continue;
    subscriber->ReceiveCallback(this, event);
    ++delivered;
  }
  return delivered;
}
