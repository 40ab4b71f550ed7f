// tovtool demo: message identifiers, and a station relaying to another.
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace TOV {

// The tool's message: an identifier and a short text.
class Message {
 public:
  Message(std::uint32_t messageID, std::string messageText)
      : id(messageID), text(std::move(messageText)) {}
  std::uint32_t id;
  std::string text;
};

}  // namespace TOV

namespace {

// Prints each message it hears, prefixed by its own name.
class PrintingListener : public TOV::Listener {
 public:
  PrintingListener(std::string name, std::ostream& out) : mName(std::move(name)), mOut(out) {}
  void ListenToMessage(const TOV::Message& message) override {
    mOut << "  " << mName << " heard #" << message.id << " \"" << message.text << "\"\n";
  }

 private:
  std::string mName;
  std::ostream& mOut;
};

void DemoMessaging(std::ostream& out) {
  namespace Registry = TOV::StationRegistry;
  namespace Utils = TOV::StationUtils;

  const std::uint32_t progress = TOV::HashMessageTypeNameToMessageID("EncoderProgress");
  out << "HashMessageTypeNameToMessageID(\"EncoderProgress\") = " << progress << '\n';
  out << "HashMessageTypeNameToMessageID(\"ab\") = " << TOV::HashMessageTypeNameToMessageID("ab")
      << ", (\"\\xE9\") = " << TOV::HashMessageTypeNameToMessageID("\xE9") << '\n';

  const UTF8String encoder = Registry::RegisterUniqueStation();
  const UTF8String mirror = Registry::RegisterUniqueStation();
  out << "registered stations \"" << encoder << "\" and \"" << mirror << "\"\n";
  Registry::RetainStation(encoder);
  Registry::RetainStation(mirror);

  PrintingListener progressBar("progress bar", out), logWindow("log window", out),
      statusLine("status line", out);
  Utils::AddListener(encoder, &logWindow);
  Utils::AddListener(encoder, &progressBar);
  // The mirror station listens to the encoder station and relays to its own.
  Utils::AddListener(encoder, Registry::FindStation(mirror));
  Utils::AddListener(mirror, &statusLine);

  out << "broadcast on " << encoder << " (newest listener first, the mirror relays):\n";
  Utils::BroadcastMessage(encoder, TOV::Message(progress, "25%"));

  out << "switch the log window onto the same station (moves it to the front):\n";
  Utils::SwitchStation(encoder, encoder, &logWindow);
  Utils::BroadcastMessage(encoder, TOV::Message(progress, "50%"));

  out << "stop broadcasting on " << mirror << ":\n";
  Utils::StopBroadcasting(mirror);
  Utils::BroadcastMessage(encoder, TOV::Message(progress, "75%"));

  Registry::DisposeStation(mirror);  // retained: disposal waits for the release
  Registry::ReleaseStation(mirror);
  out << "mirror disposed, lookup now gives "
      << (Registry::FindStation(mirror) == nullptr ? "null" : "a station") << '\n';
  out << "broadcast after disposal:\n";
  Utils::BroadcastMessage(encoder, TOV::Message(progress, "100%"));

  Registry::DisposeStation(encoder);
  Registry::ReleaseStation(encoder);
}

TOVTOOL_DEMO_SECTION({30, "Messaging: stations relaying messages", DemoMessaging});

}  // namespace
