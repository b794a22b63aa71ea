// The module's side.
#include "cli/panel/exports.h"

extern "C" [[gnu::visibility("default")]] decltype(&cli::MakeHttpServer) VintrelPanel();

decltype(&cli::MakeHttpServer) VintrelPanel() {
  return &cli::MakeHttpServer;
}
