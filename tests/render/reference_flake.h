// The flakes of a frame step by step, written down apart from the effect's own loop: one plain statement for
// each rule, nothing shared but the record, the noise lookup and the rasterizer.
#pragma once

#include <array>
#include <cmath>
#include <type_traits>

#include "effect/pixel/rasterizer.h"
#include "effect/render/flake_field.h"

namespace reference {

struct Stream {
  std::uint32_t state;
  int Draw() {
    state = 1103515245u * state + 12345u;
    return static_cast<int>((state / 65536u) % 32768u);
  }
  double Unit() { return Draw() * 3.051850947599719e-05; }
  double Signed() { return Draw() * 6.103701895199438e-05 - 1; }
};

struct Flake {
  bool drawn = false;
  bool beyondWrap = false;  // its travel is past any number of fields that an integer counts
  FlakeSegment segment{};
};

/// A frame's flakes in index order.
template <class T>
class Flakes {
 public:
  explicit Flakes(const FrameSetup<T>& record)
      : f(record), flake{Seed(f.flakeSeed)}, light{Seed(f.illumSeed)}, wiggle{Seed(f.wiggleSeed)} {}

  Flake Next() {
    Flake out;
    const double x0 = flake.Unit() * f.fieldWidth;
    const double y0 = flake.Unit() * f.fieldHeight;
    const double dz = flake.Unit() * f.sceneDepth;
    const double sv = 1 + f.speedVariation * flake.Signed();
    const double k = f.spreadTan * flake.Signed();
    const double wv = 1 + f.windVariation * flake.Signed();
    out.segment.sizeDraw = flake.Draw();

    const double fall = f.fallDistance * sv;
    double x = (x0 + k * fall) + f.windDistance * wv;
    double y = y0 + fall;
    const double dfall = f.fallBlur * sv;
    const double dwind = f.windBlur * wv;

    const bool noise = f.wiggleOn && f.stochasticWiggle;
    double fv = 0, av = 0, ph = 0;
    float value = 0, nx = 0, ny = 0, dx0 = 0, dy0 = 0;
    if (f.wiggleOn) {
      const double q = wiggle.Signed();
      fv = 1 - f.frequencyVariation * wiggle.Unit();
      av = 1 - f.amountVariation * wiggle.Unit();
      ph = q * (noise ? 100.0 : 6.283185307179586);
      const double angle = f.wigglePhase * fv + ph;
      const float amount = static_cast<float>(f.wiggleAmount * av);
      if (noise) {
        const float mx = static_cast<float>(dfall * k + dwind);
        const float my = static_cast<float>(dfall);
        const float squares = mx * mx + my * my;
        const float len = static_cast<float>(std::sqrt(static_cast<double>(squares) + 1e-5));
        nx = my / len;
        ny = -mx / len;
        value = f.noiseTable.noisebspline(static_cast<float>(angle));
        const float a = amount * value;
        dx0 = nx * a;
        dy0 = ny * a;
        y += static_cast<double>(dy0);
      } else {
        value = static_cast<float>(std::cos(angle));
        dx0 = amount * value;
      }
      x += static_cast<double>(dx0);
      out.segment.wiggle = value;
    }

    const auto wrap = [&](double v, double period) {
      const double turns = std::trunc(v / period);
      out.beyondWrap |= std::abs(turns) >= 2147483648.0;
      const double rest = v - turns * period;
      return rest < 0 ? rest + period : rest;
    };
    const double openX = wrap(x + f.offsetX, f.fieldWidth) - f.halfFieldWidth;
    const double openY = wrap(y + f.offsetY, f.fieldHeight) - f.halfFieldHeight;
    const double z = f.frameMax + dz;
    if (openY > f.groundY) {
      light.Draw();
      light.Draw();
      return out;
    }
    out.drawn = true;

    double closeX = (openX + dfall * k) + dwind;
    double closeY = openY + dfall;
    if (f.wiggleOn) {
      const double angle = (f.wigglePhase + f.phaseBlur) * fv + ph;
      if (noise) {
        const float e1 = f.noiseTable.noisebspline(static_cast<float>(angle));
        const float m = static_cast<float>(f.wiggleAmountEnd * av) * e1;
        const float moveX = nx * m - dx0;
        const float moveY = ny * m - dy0;
        closeX += static_cast<double>(moveX);
        closeY += static_cast<double>(moveY);
      } else {
        const double c1 = static_cast<double>(static_cast<float>(std::cos(angle)));
        closeX = (closeX + (c1 * f.wiggleAmountEnd) * av) - static_cast<double>(dx0);
      }
    }
    closeX += f.offsetDeltaX;
    closeY += f.offsetDeltaY;
    if (closeY > f.groundY) {
      const double t = (f.groundY - openY) / (closeY - openY);
      closeX = openX + (closeX - openX) * t;
      closeY = openY + (closeY - openY) * t;
    }
    const double s = f.frameMax / z;
    const auto project = [&](double px, double py) {
      return FloatPoint{static_cast<float>(px * s + f.halfFrameWidth) + f.originX,
                        static_cast<float>(py * s + f.halfFrameHeight) + f.originY};
    };
    out.segment.start = project(openX, openY);
    out.segment.end = project(closeX, closeY);
    out.segment.depth = z;
    out.segment.scale = s;
    return out;
  }

