// Four-character codes: types of mesh maps and tags.
#pragma once

#include <cstdint>

// The first character stands in the highest byte: FourCC("GTYP") is 0x47545950.
constexpr std::uint32_t FourCC(const char (&text)[5]) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) << 24 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 16 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 8 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[3]));
}

constexpr std::uint32_t kMapNormal = FourCC("NORM");
constexpr std::uint32_t kMapRgb = FourCC("RGB ");
constexpr std::uint32_t kMapRgba = FourCC("RGBA");
constexpr std::uint32_t kMapUv = FourCC("TXUV");
constexpr std::uint32_t kMapTangentBasis = FourCC("TBAS");
constexpr std::uint32_t kMapWeight = FourCC("WGHT");
constexpr std::uint32_t kTagMaterial = FourCC("MATR");
constexpr std::uint32_t kTagPart = FourCC("PART");
constexpr std::uint32_t kTagGroupType = FourCC("GTYP");
