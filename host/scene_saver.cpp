#include "host/scene_saver.h"

#include "host/call_guard.h"

#include <memory>

zyresult CZySceneSaver::VerifyTarget(IZyObject* target, IZyObject* message) {
  CZyUser_Message bound;
  if (!bound.Set(message)) return ZYe_NO_TARGET;
  const zyresult result = GuardedCall([&] {
    frame_ = std::make_unique<SceneFrame>();
    const zyresult bindResult = frame_->Bind(target, nullptr, UsesSubset());
    if (ZySucceeded(bindResult)) VerifyScene();
    return bindResult;
  });
  frame_.reset();
  return result;
}

zyresult CZySceneSaver::SaveTarget(IZyObject* target, const char* filename, IZyMonitor* monitor) {
  CZyFileFormat* format = FormatPart();
  zyresult result = GuardedCall([&] {
    frame_ = std::make_unique<SceneFrame>();
    return frame_->Bind(target, monitor, UsesSubset());
  });
  if (ZySucceeded(result)) {
    result = GuardedCall([&] { return RunPasses(*format, filename, monitor); });
    format->CleanupFormat();
  }
  frame_.reset();
  return result;
}

zyresult CZySceneSaver::RunPasses(CZyFileFormat& format, const char* filename, IZyMonitor* monitor) {
  if (!format.OpenFormat(filename) || format.FormatHasError()) return ZYe_FAILED;
  if (monitor) {
    format.EnableFormat(false);
    frame_->SetPass(SavePass::Counting);
    if (const zyresult result = SaveScene(); ZyFailed(result)) return result;
    monitor->Initialize(frame_->StepCount());
  }
  format.EnableFormat(true);
  frame_->SetPass(SavePass::Writing);
  const zyresult result = SaveScene();
  if (ZyFailed(result)) return result;
  if (ZyFailed(frame_->Failure())) return frame_->Failure();
  return format.FormatHasError() ? ZYe_FAILED : result;
}
