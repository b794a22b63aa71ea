// The host's services: copying, reduction and sampling.
#include <fmt/core.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "bench/cases.h"
#include "bench/in_turn.h"
#include "bench/looks.h"
#include "effect/pixel/pixel_type.h"
#include "effect/render/draw_flakes.h"
#include "minihost/picture/copy.h"
#include "minihost/picture/sampling.h"

namespace {

constexpr double kNano = 1e9;

std::size_t BytesOf(const minihost::Image& image) {
  return image.RowBytes() * static_cast<std::size_t>(image.Height());
}

// Copies onto an image that holds other bytes before; returns the seconds.
template <class Copy>
double TimeCopy(const minihost::Image& source, minihost::Image& target, const Copy& copy) {
  std::memset(target.Data(), 0xA5, BytesOf(target));
  const double seconds = SecondsOf(copy);
  if (std::memcmp(target.Data(), source.Data(), BytesOf(source)) != 0) {
    throw Difference("the copy differs from its source");
  }
  return seconds;
}

TimedForm CopyByHost(const minihost::Image& source, minihost::Image& target) {
  return [&] {
    const PF_LayerDef from = source.World();
    const PF_LayerDef to = target.World();
    return TimeCopy(source, target, [&] {
      CopyPixels(from, minihost::BoundsOf(from), to, minihost::BoundsOf(to), source.PixelDepth());
    });
  };
}

TimedForm CopyByMemcpy(const minihost::Image& source, minihost::Image& target) {
  return [&] {
    return TimeCopy(source, target, [&] { std::memcpy(target.Data(), source.Data(), BytesOf(source)); });
  };
}

// Rows as wide as 64 bytes divide, so that images have no padding and memcpy copies pixels alone.
minihost::Image Painted(Effort effort, minihost::Depth depth) {
  const Snow size = effort.Scaled({});
  return PaintBackground(size.width, size.height, depth);
}

template <class T>
void RunCopy(Effort effort, Report& report) {
  const minihost::Image source = Painted(effort, minihost::kDepthOf<T>);
  minihost::Image first = source.Clone();
  minihost::Image second = source.Clone();
  const std::vector<Samples> times = TimeInTurn({CopyByMemcpy(source, first), CopyByHost(source, first),
                                                 CopyByMemcpy(source, second), CopyByHost(source, second)},
                                                effort.Rounds(15), effort.WarmUps());
  Samples memcpyTimes = times[0];
  memcpyTimes.insert(memcpyTimes.end(), times[2].begin(), times[2].end());
  Samples hostTimes = times[1];
  hostTimes.insert(hostTimes.end(), times[3].begin(), times[3].end());
  const double scale = kNano / (source.Width() * source.Height());
  report.Add({.name = "copy (memcpy), a pixel",
              .depth = NameOf(minihost::kDepthOf<T>),
              .reference = Median(memcpyTimes) * scale,
              .measured = Median(hostTimes) * scale,
              .ratio = MedianRatio(memcpyTimes, hostTimes)});
}

// The mean of ten by ten pixels, as anyone would write it; the picture is opaque.
template <class T>
void ReduceSimply(const minihost::Image& source, minihost::Image& target) {
  using Channel = typename PixelType<T>::Channel;
  const auto mean = [](double sum) {
    constexpr bool kIsFloat = sizeof(Channel) == 4;
    return static_cast<Channel>(kIsFloat ? sum / 100.0 : std::floor(sum / 100.0 + 0.5));
  };
  for (int row = 0; row < target.Height(); ++row) {
    for (int column = 0; column < target.Width(); ++column) {
      double alpha = 0.0, red = 0.0, green = 0.0, blue = 0.0;
      for (int y = 0; y < 10; ++y) {
        const std::span<const T> pixels = source.Row<T>(row * 10 + y);
        for (int x = 0; x < 10; ++x) {
          const T& pixel = pixels[static_cast<std::size_t>(column * 10 + x)];
          alpha += pixel.alpha;
          red += pixel.red;
          green += pixel.green;
          blue += pixel.blue;
        }
      }
      target.Row<T>(row)[static_cast<std::size_t>(column)] = {mean(alpha), mean(red), mean(green),
                                                              mean(blue)};
    }
  }
}

// Integer channels must be equal; single precision leaves room for the last digits.
template <class T>
bool Near(const T& a, const T& b, double tolerance) {
  const auto near = [tolerance](double x, double y) { return std::fabs(x - y) <= tolerance; };
  return near(a.alpha, b.alpha) && near(a.red, b.red) && near(a.green, b.green) && near(a.blue, b.blue);
}

template <class T>
void RunReduction(Effort effort, Report& report) {
  const minihost::Image source = Painted(effort, minihost::kDepthOf<T>);
  minihost::Image simple(source.Width() / 10, source.Height() / 10, source.PixelDepth());
  minihost::Image reduced(simple.Width(), simple.Height(), source.PixelDepth());
  // Only whole tens: what is left over at the edges would make both do different work.
  const PF_LayerDef from = source.World();
  const PF_LayerDef to = reduced.World();
  const PF_LRect tens = {0, 0, simple.Width() * 10, simple.Height() * 10};
  const std::vector<Samples> times = TimeInTurn(
      {[&] { return SecondsOf([&] { ReduceSimply<T>(source, simple); }); },
       [&] {
         return SecondsOf([&] { CopyPixels(from, tens, to, minihost::BoundsOf(to), source.PixelDepth()); });
       }},
      effort.Rounds(9), effort.WarmUps());
  for (int row = 0; row < simple.Height(); ++row) {
    for (int column = 0; column < simple.Width(); ++column) {
      const auto at = static_cast<std::size_t>(column);
      if (!Near(simple.Row<T>(row)[at], reduced.Row<T>(row)[at], sizeof(T) == 16 ? 1e-6 : 0.0)) {
        throw Difference(
            fmt::format("the reduction differs from the mean at column {}, row {}", column, row));
      }
    }
  }
  const double scale = kNano / (source.Width() * source.Height());
  report.Add({.name = "reduction (simple mean), a pixel",
              .depth = NameOf(minihost::kDepthOf<T>),
              .reference = Median(times[0]) * scale,
              .measured = Median(times[1]) * scale,
              .ratio = MedianRatio(times[0], times[1])});
}

struct Position {
  PF_Fixed x;
  PF_Fixed y;
};

// The four pixels around the position in double precision; the picture is opaque.
template <class T>
T SampleSimply(const minihost::Image& image, Position at) {
  using Channel = typename PixelType<T>::Channel;
  const int column = at.x >> 16;
  const int row = at.y >> 16;
  const double u = (at.x & 0xFFFF) / 65536.0;
  const double v = (at.y & 0xFFFF) / 65536.0;
  const auto pixel = [&](int dx, int dy) -> const T& {
    const int c = std::min(column + dx, image.Width() - 1);
    return image.Row<T>(std::min(row + dy, image.Height() - 1))[static_cast<std::size_t>(c)];
  };
  const auto mix = [&](Channel T::*channel) {
    const double top = pixel(0, 0).*channel * (1.0 - u) + pixel(1, 0).*channel * u;
    const double bottom = pixel(0, 1).*channel * (1.0 - u) + pixel(1, 1).*channel * u;
    const double mixed = top * (1.0 - v) + bottom * v;
    return static_cast<Channel>(sizeof(Channel) == 4 ? mixed : std::floor(mixed + 0.5));
  };
  return {mix(&T::alpha), mix(&T::red), mix(&T::green), mix(&T::blue)};
}

template <class T>
void RunSampling(Effort effort, Report& report) {
  constexpr std::size_t kCalls = 200'000;
  const minihost::Image picture = Painted(effort, minihost::kDepthOf<T>);
  const minihost::Image light = minihost::Resized(picture, picture.Width() / 10, picture.Height() / 10);
  const PF_LayerDef world = light.World();
  std::vector<Position> positions(kCalls);
  std::uint32_t state = 7;
  const auto upTo = [&](int last) {
    state = state * 1664525u + 1013904223u;
    return static_cast<PF_Fixed>((std::uint64_t{state} * static_cast<std::uint64_t>(last) << 16) >> 32);
  };
  for (Position& position : positions) {
    position = {upTo(light.Width() - 1), upTo(light.Height() - 1)};
  }
  std::vector<T> simple(kCalls);
  std::vector<T> sampled(kCalls);
  const std::vector<Samples> times =
      TimeInTurn({[&] {
                    return SecondsOf([&] {
                      for (std::size_t i = 0; i < kCalls; ++i) {
                        simple[i] = SampleSimply<T>(light, positions[i]);
                      }
                    });
                  },
                  [&] {
                    return SecondsOf([&] {
                      for (std::size_t i = 0; i < kCalls; ++i) {
                        sampled[i] = minihost::SampleBilinear<T>(world, positions[i].x, positions[i].y);
                      }
                    });
                  }},
                 effort.Rounds(9), effort.WarmUps());
  for (std::size_t i = 0; i < kCalls; ++i) {
    if (!Near(simple[i], sampled[i], sizeof(T) == 16 ? 1e-6 : 0.0)) {
      throw Difference(fmt::format("the sample at {}, {} (16.16) is off", positions[i].x, positions[i].y));
    }
  }
  report.Add({.name = "sample (simple formula), a call",
              .depth = NameOf(minihost::kDepthOf<T>),
              .reference = Median(times[0]) * kNano / kCalls,
              .measured = Median(times[1]) * kNano / kCalls,
              .ratio = MedianRatio(times[0], times[1])});
}

void RunFrame(Effort effort, Report& report) {
  constexpr double kMicro = 1e6;
  SnowFrame<PF_Pixel> frame(effort.Scaled(Default(10'000)));
  frame.SetExpected();
  minihost::Image target = frame.Background().Clone();
  const std::vector<Samples> times =
      TimeInTurn({[&] { return frame.Time("the loop", DrawFlakes<PF_Pixel>); },
                  CopyByHost(frame.Background(), target), CopyByMemcpy(frame.Background(), target)},
                 effort.Rounds(25), effort.WarmUps());
  const auto add = [&](const char* name, const Samples& copy) {
    report.Add({.name = name,
                .depth = "8",
                .reference = Median(copy) * kMicro,
                .measured = Median(times[0]) * kMicro,
                .ratio = MedianRatio(copy, times[0])});
  };
  add("10k flakes, the host's copy", times[1]);
  add("10k flakes, memcpy", times[2]);
}

}  // namespace

CaseSection FrameCases(Effort effort) {
  return {{"Default frame against copying its picture", "microseconds", "copy", "flakes"},
          {{"frame/copy/8", [=](Report& report) { RunFrame(effort, report); }}}};
}

CaseSection HostCases(Effort effort) {
  CaseSection cases = {{"Host services", "ns a pixel or call", "simple", "host"}, {}};
  const auto add = [&](const char* name, minihost::Depth depth, auto run) {
    cases.cases.push_back(
        {fmt::format("host/{}/{}", name, NameOf(depth)), [=](Report& report) { run(effort, report); }});
  };
  ForEachDepth(
      [&](auto pixel) { add("copy", minihost::kDepthOf<decltype(pixel)>, RunCopy<decltype(pixel)>); });
  ForEachDepth([&](auto pixel) {
    add("reduction", minihost::kDepthOf<decltype(pixel)>, RunReduction<decltype(pixel)>);
  });
  ForEachDepth(
      [&](auto pixel) { add("sample", minihost::kDepthOf<decltype(pixel)>, RunSampling<decltype(pixel)>); });
  return cases;
}
