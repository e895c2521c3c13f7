#include "platform/system/ProgramArguments.h"

#include <windows.h>

#include <shellapi.h>

#include <memory>

#include "platform/system/windows/WideText.h"

namespace quillmoor {

std::vector<std::string> ProgramArguments(int, char**) {
  int count = 0;
  const std::unique_ptr<LPWSTR, decltype(&::LocalFree)> list(
      ::CommandLineToArgvW(::GetCommandLineW(), &count), ::LocalFree);
  std::vector<std::string> arguments;
  for (int i = 1; list && i < count; ++i) arguments.push_back(Narrow(list.get()[i]));
  return arguments;
}

}  // namespace quillmoor
