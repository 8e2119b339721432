// The contents of the binary buffer.
#pragma once

#include "document/document.h"
#include "document/file_stream.h"

// The length of all blocks that go into the buffer, which its 32-bit sum may have wrapped.
std::uint64_t BufferBytes(const GltfDocument& document);

// Writes the document's blocks in order and frees each one. In a .glb images go into the stream, else they
// are copied into the directory. False when an image copy can't be written; failures of the stream show in
// the stream.
bool WriteBufferData(GltfDocument& document, FileStream& stream, const std::string& directory);
