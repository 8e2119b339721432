// The image maps of one polygon tag by the material channel that they drive.
#pragma once

#include "host/scene_api.h"

#include <string_view>
#include <vector>

struct ChannelImage {
  std::string_view channel;  // a constant of the program
  IZyItem* item = nullptr;   // the image map
};

// One image map per channel: the first one inserted. The order of the entries is part of the output, as the
// checks of an image map see only what the entries before it stored.
//
// It is the node order of a hash table with 8 buckets and the FNV-1a hash, in which a new channel goes to the
// end of the list, or, when its bucket holds channels already, just before the first of these:
//
//   list:     metallicGLTF(1)  dissolve(2)  aoGLTF(4)
//   insert baseColorGLTF(2)
//   list:     metallicGLTF(1)  baseColorGLTF(2)  dissolve(2)  aoGLTF(4)
class ChannelImages {
 public:
  void Insert(std::string_view channel, IZyItem* item);

  const std::vector<ChannelImage>& Entries() const { return entries_; }

 private:
  std::vector<ChannelImage> entries_;
};
