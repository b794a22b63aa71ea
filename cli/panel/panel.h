// What the panel answers: the page's files, the input's frames, scenes, and renders.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/panel/guard.h"
#include "cli/panel/page_files.h"
#include "cli/panel/plate.h"
#include "cli/panel/renders.h"
#include "cli/scene/scene.h"

namespace cli {

struct PanelSettings {
  std::string sceneFile{};  // empty without
  std::filesystem::path page = PageFiles::FolderOfTool();
  std::filesystem::path tool = "/proc/self/exe";  // what renders
  /// For how long the page may say nothing.  It speaks every ten seconds, and in a window that is hidden,
  /// where browsers slow it down, once a minute.
  std::chrono::milliseconds longestSilence = std::chrono::seconds(70);
};

class Panel {
 public:
  /// Opens the scene's input when it names one.  `port` is the server's.  Throws ToolError.
  Panel(const Scene& scene, minihost::SharedParameterList list, PanelSettings settings, int port);

  /// What opens the page: "http://127.0.0.1:PORT/TOKEN/?panel".
  std::string Address() const { return guard_.Address() + "?panel"; }

  /// From any thread.  Throws nothing; errors are JSON, {"error": "..."}.
  HttpReply Answer(const HttpRequest& request);

  /// Whether the page was there, and has been gone for too long.  While a render is under way it may be.
  bool IsAbandoned() const;

  /// Stops the render under way; from any thread.
  void Stop() { renders_.StopAll(); }
  void WaitForRenders() const { renders_.Wait(); }

 private:
  using Words = std::vector<std::string>;  // those of a path that a route leaves open
  struct Route;
  static const std::vector<Route>& Routes();

  HttpReply AnswerSafely(const HttpRequest& request);
  HttpReply SendPanel(const HttpRequest& request, const Words& words);
  HttpReply SendFrame(const HttpRequest& request, const Words& words);
  HttpReply SaveScene(const HttpRequest& request, const Words& words);
  HttpReply StartRender(const HttpRequest& request, const Words& words);
  HttpReply SendEvents(const HttpRequest& request, const Words& words);
  HttpReply StopRender(const HttpRequest& request, const Words& words);
  HttpReply NotePresence(const HttpRequest& request, const Words& words);
  void NoteWord();

  PanelSettings settings_;
  minihost::SharedParameterList list_;
  Guard guard_;
  PageFiles files_;
  std::unique_ptr<Plate> plate_;  // none without an input
  Renders renders_;
  mutable std::mutex mutex_;
  std::optional<std::chrono::steady_clock::time_point>
      lastHeard_;  // since the page first said that it is there
};

}  // namespace cli
