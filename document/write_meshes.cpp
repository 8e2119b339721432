#include "document/write_meshes.h"

#include "document/json_values.h"
#include "document/write_primitive.h"

std::optional<std::uint32_t> WriteMesh(GltfDocument& document, const GltfMesh& mesh) {
  if (mesh.positions.empty() || mesh.polygonsByTag.empty()) return std::nullopt;
  JsonAllocator& allocator = *document.allocator;
  JsonValue primitives(rapidjson::kArrayType);
  for (const TagTriangles& entry : mesh.polygonsByTag) WritePrimitive(document, mesh, entry, primitives);
  for (const auto& skin : mesh.skins) {
    skin->node = mesh.node;
    document.skins.push_back(skin.get());
  }
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("primitives", primitives, allocator);
  return AppendValue(document.json.meshes, std::move(object), allocator);
}
