// Image files: entries of "images", and the bytes behind them. Images are taken as they stand, and only a
// file's name tells what it is.
#pragma once

#include "document/document.h"
#include "document/file_stream.h"

#include <optional>

GltfImageFile MakeImageFile(const std::string& path);

// The path's index in "images", writing it on first use. Without a file under the path an error is logged
// and there is no index; the next texture that names it tries again.
std::optional<std::uint32_t> AddImage(GltfDocument& document, const GltfImageFile& image);

// Writes just byteCount bytes: zeros for what the file no longer gives.
void EmbedImage(FileStream& stream, const std::string& path, std::uint32_t byteCount);

// Copies an image file under its own name into a directory, which ends in a backslash or is empty. A file
// that already lies there is left alone, a source that is gone is no failure. False when the copy can't be
// written.
bool CopyImage(const std::string& path, const std::string& directory);
