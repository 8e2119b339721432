// Planned motions as action clips of one actor.
#pragma once

#include "headless/scene_data.h"
#include "importer/node_items.h"

namespace importer {

// Sets the time range and the rate of the scene, and adds an actor with a clip for each animation.
void AddClips(const NodePlans& plans, const NodeItems& items, headless::SceneData& scene);

}  // namespace importer
