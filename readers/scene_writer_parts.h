// The parts of writing a scene file.
#pragma once

#include "headless/scene_data.h"
#include "readers/scene_array_writer.h"
#include "readers/scene_text.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace readers {

// What writing an item needs of the scene.
struct SceneOutput {
  const headless::SceneData& scene;
  SceneText& text;
  ArrayWriter& arrays;
  std::vector<std::string> ids;                                            // by item, as they stand in the file
  std::map<const headless::MeshData*, std::string> meshNames;              // of the meshes that items share
  std::map<std::string, std::vector<headless::ChannelData>> typeChannels;  // channels that a type gives an item

  // The id of an item. Throws a WriteFault when there is no such item.
  const std::string& Id(headless::ItemIndex item) const;
  void WriteIds(const std::vector<headless::ItemIndex>& items) const;
};

// All of these throw a WriteFault for what no scene file can say.

void WriteItem(SceneOutput& out, headless::ItemIndex index);

// The channels of an item as an entry "channels", nothing when they are those of its type.
void WriteChannels(SceneOutput& out, const headless::ItemData& item);
bool IsDefault(const headless::ChannelData& channel, const headless::ChannelData& ofType);
void WriteChannelValue(SceneText& text, const headless::ChannelValue& value,
                       const headless::ChannelValue& pattern);
void WriteEnvelope(SceneText& text, const headless::EnvelopeData& envelope);
// [id, name], or [id, index] when the name stands for another channel.
void WriteChannelRef(const SceneOutput& out, const headless::ChannelRef& ref);

void WriteMesh(SceneText& text, ArrayWriter& arrays, const headless::MeshData& mesh);
// Degrees that a reader turns into just these radians, none when there are none.
std::optional<double> FindDegrees(double radians, double (*toRadians)(double degrees));
// A code of four characters without the blanks at its end, or 0x and its hexadecimal digits.
std::string FourCCText(std::uint32_t code);

}  // namespace readers
