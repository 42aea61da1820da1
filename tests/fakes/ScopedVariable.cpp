#include "tests/fakes/ScopedVariable.h"

#include <cstdlib>
#include <utility>

namespace audrel::fakes {

ScopedVariable::ScopedVariable(std::string name, const char* value) : name_(std::move(name)) {
  if (const char* before = std::getenv(name_.c_str())) {
    before_ = before;
  }
  setenv(name_.c_str(), value, 1);
}

ScopedVariable::~ScopedVariable() {
  if (before_) {
    setenv(name_.c_str(), before_->c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

}  // namespace audrel::fakes
