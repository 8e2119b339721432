// A progress bar on the error stream, as the host's monitor.
#pragma once

#include "host/counted_object.h"
#include "host/module_api.h"

namespace tool {

class ProgressBar final : public CountedObject<IZyMonitor> {
 public:
  ~ProgressBar() override;

  zyresult Initialize(std::uint32_t steps) override;
  zyresult Step(std::uint32_t steps) override;

 private:
  void Draw();

  // The savers count no steps ahead, so without a total the bar shows how many were done.
  std::uint64_t total_ = 0;
  std::uint64_t done_ = 0;
  std::uint64_t drawn_ = 0;
};

}  // namespace tool
