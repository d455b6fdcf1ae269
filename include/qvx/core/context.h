// Host integration point: the capture library's context and its event sink.
//
// A host application hands its context to every parser it creates; the parser
// asks it once for the sink that receives usage events. Both are owned by the
// host; the library only calls `send`.
#pragma once

#include <memory>

#include "qvx/core/json_value.h"

namespace qvx::core {

class EventSink {
  public:
    virtual ~EventSink() = default;
    virtual void send(int eventId, const JsonValue& payload) = 0;
};

class Context {
  public:
    explicit Context(std::shared_ptr<EventSink> eventSink = nullptr)
        : eventSink_(std::move(eventSink)) {}

    // May be null: then no usage events are built at all.
    std::shared_ptr<EventSink> eventSink() const { return eventSink_; }

  private:
    std::shared_ptr<EventSink> eventSink_;
};

}  // namespace qvx::core
