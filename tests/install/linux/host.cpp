// Prints the audio library's calls of a connection.
#include <desk.h>
#include <ipodctl.h>
#include <isochplay_desk.h>

#include <cstdio>

int main() {
  isochplaySetSink([](void*, const IsochplayCall* call) { std::printf("%s\n", call->text); },
                   nullptr);
  const int connected = IpodConnect();
  IpodDisconnect();
  std::printf("open handles: %u\n", deskOpenHandles());
  return connected != 0 ? 0 : 1;
}
