// What pages and the tool's rooms tell each other about parameters and scenes: pages get JSON, and give the
// grammar of scene files.
#pragma once

#include <string_view>

#include "cli/report/json.h"
#include "cli/scene/scene.h"
#include "minihost/parameter/info.h"

namespace web {

/// All parameters in their order, group starts and ends among them.
cli::Json DescribeParameters(const minihost::ParameterList& list);

/// A number, [red, green, blue] or [x, y].
cli::Json JsonOf(const minihost::Value& value);

/// A value, or {"keys": [{"frame", "value", "ease"}]}.
cli::Json JsonOf(const minihost::Track& track);

/// A scene file as a page wants it: "render" with the keys that are in the file, "parameters" with the
/// courses of those that are in the file, by slug, "preset" with its label when it has one.  `list` is the
/// effect's. Throws ToolError as the tool's reader does.
cli::Json ReadSceneText(std::string_view text, std::string_view name,
                        const minihost::SharedParameterList& list);

}  // namespace web
