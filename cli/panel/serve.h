// The panel's life: from the first request to Ctrl-C, or until its page has gone.
#pragma once

#include <functional>

#include "cli/panel/http.h"
#include "cli/panel/panel.h"

namespace cli {

enum class PanelEnd { kInterrupted, kAbandoned };

/// Answers requests until `interrupted` says yes or the panel is abandoned; then no render is under way any
/// more.  Throws ToolError(kFrameFailed) when the server breaks down.
PanelEnd Serve(HttpServer& server, Panel& panel, const std::function<bool()>& interrupted);

/// Shows the address in the user's browser; false when there is no way known to do so.
bool OpenBrowser(const std::string& address);

}  // namespace cli
