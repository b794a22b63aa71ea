#include "bench/memory_floor.h"

#include <cstring>

#include "bench/in_turn.h"
#include "bench/staged_loop.h"

namespace {

// A pixel is read and written as words.
template <std::size_t bytes>
struct WordsOf {
  using Word = std::conditional_t<bytes == 4, std::uint32_t, std::uint64_t>;
  Word words[bytes / sizeof(Word)];
};

// `change` is 0, but the compiler cannot know it and has to write the pixels.
template <class T>
void Touch(std::byte* pixels, const std::uint32_t* offsets, std::size_t count, std::size_t distance,
           std::uint32_t change) {
  using Words = WordsOf<sizeof(T)>;
  for (std::size_t i = 0; i < count; ++i) {
    if (distance != 0) {
      __builtin_prefetch(pixels + offsets[i + distance], 1);
    }
    Words pixel;
    std::memcpy(&pixel, pixels + offsets[i], sizeof pixel);
    for (auto& word : pixel.words) {
      word ^= change;
    }
    std::memcpy(pixels + offsets[i], &pixel, sizeof pixel);
  }
}

}  // namespace

template <class T>
std::vector<std::uint32_t> CoveredPixels(const FrameSetup<T>& frame, CpuPath path) {
  constexpr std::size_t kBlock = CoverageList<T>::kBlock;
  std::vector<std::uint32_t> covered;
  DrawInStages<T>(frame, path, [&](const CoverageList<T>& list) {
    for (std::size_t i = 0; i < list.count; ++i) {
      const bool repeat = i > 0 && list.offsets[i] == list.offsets[i - 1] &&
                          list.lanes[i / kBlock] == list.lanes[(i - 1) / kBlock];
      if (!repeat) {
        covered.push_back(list.offsets[i]);
      }
    }
  });
  return covered;
}

template <class T>
double TouchPixels(SnowFrame<T>& frame, const std::vector<std::uint32_t>& covered, std::size_t distance) {
  volatile std::uint32_t noChange = 0;
  const std::uint32_t change = noChange;
  frame.Restore();
  auto* const pixels = static_cast<std::byte*>(frame.Record().output->data);
  const std::size_t ahead = covered.size() > distance ? covered.size() - distance : 0;
  const double seconds = SecondsOf([&] {
    Touch<T>(pixels, covered.data(), ahead, distance, change);
    Touch<T>(pixels, covered.data() + ahead, covered.size() - ahead, 0, change);
  });
  frame.CheckUnchanged("the memory floor");
  return seconds;
}

#define VINTREL_INSTANTIATE(T)                                                      \
  template std::vector<std::uint32_t> CoveredPixels(const FrameSetup<T>&, CpuPath); \
  template double TouchPixels(SnowFrame<T>&, const std::vector<std::uint32_t>&, std::size_t);
VINTREL_INSTANTIATE(PF_Pixel)
VINTREL_INSTANTIATE(PF_Pixel16)
VINTREL_INSTANTIATE(PF_PixelFloat)
#undef VINTREL_INSTANTIATE
