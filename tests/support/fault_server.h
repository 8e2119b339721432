// A command that runs again and again, each time with another allocation or system call failing.
#pragma once

#include "tests/support/fault_plan.h"
#include "tests/support/temp_directory.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace test_support {

struct FaultRun {
  int exitCode = -1;  // as a shell says it: 128 + N when signal N ended it; 99 for a sanitizer's finding
  std::string errors;
  FaultResult result;
  // Where the plan asks for it: of each allocation a number that tells which functions made it and the 63 before
  // it. It is the same in other commands, unless the system insists on random addresses.
  std::vector<std::uint64_t> trace;

  // The lines that are warnings or errors.
  std::vector<std::string> Complaints() const;
  bool Says(const std::string& text) const { return errors.find(text) != std::string::npos; }
};

class FaultServer {
 public:
  // `library` is loaded into the command, `variables` ("NAME=value") go before those of this process. Throws
  // std::runtime_error.
  FaultServer(const std::string& library, std::vector<std::string> arguments, std::vector<std::string> variables);
  ~FaultServer();
  FaultServer(const FaultServer&) = delete;
  FaultServer& operator=(const FaultServer&) = delete;

  // Where not, no call fails.
  bool WatchesCalls() const { return watchesCalls_; }
  FaultRun Run(const FaultPlan& plan);

 private:
  void Receive(void* bytes, std::size_t count) const;
  FaultResult ReadResult() const;

  TempDirectory directory_;  // of what it prints
  int errors_ = -1, plans_ = -1, results_ = -1;
  pid_t process_ = 0;
  bool watchesCalls_ = false;
};

}  // namespace test_support
