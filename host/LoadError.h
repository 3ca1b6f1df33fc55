#pragma once

#include <stdexcept>
#include <string>

namespace VekHost {

// What is wrong with a scenario file, and on which line (1-based).
class LoadError : public std::runtime_error {
 public:
  LoadError(int line, const std::string& message) : std::runtime_error(message), line_(line) {}
  int line() const { return line_; }

 private:
  int line_;
};

}  // namespace VekHost
