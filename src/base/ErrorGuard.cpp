#include "base/ErrorGuard.h"

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string_view>

namespace quillmoor {
namespace {

thread_local InternalErrorHandler* currentHandler = nullptr;
std::atomic<void (*)(const std::string& text)> observer = nullptr;

bool isProgrammingError(const std::exception& error) {
  return dynamic_cast<const std::logic_error*>(&error) || dynamic_cast<const std::bad_alloc*>(&error);
}

bool debugging() {
  const char* const value = std::getenv("QUILLMOOR_DEBUG");
  return value && std::string_view(value) == "1";
}

/// "Class::routine" of what the compiler writes as "type quillmoor::Class::routine(types) [with ...]".
std::string_view routineName(std::string_view function) {
  function = function.substr(0, function.find('('));
  if (const std::size_t blank = function.rfind(' '); blank != std::string_view::npos)
    function.remove_prefix(blank + 1);
  constexpr std::string_view kNamespace = "quillmoor::";
  if (function.starts_with(kNamespace)) function.remove_prefix(kNamespace.size());
  return function;
}

}  // namespace

InternalErrorHandler::InternalErrorHandler(std::function<void(const std::string& text)> handle)
    : handle_(std::move(handle)), before_(std::exchange(currentHandler, this)) {}

InternalErrorHandler::~InternalErrorHandler() {
  currentHandler = before_;
}

void InternalErrorHandler::setObserver(void (*observe)(const std::string& text)) {
  observer = observe;
}

void ReportSwallowed(const std::exception& error, const std::source_location& where) noexcept {
  try {
    const bool internal = isProgrammingError(error);
    if (!internal && !debugging()) return;
    const std::string routine(routineName(where.function_name()));
    if (debugging()) std::cerr << "Swallowed in " + routine + ": " + error.what() + "\n" << std::flush;
    if (!internal) return;
    const std::string text = "Internal error in " + routine + ": " + error.what();
    if (const auto observe = observer.load()) observe(text);
    if (currentHandler) currentHandler->handle_(text);
  } catch (...) {  // there is no memory left even for this
  }
}

}  // namespace quillmoor
