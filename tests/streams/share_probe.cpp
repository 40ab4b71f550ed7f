// A small program the sharing tests start in a separate process. It tries one
// kind of open on the file it is given and answers through its exit status:
// 0 the open worked, 1 it failed, 2 bad usage.
//   share_probe plain-read <native path>   open(2) read-only and read one byte
//   share_probe port-read  <library path>  a read-only library port
//   share_probe port-write <library path>  a read-write library port
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "platform/error.h"
#include "tovfoundation/streams.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const char* mode = argv[1];
  const char* path = argv[2];
  if (std::strcmp(mode, "plain-read") == 0) {
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return 1;
    unsigned char byte = 0;
    const bool ok = ::read(fd, &byte, 1) >= 0;
    ::close(fd);
    return ok ? 0 : 1;
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
