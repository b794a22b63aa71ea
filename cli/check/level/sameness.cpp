// Level 8: the same pictures by the fast loop and by the plain one, and by other builds.
#include <fmt/format.h>

#include <cstring>

#include "cli/check/level.h"
#include "cli/check/random.h"
#include "cli/check/random_look.h"
#include "cli/check/scenario.h"

namespace cli::check {
namespace {

constexpr int kMostFlakes = 400;

// One frame of a random look; the same number gives the same frame with every module.
struct Picture {
  PF_Err code = PF_Err_NONE;
  std::uint64_t roots = 0;  // square roots that the host was asked for
  std::vector<std::byte> pixels;
};

class Gallery {
 public:
  Gallery(const Module& module, std::uint64_t seed, LyingHost::Root root)
      : subject_(module), seed_(seed), root_(root) {}

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
  LyingHost::Root root_;
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

// One host at a time: the pictures of one module are kept until the other's are there.
void Compare(const LevelTask& task, Tally::Check check, std::uint64_t count,
             const std::vector<Picture>& first, const Module& module, LyingHost::Root root) {
  Gallery gallery(module, task.seed, root);
  std::uint64_t morePlain = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    task.tally.Try(check, "random frame {} of seed {}", i, task.seed);
    const Picture picture = gallery.At(i);
    const std::string difference = DifferenceOf(first[i], picture);
    task.tally.Expect(check, difference.empty(), difference);
    if (picture.roots > first[i].roots) {
      ++morePlain;
    }
  }
  if (root == LyingHost::Root::kDoubtful) {
    // The plain loop takes its roots from the host, flake by flake.
    task.tally.Expect(check, morePlain > count / 2,
                      "the host's doubtful roots did not bring out another loop");
    task.tally.Note(check, fmt::format("another loop in {} of {} frames", morePlain, count));
  }
}

}  // namespace

void CheckSameness(const LevelTask& task) {
  const std::uint64_t count = task.Tries(20'000);
  std::vector<Picture> first;
  {
    Gallery gallery(task.module, task.seed, LyingHost::Root::kRight);
    for (std::uint64_t i = 0; i < count; ++i) {
      first.push_back(gallery.At(i));
    }
  }
  Compare(task, task.tally.Begin("again", "frames"), count, first, task.module, LyingHost::Root::kRight);
  Compare(task, task.tally.Begin("the plain loop", "frames"), count, first, task.module,
          LyingHost::Root::kDoubtful);
  for (const Module& other : task.against) {
    Compare(task, task.tally.Begin(other.name, "frames"), count, first, other, LyingHost::Root::kRight);
  }
}

}  // namespace cli::check
