// A small program the sharing tests start in a separate process. It tries one
// kind of open on the file it is given and answers through its exit status:
// 0 the open worked, 1 it failed, 2 bad usage.
//   share_probe plain-read <native path>   a standard read-only stream, one byte read
//   share_probe port-read  <library path>  a read-only library port
//   share_probe port-write <library path>  a read-write library port
#include <cstdio>
#include <cstring>
#include <fstream>

#include "platform/error.h"
#include "tovfoundation/streams.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const char* mode = argv[1];
  const char* path = argv[2];
  if (std::strcmp(mode, "plain-read") == 0) {
    std::ifstream in(path, std::ios::binary);
    if (!in.is_open()) return 1;
    char byte = 0;
    in.read(&byte, 1);
    return in.bad() ? 1 : 0;
  }
  Halyard::AccessMode access;
  if (std::strcmp(mode, "port-read") == 0)
    access = Halyard::kAccessRead;
  else if (std::strcmp(mode, "port-write") == 0)
    access = Halyard::kAccessReadWrite;
  else
    return 2;
  auto port = Halyard::CPort::FilePort(path, access);
  if (!port) {
    std::printf("%u\n", tovimpl::platform::GetLastError());
    return 1;
  }
  return 0;
}
