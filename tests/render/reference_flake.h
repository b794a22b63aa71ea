// The flakes of a frame step by step, written down apart from the effect's own loop: one plain statement for
// each rule, nothing shared but the record, the noise lookup and the rasterizer.
#pragma once

#include <cmath>
#include <optional>
#include <type_traits>

#include "effect/pixel/rasterizer.h"
#include "effect/render/frame/record.h"

namespace reference {

struct Stream {
  explicit Stream(std::int32_t seed) : state(static_cast<std::uint32_t>(seed)) {}
  int Draw() {
    state = 1103515245u * state + 12345u;
    return static_cast<int>((state / 65536u) % 32768u);
  }
  double Unit() { return Draw() * 3.051850947599719e-05; }
  double Signed() { return Draw() * 6.103701895199438e-05 - 1; }
  std::uint32_t state;
};

struct Flake {
  bool drawn = false;
  bool beyondWrap = false;  // its travel is past any number of fields that an integer counts
  double openY = 0, depth = 0, scale = 0;
  FloatPoint start{}, end{};
  float wiggle = 0;
  int size = 0;
};

/// A frame's flakes in index order.
template <class T>
class Flakes {
 public:
  explicit Flakes(const FrameSetup<T>& record)
      : f(record), flake(f.flakeSeed), light(f.illumSeed), wiggle(f.wiggleSeed) {}

  Flake Next() {
    Flake out;
    const double x0 = flake.Unit() * f.fieldWidth;
    const double y0 = flake.Unit() * f.fieldHeight;
    const double dz = flake.Unit() * f.sceneDepth;
    const double sv = 1 + f.speedVariation * flake.Signed();
    const double k = f.spreadTan * flake.Signed();
    const double wv = 1 + f.windVariation * flake.Signed();
    out.size = flake.Draw();

    const double fall = f.fallDistance * sv;
    double x = (x0 + k * fall) + f.windDistance * wv;
    double y = y0 + fall;
    const double dfall = f.fallBlur * sv;
    const double dwind = f.windBlur * wv;

    const bool noise = f.wiggleOn && f.stochasticWiggle;
    double fv = 0, av = 0, ph = 0;
    float nx = 1, ny = 0, dx0 = 0, dy0 = 0;
    if (f.wiggleOn) {
      const double q = wiggle.Signed();
      fv = 1 - f.frequencyVariation * wiggle.Unit();
      av = 1 - f.amountVariation * wiggle.Unit();
      ph = q * (noise ? 100.0 : 6.283185307179586);
      const double angle = f.wigglePhase * fv + ph;
      if (noise) {
        const float mx = static_cast<float>(dfall * k + dwind);
        const float my = static_cast<float>(dfall);
        const float len = static_cast<float>(std::sqrt(static_cast<double>(mx * mx + my * my) + 1e-5));
        nx = my / len;
        ny = -mx / len;
      }
      out.wiggle =
          noise ? f.noiseTable.noisebspline(static_cast<float>(angle)) : static_cast<float>(std::cos(angle));
      const float a = static_cast<float>(f.wiggleAmount * av) * out.wiggle;
      dx0 = nx * a;
      dy0 = ny * a;
      x += static_cast<double>(dx0);
      y += static_cast<double>(dy0);
    }

    const auto wrap = [&](double v, double period) {
      const double turns = std::trunc(v / period);
      out.beyondWrap |= std::abs(turns) >= 2147483648.0;
      const double rest = v - turns * period;
      return rest < 0 ? rest + period : rest;
    };
    const double openX = wrap(x + f.offsetX, f.fieldWidth) - f.halfFieldWidth;
    const double openY = out.openY = wrap(y + f.offsetY, f.fieldHeight) - f.halfFieldHeight;
    out.drawn = !(openY > f.groundY);

    double closeX = (openX + dfall * k) + dwind;
    double closeY = openY + dfall;
    const double angle = (f.wigglePhase + f.phaseBlur) * fv + ph;
    if (noise) {
      const float e1 = f.noiseTable.noisebspline(static_cast<float>(angle));
      const float m = static_cast<float>(f.wiggleAmountEnd * av) * e1;
      closeX += static_cast<double>(nx * m - dx0);
      closeY += static_cast<double>(ny * m - dy0);
    } else if (f.wiggleOn) {
      const double c1 = static_cast<double>(static_cast<float>(std::cos(angle)));
      closeX = (closeX + (c1 * f.wiggleAmountEnd) * av) - static_cast<double>(dx0);
    }
    closeX += f.offsetDeltaX;
    closeY += f.offsetDeltaY;
    if (closeY > f.groundY) {
      const double t = (f.groundY - openY) / (closeY - openY);
      closeX = openX + (closeX - openX) * t;
      closeY = openY + (closeY - openY) * t;
    }
    out.depth = f.frameMax + dz;
    out.scale = f.frameMax / out.depth;
    const auto project = [&](double px, double py) {
      return FloatPoint{static_cast<float>(px * out.scale + f.halfFrameWidth) + f.originX,
                        static_cast<float>(py * out.scale + f.halfFrameHeight) + f.originY};
    };
    out.start = project(openX, openY);
    out.end = project(closeX, closeY);
    return out;
  }

