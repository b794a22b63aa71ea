// Level 4: pictures of every shape, rectangles and ratios that make no sense.
#include <fmt/format.h>

#include <climits>
#include <iterator>
#include <utility>

#include "cli/check/level.h"
#include "cli/check/random.h"
#include "cli/check/scenario.h"

namespace cli::check {
namespace {

const Subject::Numbers kLook{{"Flakes", 60}, {"Size", 8}, {"Scene Depth", 200}};

constexpr std::pair<int, int> kSizes[] = {{1, 1},   {1, 2},  {2, 1},   {1, 9},  {9, 1},  {1, 300},
                                          {300, 1}, {15, 8}, {20, 33}, {64, 3}, {33, 20}};

constexpr std::int32_t kFarOut[] = {INT_MIN, INT_MIN + 1, -100'000, -7, -1, 0, 1, 5, 12, 100'000, INT_MAX};

PF_LRect RandomRect(Random& random) {
  return {random.Of(kFarOut), random.Of(kFarOut), random.Of(kFarOut), random.Of(kFarOut)};
}

bool IsEmpty(const PF_LRect& rect) {
  return rect.left >= rect.right || rect.top >= rect.bottom;
}

bool IsInside(const PF_LRect& inner, const PF_LRect& outer) {
  return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
         inner.bottom <= outer.bottom;
}

std::string Text(const PF_LRect& rect) {
  return fmt::format("[{} {} {} {}]", rect.left, rect.top, rect.right, rect.bottom);
}

class Shapes {
 public:
  Shapes(const LevelTask& task, Subject& subject, minihost::Depth depth)
      : task_(task), subject_(subject), depth_(depth) {}

  // However the rows lie in memory, the picture is the same, and nothing beside it is touched.
  void Layouts(Tally::Check check) {
    for (const auto& [width, height] : kSizes) {
      for (const minihost::Protocol protocol : kProtocols) {
        std::vector<std::byte> first;
        for (const int padding : {0, 1, 3, 7, 64}) {
          for (const Against against : {Against::kLastPixel, Against::kFirstPixel}) {
            Stage stage({width, height, depth_, padding, against});
            task_.tally.Try(check, "{}, {}, {} x {}, padded by {} channels{}", NameOf(depth_),
                            NameOf(protocol), width, height, padding,
                            against == Against::kFirstPixel ? ", page in front" : "");
            Expect(check, stage, Render(stage, stage.Begin(protocol, 2)), 0);
            if (first.empty()) {
              first = stage.output.Pixels();
            }
            task_.tally.Expect(check, stage.output.HasPixels(first), "not the picture of another layout");
          }
        }
      }
    }
  }

  void Tiles(Tally::Check check) {
    Random random(task_.seed);
    Stage layer({40, 30, depth_, 3});
    for (std::uint64_t i = 0; i < task_.Tries(2000); ++i) {
      const int left = random.Between(0, 39), top = random.Between(0, 29);
      const PF_LRect tile{left, top, random.Between(left + 1, 40), random.Between(top + 1, 30)};
      Stage stage({tile.right - tile.left, tile.bottom - tile.top, depth_, random.Between(0, 5)});
      task_.tally.Try(check, "{}, tile {} of 40 x 30", NameOf(depth_), Text(tile));
      minihost::Frame frame = stage.Begin(minihost::Protocol::kSmart, 2);
      frame.input = &layer.input.Picture();
      frame.tile = tile;
      Expect(check, stage, Render(stage, frame), 0);
    }
  }

