#include "document/texture_transform.h"

#include <cmath>

std::array<double, 2> TextureOffset(const GltfTexture& texture) {
  const double c = std::cos(texture.rotation);
  const double s = std::sin(texture.rotation);
  const double turnedU = -0.5 * c - 0.5 * s;
  const double turnedV = 0.5 * s - 0.5 * c;
  return {texture.offsetU - (texture.scaleU * 0.5 - 0.5) + (turnedU + 0.5) * texture.scaleU,
          texture.offsetV - (texture.scaleV * 0.5 - 0.5) + (turnedV + 0.5) * texture.scaleV};
}
