// Base of the scene savers: the two passes of a save.
#pragma once

#include "host/file_format.h"
#include "host/scene_frame.h"

#include <memory>

// What a saver server implements; CZyIfc_Saver forwards the host's calls to it.
class CZyImpl_Saver {
 public:
  virtual ~CZyImpl_Saver() = default;
  virtual zyresult VerifyTarget(IZyObject* target, IZyObject* message) = 0;
  virtual zyresult SaveTarget(IZyObject* target, const char* filename, IZyMonitor* monitor) = 0;
};

class CZySceneSaver : public CZyImpl_Saver, protected SceneScanVisitor {
 public:
  ~CZySceneSaver() override = default;

  // ZYe_NO_TARGET when the message object can't be bound, else the result of binding the frame.
  zyresult VerifyTarget(IZyObject* target, IZyObject* message) override;
  // Runs a counting pass when there is a monitor, then the writing pass. The first failure that the
  // frame kept is the result even when SaveScene was content.
  zyresult SaveTarget(IZyObject* target, const char* filename, IZyMonitor* monitor) override;

  virtual CZyFileFormat* FormatPart() = 0;
  virtual bool UsesSubset() = 0;
  virtual void VerifyScene() {}
  virtual zyresult SaveScene() = 0;
  void VisitPoint() override {}
  void VisitEdge() override {}
  void VisitPolygon() override {}

 protected:
  // The state of the running save; valid within SaveScene and VerifyScene only.
  SceneFrame& Frame() { return *frame_; }

 private:
  zyresult RunPasses(CZyFileFormat& format, const char* filename, IZyMonitor* monitor);

  std::unique_ptr<SceneFrame> frame_;
};