  /// Sizes, lights and draws a flake, or leaves its light to the next.
  void Draw(const Flake& g, PF_Err& status) {
    if (!g.drawn) {
      light.Draw();
      light.Draw();
      return;
    }
    const double sv = 1 + f.sizeVariation * (g.size * 6.103701895199438e-05 - 1);
    float size = static_cast<float>(sv * g.scale * f.flakeSize);
    if (f.wiggleOn) {
      size = ((std::abs(g.wiggle) - 1.0f) * f.flatness + 1.0f) * size;
    }
    DrawDroppyMB<T>(f.inData, &f.scale, size, g.start, g.end, Light(g, status), f.output,
                    g.depth <= f.embedDistance ? f.transferOp : f.underOp);
  }

 private:
  T Light(const Flake& g, PF_Err& status) {
    T pixel = f.flakeColor;
    if (!(f.influence > 0)) {
      return pixel;
    }
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
      const float own = static_cast<float>(pixel.*channel);
      const float lit = (static_cast<float>(sampled.*channel) - own) * k + own;
      if constexpr (std::is_same_v<T, PF_PixelFloat>) {
        pixel.*channel = lit;
      } else {  // no light leads out of the range; what no 32 bits can hold is black
        constexpr float kWhite = std::is_same_v<T, PF_Pixel> ? 255 : 32768;
        const float held = lit > 0 && lit < 0x1p31f ? std::fmin(lit, kWhite) : 0.0f;
        pixel.*channel = static_cast<decltype(T::red)>(held);
      }
    }
    return pixel;
  }

  float Jitter() {
    return static_cast<float>(light.Draw()) * 0x1.0002p-14f - 1.0f;  // bits 0x38800100
  }

  static PF_Fixed Fixed(float place, std::int32_t size) {
    return static_cast<PF_Fixed>(std::fmin(std::fmax(place, 0.0f), static_cast<float>(size - 1)) * 65536.0f);
  }

  const FrameSetup<T>& f;
  Stream flake, light, wiggle;
};

/// The whole loop.  None: some flake is beyond the wrap, so that no particular picture is right.
template <class T>
std::optional<PF_Err> DrawFlakes(const FrameSetup<T>& record) {
  Flakes<T> flakes(record);
  PF_Err status = 0;
  for (int i = 0; i < record.flakeCount; ++i) {
    const Flake flake = flakes.Next();
    if (flake.beyondWrap) {
      return std::nullopt;
    }
    flakes.Draw(flake, status);
    if (!flake.drawn || i % 128 != 1) {
      continue;
    }
    status = record.inData->inter.progress(record.inData->effect_ref, i, record.flakeCount);
    if (status != 0) {
      break;
    }
  }
  return status;
}

}  // namespace reference
