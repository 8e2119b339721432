#include "document/write_meshes.h"

#include "document/write_primitive.h"

std::optional<std::uint32_t> WriteMesh(GltfDocument& document, const GltfMesh& mesh) {
  if (mesh.positions.empty() || mesh.polygonsByTag.empty()) return std::nullopt;
  JsonText& text = document.json->meshes.Append();
  text.StartObject();
  text.Key("primitives");
  text.StartArray();
  for (const TagTriangles& entry : mesh.polygonsByTag) WritePrimitive(document, mesh, entry, text);
  text.EndArray();
  text.EndObject();
  for (const auto& skin : mesh.skins) {
    skin->node = mesh.node;
    document.skins.push_back(skin.get());
  }
  return document.json->meshes.Size() - 1;
}
