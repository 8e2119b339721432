// Output that can't be written.
#pragma once

#include <stdexcept>

namespace tool {

// what() is one line with the file and the reason.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tool