  // The host asks for any rectangle, and its layer says anything; what the pre-render reports is held to what
  // it may report, and the render that follows draws into the same worlds as ever.
  void Rectangles(Tally::Check check) {
    Random random(task_.seed);
    Stage stage({24, 18, depth_, 1});
    for (std::uint64_t i = 0; i < task_.Tries(20'000); ++i) {
      const PF_LRect request = RandomRect(random);
      const PF_CheckoutResult layer{RandomRect(random), RandomRect(random)};
      task_.tally.Try(check, "{}, request {}, layer's result {}, its largest {}", NameOf(depth_),
                      Text(request), Text(layer.result_rect), Text(layer.max_result_rect));
      PF_LRect asked{};
      PF_PreRenderOutput reported{};
      subject_.host.onLayer = [&](PF_CheckoutResult& result) { result = layer; };
      subject_.host.before = [&](const CommandView& command) {
        if (command.number == PF_Cmd_SMART_PRE_RENDER) {
          asked = std::exchange(command.PreRender().input->output_request.rect, request);
        }
        return LyingHost::Pass::kOn;
      };
      subject_.host.after = [&](const CommandView& command, PF_Err) {
        if (command.number == PF_Cmd_SMART_PRE_RENDER) {
          PF_PreRenderOutput& output = *command.PreRender().output;
          reported = output;
          command.PreRender().input->output_request.rect = asked;
          output.result_rect = output.max_result_rect = asked;
        }
      };
      Expect(check, stage, Render(stage, stage.Begin(minihost::Protocol::kSmart, 2)), 0);
      subject_.host.Reset();
      const PF_LRect& result = reported.result_rect;
      const bool isRight = IsEmpty(layer.result_rect) ? Same(result, request)
                           : IsEmpty(request)         ? Same(result, layer.result_rect)
                                                      : IsEmpty(result) || IsInside(result, request);
      task_.tally.Expect(check, isRight, "reported " + Text(result));
      task_.tally.Expect(check, Same(reported.max_result_rect, layer.max_result_rect),
                         "reported as its largest " + Text(reported.max_result_rect));
    }
  }

  void ExtentHints(Tally::Check check) {
    Random random(task_.seed);
    Stage stage({24, 18, depth_, 1});
    for (std::uint64_t i = 0; i < task_.Tries(10'000); ++i) {
      const PF_LRect hint = RandomRect(random);
      task_.tally.Try(check, "{}, extent hint {}", NameOf(depth_), Text(hint));
      subject_.host.before = [&](const CommandView& command) {
        if (command.number == PF_Cmd_RENDER) {
          command.output->extent_hint = hint;
        }
        return LyingHost::Pass::kOn;
      };
      Expect(check, stage, Render(stage, stage.Begin(minihost::Protocol::kPlain, 2)), 0);
      subject_.host.Reset();
    }
  }

  // A ratio with a zero in it leaves the background; all others end well.
  void Ratios(Tally::Check check) {
    constexpr PF_RationalScale kRatios[] = {
        {1, 1},  {1, 2},       {1, 3},        {2, 3},       {10, 11}, {2, 1}, {1, 64}, {100, 1},
        {-1, 1}, {INT_MAX, 1}, {1, UINT_MAX}, {INT_MIN, 1}, {0, 1},   {1, 0}, {0, 0},  {-1, 0}};
    Stage stage({16, 12, depth_, 1});
    for (const PF_RationalScale& x : kRatios) {
      for (const PF_RationalScale& y : kRatios) {
        for (const PF_RationalScale& aspect : kRatios) {
          for (const minihost::Protocol protocol : kProtocols) {
            task_.tally.Try(check, "{}, {}, downsample {}/{} and {}/{}, aspect {}/{}", NameOf(depth_),
                            NameOf(protocol), x.num, x.den, y.num, y.den, aspect.num, aspect.den);
            minihost::Frame frame = stage.Begin(protocol, 2);
            frame.downsampleX = x;
            frame.downsampleY = y;
            frame.pixelAspectRatio = aspect;
            Expect(check, stage, Render(stage, frame), 0);
            const auto hasZero = [](const PF_RationalScale& ratio) {
              return ratio.num == 0 || ratio.den == 0;
            };
            task_.tally.Expect(
                check,
                !(hasZero(x) || hasZero(y) || hasZero(aspect)) || stage.output.HasPixels(stage.stripes),
                "drew with a ratio that is none");
          }
        }
      }
    }
  }

  // A layer without pixels: a smart render has nothing to do, a plain one copies nothing, as its host says.
  void NoLayer(Tally::Check check) {
    for (const minihost::Protocol protocol : kProtocols) {
      for (const bool overLayer : {true, false}) {
        Stage stage({16, 12, depth_, 1});
        task_.tally.Try(check, "{}, {}, no layer, {}", NameOf(depth_), NameOf(protocol),
                        overLayer ? "over it" : "over transparent");
        minihost::Frame frame = stage.Begin(protocol, 2);
        frame.input = nullptr;
        Subject::Numbers look = kLook;
        look.emplace_back("Composite With Original", overLayer ? 1 : 0);
        look.emplace_back("Influence %", 0);
        minihost::Instance instance = subject_.Make(look);
        const bool isRefused = protocol == minihost::Protocol::kPlain && overLayer;
        const PF_Err code = instance.Render(frame).err;
        task_.tally.Expect(check, code == (isRefused ? 516 : 0), fmt::format("returned {}", code));
        task_.tally.Expect(check, instance.HostLedger().Outstanding() == 0, "kept something");
        const std::string damage = Damage(stage);
        task_.tally.Expect(check, damage.empty(), damage);
      }
    }
  }

 private:
  static bool Same(const PF_LRect& a, const PF_LRect& b) { return IsInside(a, b) && IsInside(b, a); }

  PF_Err Render(const Stage&, const minihost::Frame& frame) {
    minihost::Instance instance = subject_.Make(kLook);
    const PF_Err code = instance.Render(frame).err;
    complaints_ = Complaints(instance);
    return code;
  }

  void Expect(Tally::Check check, const Stage& stage, PF_Err code, PF_Err promised) {
    task_.tally.Expect(check, code == promised, fmt::format("returned {} in place of {}", code, promised));
    const std::string damage = Damage(stage);
    task_.tally.Expect(check, damage.empty(), damage);
    task_.tally.Expect(check, complaints_.empty(), complaints_);
  }

  const LevelTask& task_;
  Subject& subject_;
  minihost::Depth depth_;
  std::string complaints_;
};

}  // namespace

void CheckGeometry(const LevelTask& task) {
  Subject subject(task.module);
  const Tally::Check layouts = task.tally.Begin("sizes, and rows in memory", "frames");
  const Tally::Check tiles = task.tally.Begin("tiles", "frames");
  const Tally::Check rectangles = task.tally.Begin("rectangles of the smart protocol", "frames");
  const Tally::Check hints = task.tally.Begin("extent hints", "frames");
  const Tally::Check ratios = task.tally.Begin("reductions and pixel aspects", "frames");
  const Tally::Check noLayer = task.tally.Begin("a layer without pixels", "frames");
  for (const minihost::Depth depth : kDepths) {
    Shapes shapes(task, subject, depth);
    shapes.Layouts(layouts);
    shapes.Tiles(tiles);
    shapes.Rectangles(rectangles);
    shapes.ExtentHints(hints);
    shapes.Ratios(ratios);
    shapes.NoLayer(noLayer);
  }
}

}  // namespace cli::check
