#include "cli/panel/panel.h"

#include <fmt/format.h>

#include <exception>
#include <fstream>
#include <iterator>
#include <utility>

#include "cli/panel/scene_files.h"
#include "cli/report/error.h"
#include "cli/report/number.h"
#include "cli/scene/writer.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

HttpReply JsonReply(int status, const Json& object) {
  return TextReply(status, "application/json", JsonLine(object));
}

HttpReply ErrorReply(int status, std::string_view message) {
  return JsonReply(status, {{"error", message}});
}

/// Nothing that the page holds leaves the machine, nothing foreign runs in it, and no other page frames it,
/// reads it or keeps it.
void AddSafetyHeaders(HttpReply& reply) {
  constexpr std::pair<const char*, const char*> kHeaders[] = {
      {"Content-Security-Policy",
       "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; style-src 'self' 'unsafe-inline'; "
       "img-src 'self' blob: data:; media-src 'self' blob:; font-src 'self'; connect-src 'self' blob:; "
       "worker-src 'self' blob:; manifest-src 'self'; base-uri 'none'; form-action 'none'; "
       "frame-ancestors 'none'"},
      {"X-Content-Type-Options", "nosniff"},
      {"X-Frame-Options", "DENY"},
      {"Cross-Origin-Resource-Policy", "same-origin"},
      {"Cross-Origin-Opener-Policy", "same-origin"},
      {"Referrer-Policy", "same-origin"},
      {"Cache-Control", "no-store"}};
  for (const auto& [name, value] : kHeaders) {
    reply.headers.emplace_back(name, value);
  }
}

std::vector<std::string> Split(std::string_view path) {
  std::vector<std::string> words;
  while (true) {
    const std::size_t end = path.find('/');
    words.emplace_back(path.substr(0, end));
    if (end == path.npos) {
      return words;
    }
    path.remove_prefix(end + 1);
  }
}

template <class Number>
Number NumberIn(const std::string& word) {
  const auto number = ParseNumber<Number>(word);
  if (!number) {
    throw HttpError(404, fmt::format("'{}' is not a whole number", word));
  }
  return *number;
}

std::string TextIn(const Json& object, const char* key) {
  const Json value = object.value(key, Json(""));
  if (!value.is_string()) {
    throw HttpError(400, fmt::format("'{}' must be a string", key));
  }
  return value;
}

/// The file as it is now: it may have been saved since.
Json SceneIn(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (path.empty() || !stream) {
    return nullptr;
  }
  return {{"path", path}, {"text", std::string(std::istreambuf_iterator<char>(stream), {})}};
}

}  // namespace

struct Panel::Route {
  std::string_view method;
  std::vector<std::string> path;  // a star stands for any word
  HttpReply (Panel::*answer)(const HttpRequest&, const Words&);

  /// The words for the stars; empty for another path.
  std::optional<Words> Match(const std::vector<std::string>& given) const {
    Words words;
    if (given.size() != path.size()) {
      return {};
    }
    for (std::size_t i = 0; i < path.size(); ++i) {
      if (path[i] == "*") {
        words.push_back(given[i]);
      } else if (path[i] != given[i]) {
        return {};
      }
    }
    return words;
  }
};

const std::vector<Panel::Route>& Panel::Routes() {
  static const std::vector<Route> kRoutes = {
      {"GET", {"api", "panel"}, &Panel::SendPanel},
      {"GET", {"api", "frame", "*"}, &Panel::SendFrame},
      {"PUT", {"api", "scene"}, &Panel::SaveScene},
      {"POST", {"api", "renders"}, &Panel::StartRender},
      {"GET", {"api", "renders", "*", "events"}, &Panel::SendEvents},
      {"DELETE", {"api", "renders", "*"}, &Panel::StopRender},
      {"POST", {"api", "alive"}, &Panel::NotePresence},
  };
  return kRoutes;
}

Panel::Panel(const Scene& scene, minihost::SharedParameterList list, PanelSettings settings, int port)
    : settings_(std::move(settings)),
      list_(std::move(list)),
      guard_(port),
      files_(settings_.page),
      renders_(settings_.tool, scene.input, list_) {
  if (!scene.input.empty()) {
    WriteScene(scene);  // refuses a name that no scene can hold
    plate_ = std::make_unique<Plate>(scene);
  }
}

