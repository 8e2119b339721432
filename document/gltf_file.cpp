#include "document/gltf_file.h"

#include "document/buffer_data.h"

namespace {

bool WriteText(const std::string& path, const JsonPieces& text) {
  FileStream stream(path);
  if (stream.Failed()) return false;
  stream.Write(text);
  return stream.Close();
}

// Where the images go. The place of the cut is the given path's; with a "." in a directory's name the text
// path is shorter than that, and is cut in its own end or not at all.
std::string ImageDirectory(const std::string& path, const std::string& textPath) {
  return textPath.substr(0, path.rfind('\\') + 1);
}

}  // namespace

std::string BufferUri(const std::string& path) { return FileNameOf(CutExtension(path) + ".bin"); }

bool WriteGltf(GltfDocument& document, const std::string& path, const JsonPieces& text) {
  const std::string textPath = CutExtension(path) + ".gltf";
  if (!WriteText(textPath, text)) return false;
  FileStream stream(CutExtension(path) + ".bin");
  if (stream.Failed()) return false;
  const bool copied = WriteBufferData(document, stream, ImageDirectory(path, textPath));
  return stream.Close() && copied;
}
