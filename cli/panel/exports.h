// What the module of the panel exports: the server, with the library that it needs.
#pragma once

#include "cli/panel/http.h"

namespace cli {

/// The one name that the module exports.
inline constexpr char kPanelModuleName[] = "VintrelPanel";
using GetPanelModule = decltype (&MakeHttpServer)();

}  // namespace cli
