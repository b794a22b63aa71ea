// The tool's side: the server is that of the module, which is loaded when it is made.
#include "cli/loaded/module.h"
#include "cli/panel/exports.h"

namespace cli {

std::unique_ptr<HttpServer> MakeHttpServer() {
  return reinterpret_cast<GetPanelModule*>(FindInModule("panel", "panels", kPanelModuleName))()();
}

}  // namespace cli
