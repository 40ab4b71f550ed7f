// Shared pieces of the messaging tests: the message class the tests define
// (the library only names it) and a listener that records what it hears.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tovfoundation/messaging.h"

namespace TOV {

// The tests' message: an identifier and nothing else.
class Message {
 public:
  explicit Message(std::uint32_t messageID = 0) : id(messageID) {}
  std::uint32_t id;
};

}  // namespace TOV

namespace tovtest {

using Log = std::vector<std::string>;

// Appends "<name>:<id>" to a shared log for every message, then runs an
// optional action (which may throw, remove listeners, add listeners, ...).
class RecordingListener : public TOV::Listener {
 public:
  RecordingListener(std::string name, Log* log) : mName(std::move(name)), mLog(log) {}

  void ListenToMessage(const TOV::Message& message) override {
    ++mHeard;
    if (mLog != nullptr) mLog->push_back(mName + ":" + std::to_string(message.id));
    if (mAction) mAction(message);
  }

  void SetAction(std::function<void(const TOV::Message&)> action) { mAction = std::move(action); }
  int Heard() const { return mHeard; }

 private:
  std::string mName;
  Log* mLog;
  int mHeard = 0;
  std::function<void(const TOV::Message&)> mAction;
};

}  // namespace tovtest
