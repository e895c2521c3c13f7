// network_state: prints the state of this machine's network as a run and the status label use it.
#include <cstdio>

#include "connectivity/mNetworkConnection.h"
#include "platform/network/NetworkAlive.h"

int main() {
  const quillmoor::NetworkSource machine = quillmoor::IsNetworkAlive;
  std::printf("network:%s lan:%s\n", quillmoor::IsNetworkAvailable(machine) ? "yes" : "no",
              quillmoor::IsLanConnected(machine) ? "yes" : "no");
}
