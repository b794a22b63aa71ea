// Flakes drawn by the rasterizer, one by one, and by the lists of each CPU path: equal pixels in every depth.
#include <bit>
#include <cmath>
#include <vector>

#include "effect/pixel/fast/blend_list.h"
#include "effect/pixel/pixel_type.h"
#include "effect/pixel/rasterizer.h"
#include "fuzz/input.h"

namespace {

constexpr std::size_t kMostFlakes = 12;

struct Drawing {
  PF_UtilCallbacks utils{};
  PF_InData in{};
  PF_LayerDef image{};
  std::size_t flakes = 0;
  StrokeBatch strokes{};
  BlendMode mode = BlendMode::kComposite;
};

// A number of a flake: any float, or one near the picture.
float TakeNumber(fuzz::Input& input, int reach) {
  if (input.Take<std::uint8_t>() == 0) {
    return input.Take<float>();
  }
  return static_cast<float>(input.Take<std::int16_t>()) * static_cast<float>(reach) / 16384;
}

template <class T>
void Blend(const Drawing& drawing, const Lanes<T>& colors, std::vector<T>& pixels, CpuPath path) {
  const FX_PARc scale(&drawing.in);
  StrokeTerms terms;
  SetStrokeTerms(drawing.strokes, static_cast<float>(colors[0].alpha), scale, drawing.image.width,
                 drawing.image.height, terms, path);
  CoverageList<T> list(drawing.image.width);
  ListCursor cursor = {.lane = 0};
  for (bool done = false; !done;) {
    done = ListCoverage(terms, scale, drawing.flakes, cursor,
                        static_cast<std::uint32_t>(drawing.image.rowbytes), list, path);
    BlendList(list, 0, list.count, colors, drawing.mode, pixels.data(), path);
  }
}

template <class T>
void Rasterize(const Drawing& drawing, const Lanes<T>& colors, std::vector<T>& pixels) {
  constexpr TransferFunc<T> kOperators[] = {JCompositeT<T>, JLightenT<T>, JCompositeUnderT<T>};
  const FX_PARc scale(&drawing.in);
  PF_LayerDef image = drawing.image;
  image.data = pixels.data();
  const StrokeBatch& strokes = drawing.strokes;
  for (std::size_t i = 0; i < drawing.flakes; ++i) {
    DrawDroppyMB<T>(&drawing.in, &scale, strokes.size[i], {strokes.startX[i], strokes.startY[i]},
                    {strokes.endX[i], strokes.endY[i]}, colors[i], &image,
                    kOperators[static_cast<std::size_t>(drawing.mode)]);
  }
}

// Every NaN counts as one: the order of operands decides which comes out.
template <class Channel>
bool IsSame(Channel a, Channel b) {
  if constexpr (std::is_same_v<Channel, float>) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) || (a != a && b != b);
  } else {
    return a == b;
  }
}

template <class T>
T TakePixel(fuzz::Input& input) {
  using Channel = typename PixelType<T>::Channel;
  const auto channel = [&] {
    const double unit = input.Take<std::uint8_t>() / 255.0;
    return static_cast<Channel>(unit * static_cast<double>(PixelType<T>::kWhite));
  };
  return {channel(), channel(), channel(), channel()};
}

template <class T>
void Compare(Drawing& drawing, fuzz::Input& input) {
  drawing.image.rowbytes = drawing.image.width * static_cast<std::int32_t>(sizeof(T));
  Lanes<T> colors{};
  const T first = TakePixel<T>(input);
  for (T& color : colors) {
    color = drawing.mode == BlendMode::kLighten ? first : TakePixel<T>(input);
    color.alpha = first.alpha;
  }
  const T patches[] = {TakePixel<T>(input), TakePixel<T>(input), TakePixel<T>(input)};
  std::vector<T> before(static_cast<std::size_t>(drawing.image.width * drawing.image.height));
  for (std::size_t i = 0; i < before.size(); ++i) {
    before[i] = patches[i % std::size(patches)];
  }
  std::vector<T> plain = before;
  Rasterize(drawing, colors, plain);
  for (const CpuPath path : kCpuPaths) {
    if (!SupportsCpuPath(path)) {
      continue;
    }
    std::vector<T> fast = before;
    Blend(drawing, colors, fast, path);
    for (std::size_t i = 0; i < fast.size(); ++i) {
      fuzz::Require(IsSame(plain[i].alpha, fast[i].alpha) && IsSame(plain[i].red, fast[i].red) &&
                        IsSame(plain[i].green, fast[i].green) && IsSame(plain[i].blue, fast[i].blue),
                    "fast pixels are the plain ones");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  fuzz::Input input(bytes, size);
  Drawing drawing;
  drawing.utils.ansi.sqrt = [](double v) { return std::sqrt(v); };
  drawing.in.utils = &drawing.utils;
  constexpr PF_RationalScale kRatios[] = {{1, 1}, {1, 2}, {2, 3}, {3333, 10'000}, {1, 100}, {0, 1}, {1, 0}};
  drawing.in.downsample_x = input.Of(kRatios);
  drawing.in.downsample_y = input.Of(kRatios);
  constexpr PF_RationalScale kAspects[] = {{1, 1}, {768, 1405}, {2, 1}};
  drawing.in.pixel_aspect_ratio = input.Of(kAspects);
  const int depth = input.Between(0, 2);
  drawing.mode = static_cast<BlendMode>(input.Between(0, 2));
  drawing.image.width = input.Between(1, 90);
  drawing.image.height = input.Between(1, 60);
  drawing.flakes = static_cast<std::size_t>(input.Between(1, kMostFlakes));
  for (std::size_t i = 0; i < drawing.flakes; ++i) {
    drawing.strokes.startX[i] = TakeNumber(input, 200);
    drawing.strokes.startY[i] = TakeNumber(input, 200);
    drawing.strokes.endX[i] = TakeNumber(input, 200);
    drawing.strokes.endY[i] = TakeNumber(input, 200);
    drawing.strokes.size[i] = TakeNumber(input, 60);
  }
  switch (depth) {
    case 0:
      Compare<PF_Pixel>(drawing, input);
      break;
    case 1:
      Compare<PF_Pixel16>(drawing, input);
      break;
    default:
      Compare<PF_PixelFloat>(drawing, input);
      break;
  }
  return 0;
}
