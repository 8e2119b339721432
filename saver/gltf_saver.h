// The two savers that the host sees: one .glb file, or a .gltf file with a .bin beside it.
#pragma once

#include "host/module_api.h"
#include "host/scene_saver.h"
#include "saver/save_state.h"

class GltfSaver : public CZySceneSaver, public CZyFileFormat {
 public:
  static constexpr ZyTagRow kTags[] = {
      {"saver.outClass", "scene2", nullptr},
      {"saver.dosType", "glb", nullptr},
      {"server.username", "glTF v2 .glb", nullptr},
      {"server.logsubsystem", "io-status", nullptr},
      {nullptr, nullptr, nullptr},
  };

  CZyFileFormat* FormatPart() override { return this; }
  bool UsesSubset() override { return false; }
  zyresult SaveScene() override { return SaveSceneAs(GltfFormat::Glb); }
  void VisitPoint() override;
  void VisitPolygon() override;

  // Stores the name; the file is opened when the document is written.
  bool OpenFormat(const char* filename) override;
  void EnableFormat(bool) override {}
  bool FormatHasError() override { return false; }
  void CleanupFormat() override;

 protected:
  // One pass of a save. No exception leaves it.
  zyresult SaveSceneAs(GltfFormat format);

 private:
  zyresult RunWritingPass();

  SaveState state_;
};

class GltfSaverGLTF : public GltfSaver {
 public:
  static constexpr ZyTagRow kTags[] = {
      {"saver.outClass", "scene2", nullptr},
      {"saver.dosType", "gltf", nullptr},
      {"server.username", "glTF v2 .gltf", nullptr},
      {"server.logsubsystem", "io-status", nullptr},
      {nullptr, nullptr, nullptr},
  };

  zyresult SaveScene() override { return SaveSceneAs(GltfFormat::Gltf); }
};
