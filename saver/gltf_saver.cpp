#include "saver/gltf_saver.h"

#include "geometry/mesh_scan.h"
#include "saver/save_run.h"

namespace {

// The host may fail while it is told of a failure, too.
void ReportFatalError(GltfLogMsg& log) noexcept {
  try {
    // The text is the same for every format.
    log.ErrorDialog("Fatal internal error in FBX saver");
  } catch (...) {
  }
}

void ReportSummary(GltfLogMsg& log) {
  if (log.WarningCount() == 0 && log.ErrorCount() == 0) return;
  log.WarningDialog("There are %d warnings and %d errors reported to event log",
                    static_cast<int>(log.WarningCount()), static_cast<int>(log.ErrorCount()));
  log.ResetCounters();
}

}  // namespace

bool GltfSaver::OpenFormat(const char* filename) {
  state_.initialized = false;
  state_.filename = filename ? filename : "";
  return true;
}

void GltfSaver::CleanupFormat() {
  state_.ClearTables();
  state_.frame = nullptr;
}

void GltfSaver::VisitPoint() { VisitScannedPoint(state_); }

void GltfSaver::VisitPolygon() { VisitScannedPolygon(state_); }

zyresult GltfSaver::SaveSceneAs(GltfFormat format) {
  state_.textFormat = format;
  state_.frame = &Frame();
  state_.visitor = this;
  state_.log.ResetCounters();
  try {
    return Frame().PassNumber() == SavePass::Counting ? InitSaver(state_) : RunWritingPass();
  } catch (...) {
    ReportFatalError(state_.log);
    return ZYe_FAILED;
  }
}

zyresult GltfSaver::RunWritingPass() {
  if (!state_.initialized) {
    if (const zyresult result = InitSaver(state_); result != ZYe_OK) {
      state_.log.ErrorDialog("GltfSaver failed to initialize");
      return result;
    }
  }
  const zyresult result = RunSaver(state_);
  ReportSummary(state_.log);
  return result;
}
