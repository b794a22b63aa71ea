// The C interface of the module.  engine.js is its one caller.
//
// Every function that can fail returns the address of its answer: JSON, with a closing zero, good until the
// next call.  {"error": "..."} says what was wrong.  Texts go in through EngineText: one or two, UTF-8, the
// second after the first.
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>

#include "web/engine/engine.h"
#include "web/engine/plain_entry.h"

#define VINTREL_EXPORT(name) extern "C" __attribute__((export_name(#name), used))

namespace {

using web::Engine;

struct Opened {
  explicit Opened(web::Loop loop) : engine(loop) {}
  Engine engine;
  std::string text;    // in
  std::string answer;  // out

  std::string_view First(std::size_t size) const { return std::string_view(text).substr(0, size); }
  std::string_view Rest(std::size_t size) const { return std::string_view(text).substr(size); }
};

// Exceptions end here.
template <class Task>
const char* Answer(Opened& opened, Task&& task) noexcept {
  cli::Json answer;
  try {
    answer = task();
  } catch (const std::bad_alloc&) {
    answer = {{"error", "there is not enough memory for a picture of this size"}};
  } catch (const std::exception& error) {
    answer = {{"error", error.what()}};
  }
  opened.answer = cli::JsonLine(answer);
  return opened.answer.c_str();
}

minihost::Depth DepthOf(int bits) {
  return bits == 32   ? minihost::Depth::kFloat
         : bits == 16 ? minihost::Depth::kBits16
                      : minihost::Depth::kBits8;
}

cli::Json PlaceOf(const minihost::Image& image) {
  return {{"width", image.Width()},
          {"height", image.Height()},
          {"rowBytes", image.RowBytes()},
          {"data", reinterpret_cast<std::uintptr_t>(image.Data())}};
}

}  // namespace

/// The effect, set up; `isPlain` holds its fast loop back.
VINTREL_EXPORT(EngineOpen) Opened* EngineOpen(int isPlain) {
  return new Opened(isPlain != 0 ? web::Loop::kPlain : web::Loop::kBest);
}

/// Where the next call's text goes, `size` bytes.
VINTREL_EXPORT(EngineText) char* EngineText(Opened* opened, std::size_t size) {
  opened->text.resize(size);
  return opened->text.data();
}

VINTREL_EXPORT(EngineDescribe) const char* EngineDescribe(Opened* opened) {
  return Answer(*opened, [&] { return opened->engine.Describe(); });
}

/// The text: a scene's [parameters].
VINTREL_EXPORT(EngineSetParameters) const char* EngineSetParameters(Opened* opened) {
  return Answer(*opened, [&] {
    opened->engine.SetParameters(opened->text);
    return cli::Json::object();
  });
}

/// A transparent plate of this depth (8, 16, 32): its number, and where its pixels go.
VINTREL_EXPORT(EngineAddPlate) const char* EngineAddPlate(Opened* opened, int width, int height, int bits) {
  return Answer(*opened, [&] {
    const int number = opened->engine.AddPlate(width, height, DepthOf(bits));
    cli::Json place = PlaceOf(opened->engine.PlateAt(number).Pixels());
    place["number"] = number;
    return place;
  });
}

/// After its pixels were written.
VINTREL_EXPORT(EngineSealPlate) const char* EngineSealPlate(Opened* opened, int number) {
  return Answer(*opened, [&] {
    opened->engine.PlateAt(number).Seal();
    return cli::Json::object();
  });
}

VINTREL_EXPORT(EngineDropPlate) void EngineDropPlate(Opened* opened, int number) {
  opened->engine.DropPlate(number);
}

/// The text: the frame rate.  Where the frame's pixels are, good until the next render.
VINTREL_EXPORT(EngineRender)
const char* EngineRender(Opened* opened, int plate, int frame, double shutterDegrees, int divisor, int bits,
                         double pixelAspect) {
  return Answer(*opened, [&] {
    return PlaceOf(opened->engine.Render({.frame = frame,
                                          .fps = opened->text,
                                          .shutterDegrees = shutterDegrees,
                                          .plate = plate,
                                          .divisor = divisor,
                                          .depth = DepthOf(bits),
                                          .pixelAspect = pixelAspect}));
  });
}

VINTREL_EXPORT(EngineDisabled) const char* EngineDisabled(Opened* opened, double frame) {
  return Answer(*opened, [&] { return opened->engine.Disabled(frame); });
}

/// The texts: a parameter's slug, `size` bytes, and what was typed.
VINTREL_EXPORT(EngineParse) const char* EngineParse(Opened* opened, std::size_t size) {
  return Answer(*opened, [&] { return opened->engine.Parse(opened->First(size), opened->Rest(size)); });
}

/// The texts: a scene file, `size` bytes, and its name for messages.
VINTREL_EXPORT(EngineReadScene) const char* EngineReadScene(Opened* opened, std::size_t size) {
  return Answer(*opened, [&] { return opened->engine.ReadScene(opened->First(size), opened->Rest(size)); });
}

/// The text: a scene file with what is set alone.  Answers with one that is whole.
VINTREL_EXPORT(EngineWriteScene) const char* EngineWriteScene(Opened* opened) {
  return Answer(*opened, [&] { return cli::Json(opened->engine.WriteScene(opened->text)); });
}

/// For tests of EngineOpen(1): the plain loop asks the host for a root of each flake.
VINTREL_EXPORT(EngineRootsAsked) double EngineRootsAsked() {
  return static_cast<double>(web::RootsAsked());
}