HttpReply Panel::Answer(const HttpRequest& request) {
  HttpReply reply;
  try {
    reply = AnswerSafely(request);
  } catch (const HttpError& error) {
    reply = ErrorReply(error.Status(), error.what());
  } catch (const ToolError& error) {
    reply = ErrorReply(400, error.what());
  } catch (const std::bad_alloc&) {
    reply = ErrorReply(500, "out of memory");
  } catch (const std::exception& error) {
    reply = ErrorReply(500, error.what());
  }
  AddSafetyHeaders(reply);
  return reply;
}

HttpReply Panel::AnswerSafely(const HttpRequest& request) {
  const std::string path = guard_.PathOf(request);
  NoteWord();
  const std::vector<std::string> words = Split(path);
  bool isKnown = words[0] != "api";
  for (const Route& route : Routes()) {
    if (const auto open = route.Match(words)) {
      if (route.method == request.method) {
        return (this->*route.answer)(request, *open);
      }
      isKnown = true;
    }
  }
  if (!isKnown) {
    throw HttpError(404, "the panel has no such call");
  }
  if (words[0] == "api" || request.method != "GET") {
    throw HttpError(405, fmt::format("{} is not for this address", request.method));
  }
  return files_.Read(path);
}

HttpReply Panel::SendPanel(const HttpRequest&, const Words&) {
  return JsonReply(200, {{"version", VINTREL_VERSION},
                         {"input", plate_ ? plate_->Facts() : Json(nullptr)},
                         {"scene", SceneIn(settings_.sceneFile)},
                         {"folder", std::filesystem::current_path().string()}});
}

HttpReply Panel::SendFrame(const HttpRequest&, const Words& words) {
  if (!plate_) {
    throw HttpError(404, "the panel has no input");
  }
  return {.status = 200,
          .type = "application/octet-stream",
          .headers = {{"X-Vintrel-Width", std::to_string(plate_->Width())},
                      {"X-Vintrel-Height", std::to_string(plate_->Height())}},
          .body = plate_->Frame(NumberIn<std::int32_t>(words[0])),
          .stream = {}};
}

HttpReply Panel::SaveScene(const HttpRequest& request, const Words&) {
  const std::string file = request.Query("file");
  if (file.empty()) {
    throw HttpError(400, "no file to save in");
  }
  SaveSceneText(request.body, file,
                request.Query("replace") == "1" ? WhenThere::kReplace : WhenThere::kRefuse, list_);
  return JsonReply(200, {{"path", file}});
}

HttpReply Panel::StartRender(const HttpRequest& request, const Words&) {
  const Json wish = Json::parse(request.body, nullptr, false);
  if (!wish.is_object()) {
    throw HttpError(400, "the wish is not a JSON object");
  }
  const Json replace = wish.value("replace", Json(false));
  const int number = renders_.Start({.scene = TextIn(wish, "scene"),
                                     .output = TextIn(wish, "output"),
                                     .frames = TextIn(wish, "frames"),
                                     .mayReplace = replace.is_boolean() && replace});
  return JsonReply(201, {{"id", std::to_string(number)}});
}

HttpReply Panel::SendEvents(const HttpRequest&, const Words& words) {
  // Who listens is there.
  const auto listened = [this, events = renders_.Events(NumberIn<int>(words[0]))](std::string& text) {
    NoteWord();
    return events(text);
  };
  return {.status = 200, .type = "text/event-stream", .headers = {}, .body = {}, .stream = listened};
}

HttpReply Panel::StopRender(const HttpRequest&, const Words& words) {
  renders_.Stop(NumberIn<int>(words[0]));
  return {.status = 204, .type = {}, .headers = {}, .body = {}, .stream = {}};
}

HttpReply Panel::NotePresence(const HttpRequest&, const Words&) {
  const std::scoped_lock lock(mutex_);
  lastHeard_ = Clock::now();
  return {.status = 204, .type = {}, .headers = {}, .body = {}, .stream = {}};
}

void Panel::NoteWord() {
  const std::scoped_lock lock(mutex_);
  if (lastHeard_) {
    lastHeard_ = Clock::now();
  }
}

bool Panel::IsAbandoned() const {
  const std::scoped_lock lock(mutex_);
  return lastHeard_ && Clock::now() - *lastHeard_ > settings_.longestSilence && !renders_.AreUnderWay();
}

}  // namespace cli
