// What a run does before anything else, alone: EndKilledExchanges for each FOLDER.
#include <cstdio>
#include <exception>

#include "platform/FileSet.h"

int main(int argc, char** argv) {
  int status = 0;
  for (int i = 1; i < argc; ++i) {
    try {
      quillmoor::EndKilledExchanges(argv[i]);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "%s\n", error.what());
      status = 1;
    }
  }
  return status;
}
