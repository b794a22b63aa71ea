// Scenes as text, whole and always the same.
#pragma once

#include <string>

#include "cli/scene/scene.h"

namespace cli {

/// A scene file that makes this scene of any other: everything that is set and every parameter, in the order
/// of declaration, numbers with as many digits as tell them apart.  Colours are rounded to whole channels.
///
/// Throws ToolError(kUsage) for a path that is not UTF-8, which TOML cannot hold.
std::string WriteScene(const Scene& scene);

}  // namespace cli
