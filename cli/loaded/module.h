// Libraries that few runs need, in modules of the tool's own: they are loaded when first asked for.
#pragma once

#include <string_view>

namespace cli {

/// What the module exports under `symbol`.  The module `vintrel_<name>.so` lies beside the tool, where it was
/// built, or where it was installed as seen from the tool, so that the whole may be moved; it stays loaded.
/// Throws ToolError(kFrameFailed), naming the module and `purpose` ("pictures"), when it cannot be loaded.
void* FindInModule(std::string_view name, std::string_view purpose, const char* symbol);

}  // namespace cli
