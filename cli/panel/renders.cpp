#include "cli/panel/renders.h"

#include <fmt/format.h>

#include <sstream>
#include <utility>

#include "cli/file/output_name.h"
#include "cli/report/error.h"
#include "cli/report/json.h"
#include "cli/scene/frame_range.h"
#include "cli/scene/reader.h"

namespace cli {
namespace {

constexpr std::size_t kMostKept = 8;

/// What the tool refused a call with, from its objects.
std::string ErrorIn(const ToolOutcome& outcome) {
  std::istringstream lines(outcome.err);
  for (std::string line; std::getline(lines, line);) {
    const Json object = Json::parse(line, nullptr, false);
    if (object.is_object() && object.value("event", Json()) == "error") {
      return object.value("message", "");
    }
  }
  return fmt::format("the tool ended with code {}", outcome.code);
}

void CheckNothingIsThere(const Scene& scene) {
  const OutputName name(scene.output);
  for (const std::int32_t frame : ParseFrames(scene.frames)) {
    const std::filesystem::path file = name.ForFrame(frame);
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(file, error))) {
      throw HttpError(409, fmt::format("'{}' is there already", file.string()));
    }
  }
}

}  // namespace

Renders::Renders(std::filesystem::path tool, std::string input, minihost::SharedParameterList list)
    : tool_(std::move(tool)), input_(std::move(input)), list_(std::move(list)) {}

int Renders::Start(const RenderWish& wish) {
  // Checking takes as long as opening the input does; the others are answered meanwhile.
  const std::unique_lock starting(starting_, std::try_to_lock);
  if (!starting.owns_lock() || AreUnderWay()) {
    throw HttpError(503, "a render is under way; stop it, or wait for its end");
  }
  const ToolCall call{.tool = tool_, .arguments = ArgumentsFor(wish), .scene = wish.scene};
  CheckFirst(wish, call);
  const std::scoped_lock lock(mutex_);
  if (isClosed_) {
    throw HttpError(503, "the panel is about to end");
  }
  auto render = std::make_shared<PanelRender>(call);
  renders_.emplace(++started_, std::move(render));
  if (renders_.size() > kMostKept) {
    renders_.erase(renders_.begin());
  }
  return started_;
}

std::vector<std::string> Renders::ArgumentsFor(const RenderWish& wish) const {
  Scene scene(list_);
  ApplySceneText(wish.scene, "scene", scene);
  std::vector<std::string> arguments = {"render", "--scene=/dev/stdin", "--progress=json",
                                        wish.mayReplace ? "--overwrite" : "--no-overwrite"};
  if (scene.input.empty() && !scene.blank && !input_.empty()) {
    arguments.push_back("--input=" + input_);
  }
  if (!wish.output.empty()) {
    arguments.push_back("--output=" + wish.output);
  }
  if (!wish.frames.empty()) {
    arguments.push_back("--frames=" + wish.frames);
  }
  return arguments;
}

void Renders::CheckFirst(const RenderWish& wish, ToolCall call) const {
  call.arguments.emplace_back("--dry-run");
  const ToolOutcome outcome = RunTool(call);
  if (outcome.code != 0) {
    throw HttpError(400, ErrorIn(outcome));
  }
  if (!wish.mayReplace) {
    // What is printed is a scene, its frames and output worked out.
    Scene planned(list_);
    ApplySceneText(outcome.out, "plan", planned);
    CheckNothingIsThere(planned);
  }
}

HttpStream Renders::Events(int number) const {
  return PanelRender::Events(Find(number));
}

void Renders::Stop(int number) {
  Find(number)->Stop();
}

bool Renders::AreUnderWay() const {
  const auto latest = Latest();
  return latest != nullptr && !latest->HasEnded();
}

void Renders::StopAll() {
  {
    const std::scoped_lock lock(mutex_);
    isClosed_ = true;
  }
  if (const auto latest = Latest()) {
    latest->Stop();
  }
}

void Renders::Wait() const {
  if (const auto latest = Latest()) {
    latest->Wait();
  }
}

std::shared_ptr<PanelRender> Renders::Find(int number) const {
  const std::scoped_lock lock(mutex_);
  const auto found = renders_.find(number);
  if (found == renders_.end()) {
    throw HttpError(404, fmt::format("there is no render {}", number));
  }
  return found->second;
}

std::shared_ptr<PanelRender> Renders::Latest() const {
  const std::scoped_lock lock(mutex_);
  return renders_.empty() ? nullptr : renders_.rbegin()->second;
}

}  // namespace cli