  /// Sizes, lights and draws a flake.
  void Draw(const FlakeSegment& flakeSegment, PF_Err& status) {
    const FlakeSegment& g = flakeSegment;
    DrawDroppyMB<T>(f.inData, &f.scale, Size(g), g.start, g.end, Light(g, status), f.output, Operator(g));
  }

  float Size(const FlakeSegment& g) const {
    const double sv = 1 + f.sizeVariation * (g.sizeDraw * 6.103701895199438e-05 - 1);
    const float size = static_cast<float>(sv * g.scale * f.flakeSize);
    return f.wiggleOn ? ((std::abs(g.wiggle) - 1.0f) * f.flatness + 1.0f) * size : size;
  }

  TransferFunc<T> Operator(const FlakeSegment& g) const {
    return g.depth <= f.embedDistance ? f.transferOp : f.underOp;
  }

  T Light(const FlakeSegment& g, PF_Err& status) {
    T pixel = f.flakeColor;
    if (!(f.influence > 0)) return pixel;
    const float scale = static_cast<float>(g.scale);
    const float jx = (scale * f.spreadWidth) * Jitter();
    const float jy = (scale * f.spreadHeight) * Jitter();
    const float u = (((g.start.x + g.end.x) * 0.5f + jx) * f.scale.xScaleF) * 0.1f;
    const float v = (((g.start.y + g.end.y) * 0.5f + jy) * f.scale.yScaleF) * 0.1f;
    const PF_SampPB block{f.illumWorld};
    T sampled{};
    status = f.sampleFn(f.inData->effect_ref, Fixed(u, f.illumWorld->width), Fixed(v, f.illumWorld->height),
                        &block, &sampled);
    const float k = static_cast<float>(sampled.alpha) * f.influenceScale;
    for (auto channel : {&T::red, &T::green, &T::blue}) {
      using C = std::remove_reference_t<decltype(pixel.*channel)>;
      const float own = static_cast<float>(pixel.*channel);
      const float moved = static_cast<float>(sampled.*channel) - own;
      pixel.*channel = static_cast<C>(moved * k + own);
    }
    return pixel;
  }

  /// What each stream gives next; equal for streams that stand at the same place.
  std::array<int, 9> Tails() {
    std::array<int, 9> tails{};
    for (std::size_t i = 0; i < 9; ++i) tails[i] = (i < 3 ? flake : i < 6 ? light : wiggle).Draw();
    return tails;
  }

 private:
  static std::uint32_t Seed(std::int32_t seed) { return static_cast<std::uint32_t>(seed); }

  float Jitter() {
    constexpr float kStep = 0x1.0002p-14f;  // bits 0x38800100
    return static_cast<float>(light.Draw()) * kStep - 1.0f;
  }

  static PF_Fixed Fixed(float place, std::int32_t size) {
    const float last = static_cast<float>(size - 1);
    const float inside = !(place >= 0) ? 0.0f : place < last ? place : last;
    return static_cast<PF_Fixed>(inside * 65536.0f);
  }

  const FrameSetup<T>& f;
  Stream flake, light, wiggle;
};

/// The whole loop.  `beyondWrap` tells that no particular picture is right.
template <class T>
PF_Err DrawFlakes(const FrameSetup<T>& record, bool& beyondWrap) {
  Flakes<T> flakes(record);
  PF_Err status = 0;
  beyondWrap = false;
  for (int i = 0; i < record.flakeCount; ++i) {
    const Flake flake = flakes.Next();
    beyondWrap |= flake.beyondWrap;
    if (!flake.drawn) continue;
    flakes.Draw(flake.segment, status);
    if (i % 128 != 1) continue;
    status = record.inData->inter.progress(record.inData->effect_ref, i, record.flakeCount);
    if (status != 0) break;
  }
  return status;
}

}  // namespace reference
