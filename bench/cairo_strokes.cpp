// The flakes as Cairo's strokes with round caps, drawing alone, in turn with ours.
#include <cairo.h>
#include <fmt/core.h>

#include <cstring>
#include <memory>

#include "bench/capsules.h"
#include "bench/cases.h"
#include "bench/in_turn.h"
#include "bench/looks.h"
#include "bench/memory_floor.h"
#include "bench/staged_loop.h"

namespace {

struct DestroySurface {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct DestroyContext {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
};

// A surface of premultiplied 32-bit pixels; ours are opaque, so premultiplied means nothing.
class Canvas {
 public:
  Canvas(int width, int height)
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
        context_(cairo_create(surface_.get())) {
    cairo_set_line_cap(context_.get(), CAIRO_LINE_CAP_ROUND);
    cairo_translate(context_.get(), 0.5, 0.5);
  }

  void Restore(const minihost::Image& picture) {
    cairo_surface_flush(surface_.get());
    for (int row = 0; row < picture.Height(); ++row) {
      int column = 0;
      for (const PF_Pixel& pixel : picture.Row<PF_Pixel>(row)) {
        At(column++, row) = 0xFF000000u | std::uint32_t{pixel.red} << 16 | std::uint32_t{pixel.green} << 8 |
                            std::uint32_t{pixel.blue};
      }
    }
    cairo_surface_mark_dirty(surface_.get());
  }

  void Draw(const std::vector<Capsule>& capsules) {
    cairo_t* const context = context_.get();
    for (const Capsule& capsule : capsules) {
      cairo_set_source_rgba(context, static_cast<double>(capsule.red), static_cast<double>(capsule.green),
                            static_cast<double>(capsule.blue), static_cast<double>(capsule.alpha));
      cairo_set_line_width(context, 2.0 * static_cast<double>(capsule.radius));
      cairo_move_to(context, static_cast<double>(capsule.startX), static_cast<double>(capsule.startY));
      cairo_line_to(context, static_cast<double>(capsule.endX), static_cast<double>(capsule.endY));
      cairo_stroke(context);
    }
    cairo_surface_flush(surface_.get());
    if (cairo_status(context) != CAIRO_STATUS_SUCCESS) {
      throw Difference(cairo_status_to_string(cairo_status(context)));
    }
  }

  std::uint32_t& At(int column, int row) {
    unsigned char* const rows = cairo_image_surface_get_data(surface_.get());
    const int stride = cairo_image_surface_get_stride(surface_.get());
    return reinterpret_cast<std::uint32_t*>(rows + std::ptrdiff_t{row} * stride)[column];
  }

 private:
  std::unique_ptr<cairo_surface_t, DestroySurface> surface_;
  std::unique_ptr<cairo_t, DestroyContext> context_;
};

// Strokes cannot give our bytes, but they must reach the pixels that ours reach, and few others.
void CheckSamePixels(Canvas& canvas, const std::vector<Capsule>& capsules, const SnowFrame<PF_Pixel>& frame,
                     const std::vector<std::uint32_t>& covered) {
  const minihost::Image black(frame.Background().Width(), frame.Background().Height(),
                              minihost::Depth::kBits8);
  canvas.Restore(black);
  std::vector<Capsule> white = capsules;
  for (Capsule& capsule : white) {
    capsule.red = capsule.green = capsule.blue = capsule.alpha = 1.0f;
  }
  canvas.Draw(white);
  const auto pixels = static_cast<std::size_t>(black.Width()) * static_cast<std::size_t>(black.Height());
  std::vector<bool> ours(pixels);
  for (const std::uint32_t offset : covered) {
    const std::size_t row = offset / black.RowBytes();
    ours[row * static_cast<std::size_t>(black.Width()) + offset % black.RowBytes() / sizeof(PF_Pixel)] = true;
  }
  std::size_t both = 0;
  std::size_t oursAlone = 0;
  std::size_t theirsAlone = 0;
  std::size_t pixel = 0;
  for (int row = 0; row < black.Height(); ++row) {
    for (int column = 0; column < black.Width(); ++column, ++pixel) {
      // A stroke's rim reaches a little into pixels whose middle it does not.
      const std::uint32_t value = canvas.At(column, row) & 0xFF;
      if (ours[pixel]) {
        ++(value > 0 ? both : oursAlone);
      } else if (value >= 192) {
        ++theirsAlone;
      }
    }
  }
  if (both == 0 || oursAlone * 100 > both || theirsAlone * 100 > both) {
    throw Difference(
        fmt::format("strokes and flakes share {} pixels, {} are the flakes' alone, {} the strokes'", both,
                    oursAlone, theirsAlone));
  }
}

void RunStrokes(const std::string& name, const Snow& snow, Effort effort, Report& report) {
  constexpr double kGoal = 20.0;
  const CpuPath path = BestCpuPath();
  Snow composite = snow;
  composite.numbers.emplace_back(kTransferMode, kTransferComposite);
  SnowFrame<PF_Pixel> frame(effort.Scaled(composite));
  frame.SetExpected();
  frame.Restore();
  const std::vector<std::uint32_t> covered = CoveredPixels(frame.Record(), path);
  const std::vector<Capsule> capsules = CapsulesOf(frame.Record());
  Canvas canvas(frame.Background().Width(), frame.Background().Height());
  CheckSamePixels(canvas, capsules, frame, covered);

  const std::vector<Samples> times =
      TimeInTurn({[&] {
                    canvas.Restore(frame.Background());
                    return SecondsOf([&] { canvas.Draw(capsules); });
                  },
                  [&] {
                    FastSeconds seconds;
                    frame.Time("the loop in stages", [&](const FrameSetup<PF_Pixel>& record) {
                      seconds = DrawInStages<PF_Pixel>(record, path);
                    });
                    return seconds.terms + seconds.list + seconds.blend;
                  }},
                 effort.Rounds(5), effort.WarmUps());
  const double scale = 1e9 / frame.Flakes();
  report.Add({.name = name,
              .depth = "8",
              .reference = Median(times[0]) * scale,
              .measured = Median(times[1]) * scale,
              .ratio = MedianRatio(times[0], times[1]),
              .ratioGoal = effort.Goal(kGoal)});
}

}  // namespace

CaseSection StrokeCases(Effort effort) {
  CaseSection cases = {{"Drawing against strokes of Cairo, composite", "ns a flake", "Cairo", "ours"}, {}};
  const std::pair<const char*, Snow> looks[] = {
      {"200k", Default(200'000)}, {"50k size 15", LargeFlakes()}, {"50k streaks", Streaks()}};
  for (const auto& [look, snow] : looks) {
    cases.cases.push_back({fmt::format("strokes/{}/8", look), [=, look = look, snow = snow](Report& report) {
                             RunStrokes(look, snow, effort, report);
                           }});
  }
  return cases;
}
