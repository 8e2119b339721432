#include "importer/import_model.h"

#include "importer/axes.h"
#include "importer/clips.h"
#include "importer/file_access.h"
#include "importer/materials.h"
#include "importer/mesh_build.h"
#include "importer/mesh_items.h"
#include "importer/motion_plan.h"
#include "importer/node_items.h"
#include "importer/node_plan.h"
#include "importer/skin_plan.h"
#include "importer/source_check.h"
#include "importer/textures.h"
#include "readers/text_utf8.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace importer {
namespace {

// One line of what Assimp says, without the path that it got.
std::string ReasonOf(const Assimp::Importer& reader, const std::filesystem::path& file) {
  std::string reason = readers::ToUtf8(reader.GetErrorString());
  const std::string name = file.string();
  for (std::size_t place = reason.find(name); !name.empty() && place != std::string::npos;
       place = reason.find(name))
    reason.replace(place, name.size(), file.filename().string());
  std::replace_if(
      reason.begin(), reason.end(), [](char c) { return c >= 0 && c < ' '; }, ' ');
  return reason.empty() ? "can't be read" : reason;
}

void SetProperties(Assimp::Importer& reader) {
  // Skeletons without a mesh would get one.
  reader.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
  // Only the full chains of FBX nodes hold their pivots.
  reader.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, true);
  reader.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
}

ImportedScene Convert(const aiScene& source, const ImportOptions& options) {
  CheckSource(source);
  ImportedScene result;
  result.scene = headless::MakeScene();
  const std::vector<std::string> tags = MaterialTags(source);
  const MapNames names = CollectMapNames(source, tags);
  const NodePlan nodes = PlanNodes(source, RootMatrix(source, options));
  const SkinPlan skins = PlanSkins(source, nodes, result.warnings);
  const MotionPlan motions = PlanMotions(source, nodes, result.warnings);
  const NodePlans plans = {source, nodes, skins, motions};
  const NodeItems items = AddNodeItems(plans, result.scene, result.warnings);
  FillMeshItems(plans, items, names, result.scene, result.warnings);
  AddSkinItems(plans, items, names, result.scene, result.warnings);
  EmbeddedTextures textures(source, options.textureDirectory);
  AddMaterials(source, tags, names.uvs, textures, result.scene, result.warnings);
  result.embeddedTextures = textures.Files();
  AddClips(plans, items, result.scene);
  return result;
}

}  // namespace

ImportedScene ImportModel(const std::filesystem::path& file, const ImportOptions& options) {
  try {
    std::vector<std::filesystem::path> files;
    Assimp::Importer reader;
    reader.SetIOHandler(new FolderAccess(file, files));  // the reader's from here on
    SetProperties(reader);
    const aiScene* source = reader.ReadFile(file.string(), 0);
    if (!source) throw ImportError(ReasonOf(reader, file));
    ImportedScene imported = Convert(*source, options);
    imported.files = std::move(files);
    return imported;
  } catch (const std::bad_alloc&) {
    throw ImportError("needs more memory than there is");
  }
}

}  // namespace importer
