// What the path table and its neighbours share.
#pragma once

#include "objects.h"

namespace foreign_server {

/// What a path says at this moment, also one that the test plays.
PathData contentOf(const PathObject& path);

} // namespace foreign_server
