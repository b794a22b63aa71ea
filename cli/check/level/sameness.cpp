// Level 8: the same pictures by the fast loop and by the plain one, and by other builds.
#include <fmt/format.h>

#include "cli/check/level.h"
#include "cli/check/random.h"
#include "cli/check/random_look.h"
#include "cli/check/scenario.h"
#include "cli/check/wild.h"

namespace cli::check {
namespace {

constexpr int kMostFlakes = 400;

// One frame of a random look; the same number gives the same frame with every module.
struct Picture {
  PF_Err code = PF_Err_NONE;
  std::uint64_t roots = 0;  // square roots that the host was asked for
  std::vector<std::byte> pixels;
};

enum class Looks { kValid, kWild };

class Gallery {
 public:
  Gallery(const Module& module, std::uint64_t seed, Looks looks, LyingHost::Root root)
      : subject_(module), seed_(seed), looks_(looks), root_(root), flakes_(subject_.IndexOf("Flakes")) {}

  Picture At(std::uint64_t number) {
    Random random(seed_ * 1'000'003 + number);
    const Layout layout{random.Between(1, 70), random.Between(1, 50), random.Of(kDepths),
                        random.Between(0, 4)};
    Stage stage(layout);
    minihost::Instance instance(subject_.Effect(),
                                RandomLook(random, subject_.Effect()->SharedParameters(), kMostFlakes));
    minihost::Frame frame = stage.Begin(random.Of(kProtocols), random.Between(0, 9));
    frame.timing.shutterDegrees = random.Real(0, 720);
    const std::uint32_t parts[] = {1, 1, 1, 2, 3};
    frame.downsampleX.den = frame.downsampleY.den = random.Of(parts);
    if (random.OneIn(4)) {
      frame.pixelAspectRatio = {10, 11};
    }
    subject_.host.Reset();
    subject_.host.root = root_;
    if (looks_ == Looks::kWild) {
      subject_.host.onParameter = WildParameters(random, 1 + random.Below(12), flakes_);
    }
    Picture picture;
    picture.code = instance.Render(frame).err;
    picture.roots = subject_.host.rootsTaken;
    picture.pixels = stage.output.Pixels();
    subject_.host.Reset();
    return picture;
  }

 private:
  Subject subject_;
  std::uint64_t seed_;
  Looks looks_;
  LyingHost::Root root_;
  std::int32_t flakes_;
};

std::string DifferenceOf(const Picture& a, const Picture& b) {
  if (a.code != b.code) {
    return fmt::format("codes {} and {}", a.code, b.code);
  }
  for (std::size_t i = 0; i < a.pixels.size(); ++i) {
    if (a.pixels[i] != b.pixels[i]) {
      return fmt::format("byte {} of {} is {} and {}", i, a.pixels.size(), std::to_integer<int>(a.pixels[i]),
                         std::to_integer<int>(b.pixels[i]));
    }
  }
  return {};
}

class Comparison {
 public:
  Comparison(const LevelTask& task, Looks looks, std::uint64_t count)
      : task_(task), looks_(looks), count_(count) {
    // One host at a time: the pictures of this one are kept until the others' are there.
    Gallery gallery(task.module, task.seed, looks, LyingHost::Root::kRight);
    for (std::uint64_t i = 0; i < count; ++i) {
      first_.push_back(gallery.At(i));
    }
  }

  void With(std::string_view name, const Module& module, LyingHost::Root root) const {
    const Tally::Check check = task_.tally.Begin(name, "frames");
    Gallery gallery(module, task_.seed, looks_, root);
    std::uint64_t morePlain = 0;
    for (std::uint64_t i = 0; i < count_; ++i) {
      task_.tally.Try(check, "random frame {} of seed {}", i, task_.seed);
      const Picture picture = gallery.At(i);
      const std::string difference = DifferenceOf(first_[i], picture);
      task_.tally.Expect(check, difference.empty(), difference);
      if (picture.roots > first_[i].roots) {
        ++morePlain;
      }
    }
    if (root == LyingHost::Root::kDoubtful) {
      // The plain loop takes its roots from the host, flake by flake.
      task_.tally.Expect(check, morePlain != 0, "the host's doubtful roots did not bring out another loop");
      task_.tally.Note(check, fmt::format("another loop in {} of {} frames", morePlain, count_));
    }
  }

 private:
  const LevelTask& task_;
  Looks looks_;
  std::uint64_t count_;
  std::vector<Picture> first_;
};

}  // namespace

void CheckSameness(const LevelTask& task) {
  using Root = LyingHost::Root;
  {
    const Comparison valid(task, Looks::kValid, task.Tries(20'000));
    valid.With("again", task.module, Root::kRight);
    valid.With("the plain loop", task.module, Root::kDoubtful);
    for (const Module& other : task.against) {
      valid.With(other.name, other, Root::kRight);
    }
  }
  const Comparison wild(task, Looks::kWild, task.Tries(20'000));
  wild.With("the plain loop, beyond the ranges", task.module, Root::kDoubtful);
  for (const Module& other : task.against) {
    wild.With(fmt::format("{}, beyond the ranges", other.name), other, Root::kRight);
  }
}

}  // namespace cli::check
