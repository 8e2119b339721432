// Animations as JSON.
#pragma once

#include "document/document.h"

// Writes an animation unless it has neither channels nor samplers. The samplers' keys are freed on the way.
// All nodes must be written before.
void WriteAnimation(GltfDocument& document, GltfAnimation& animation);
