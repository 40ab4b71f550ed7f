// The README's tour, "Messaging", as a program the tests build and run.
#include <cstdint>
#include <iostream>

#include "tovfoundation/tovfoundation.h"

// [readme]
namespace TOV {
class Message {  // the library only names it: the client defines it
 public:
  std::uint32_t id;
};
}  // namespace TOV

class Printer : public TOV::Listener {
 public:
  void ListenToMessage(const TOV::Message& m) override { std::cout << m.id << '\n'; }
};

int main() {
  const std::uint32_t kProgress = TOV::HashMessageTypeNameToMessageID("Progress");
  TOV::StationRegistry::RegisterStation("encoder", nullptr);  // default factory
  Printer printer;
  TOV::StationUtils::AddListener("encoder", &printer);                      // creates the station
  TOV::StationUtils::BroadcastMessage("encoder", TOV::Message{kProgress});  // prints 8459965
  TOV::StationUtils::RemoveListener("encoder", &printer);
  TOV::StationRegistry::DisposeStation("encoder");
}
// [/readme]
