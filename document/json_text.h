// The text of a JSON tree: compact, reals with the shortest digits that read back the same double.
#pragma once

#include "document/document.h"

#include <rapidjson/writer.h>

// A number that JSON can't say stops the text there, at the same place each time the tree is written.
template <class Stream>
void WriteJsonText(const JsonValue& root, Stream& stream) {
  rapidjson::Writer<Stream> writer(stream);
  root.Accept(writer);
}
