#include <string>

#include "cli/command/commands.h"
#include "cli/command/scene_options.h"
#include "cli/panel/serve.h"
#include "cli/report/interrupt.h"
#include "cli/scene/reader.h"

namespace cli {

ExitCode OpenPanel(const PanelOptions& options, const minihost::Effect& effect, Messages& messages) {
  constexpr int kMaxPort = 65535;
  const int wanted = About("--port", [&] { return CheckedWithin(options.port, 0, kMaxPort); });
  Scene scene(effect.SharedParameters());
  if (!options.sceneFile.empty()) {
    ApplySceneFile(options.sceneFile, scene);
  }
  if (!options.input.empty()) {
    scene.input = options.input;
    scene.blank.reset();
  }

  const auto server = MakeHttpServer();
  const int port = server->Bind(wanted);
  PanelSettings settings;
  settings.sceneFile = options.sceneFile;
  Panel panel(scene, effect.SharedParameters(), settings, port);
  const GracefulEnd graceful([&] { panel.WaitForRenders(); });
  PrintToStdout(panel.Address() + '\n');
  if (!options.noBrowser && !OpenBrowser(panel.Address())) {
    messages.Note("there is no xdg-open to show the page with; open the address in a browser");
  }
  messages.Say("Ctrl-C ends the panel; so does closing its page, a minute later");
  const PanelEnd end = Serve(*server, panel, Interrupted);
  return end == PanelEnd::kInterrupted ? ExitCode::kInterrupted : ExitCode::kDone;
}

}  // namespace cli
