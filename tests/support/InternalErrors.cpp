// In every test program: a programming error that a guard swallows fails the test that meets it.
#include <gtest/gtest.h>

#include "base/ErrorGuard.h"

namespace quillmoor {
namespace {

const bool observing = [] {
  InternalErrorHandler::setObserver([](const std::string& text) { ADD_FAILURE() << text; });
  return true;
}();

}  // namespace
}  // namespace quillmoor
