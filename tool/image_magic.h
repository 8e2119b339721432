// Tells images from other files.
#pragma once

#include <filesystem>

namespace tool {

// True when the file begins like a PNG, JPEG, GIF, BMP, WebP, TIFF, DDS, KTX2, Radiance HDR, OpenEXR or PSD image.
// TGA has no such beginning.
bool BeginsLikeImage(const std::filesystem::path& file);

}  // namespace tool
