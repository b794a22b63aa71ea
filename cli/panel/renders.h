// The renders that the page starts, one at a time.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "cli/panel/render.h"
#include "minihost/parameter/info.h"

namespace cli {

struct RenderWish {
  std::string scene;   // TOML
  std::string output;  // empty: the scene's
  std::string frames;  // empty: the scene's, or the input's
  bool mayReplace = false;
};

class Renders {
 public:
  /// `tool` is what is run, and `input` what a scene that names none is rendered on.
  Renders(std::filesystem::path tool, std::string input, minihost::SharedParameterList list);

  /// Has the tool check all that it can before the first frame, and starts it.  Returns the render's number.
  ///
  /// Throws HttpError(409) while another one is under way, or when a file of the output is there and may not
  /// be replaced; ToolError(kUsage) for a scene that cannot be read; HttpError(400) with the tool's own
  /// message for whatever else it refuses.
  int Start(const RenderWish& wish);

  /// Throws HttpError(404) without such a render; the last few are there after their end, too.
  HttpStream Events(int number) const;
  void Stop(int number);

  bool AreUnderWay() const;

  /// Stops the one under way, and allows no more.
  void StopAll();

  /// Until none is under way.
  void Wait() const;

 private:
  std::vector<std::string> ArgumentsFor(const RenderWish& wish) const;
  void CheckFirst(const RenderWish& wish, ToolCall call) const;
  std::shared_ptr<PanelRender> Find(int number) const;
  std::shared_ptr<PanelRender> Latest() const;

  std::filesystem::path tool_;
  std::string input_;
  minihost::SharedParameterList list_;
  std::mutex starting_;
  mutable std::mutex mutex_;  // of what follows
  std::map<int, std::shared_ptr<PanelRender>> renders_;
  int started_ = 0;
  bool isClosed_ = false;
};

}  // namespace cli
