#pragma once

#include <optional>
#include <string>

namespace audrel::fakes {

/// Sets a variable of the process's environment for a scope.
class ScopedVariable {
 public:
  ScopedVariable(std::string name, const char* value);
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable();

 private:
  std::string name_;
  std::optional<std::string> before_;
};

}  // namespace audrel::fakes
