// Stands in for geometry where a test asks only what the document makes of its records: the primitive's
// indices are the tag's triangle numbers.
#include "document/buffers.h"
#include "document/write_materials.h"
#include "document/write_primitive.h"

void WritePrimitive(GltfDocument& document, const GltfMesh& mesh, const TagTriangles& entry,
                    JsonValue& primitives) {
  JsonAllocator& allocator = *document.allocator;
  const auto material = mesh.materialByTag.find(entry.first);
  JsonValue primitive(rapidjson::kObjectType);
  primitive.AddMember("indices", AddIndices(document, entry.second), allocator);
  if (material != mesh.materialByTag.end())
    primitive.AddMember("material", WriteMaterial(document, *material->second, mesh), allocator);
  primitives.PushBack(primitive, allocator);
}
