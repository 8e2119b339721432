// Stands in for geometry where a test asks only what the document makes of its records: the primitive's
// indices are the tag's triangle numbers.
#include "document/buffers.h"
#include "document/write_materials.h"
#include "document/write_primitive.h"

void WritePrimitive(GltfDocument& document, const GltfMesh& mesh, const TagTriangles& entry,
                    JsonText& primitives) {
  const auto material = mesh.materialByTag.find(entry.first);
  primitives.StartObject();
  primitives.Member("indices", AddIndices(document, entry.second));
  if (material != mesh.materialByTag.end())
    primitives.Member("material", WriteMaterial(document, *material->second, mesh));
  primitives.EndObject();
}
