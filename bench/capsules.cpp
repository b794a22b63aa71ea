#include "bench/capsules.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "effect/render/plain/field.h"
#include "effect/render/plain/shading.h"

// The flakes of DrawFlakesPlainly in its order, on purpose written again: a capsule needs neither pixels nor
// reports of progress.
std::vector<Capsule> CapsulesOf(const FrameSetup<PF_Pixel>& frame) {
  constexpr float kUnit = 1.0f / 255.0f;
  std::vector<Capsule> capsules;
  FlakeStreams streams(frame);
  PF_Err status = PF_Err_NONE;
  for (std::int32_t i = 0; i < frame.flakeCount; ++i) {
    FlakeSegment segment;
    if (!NextFlake(frame, streams, segment)) {
      continue;
    }
    const ShadedFlake<PF_Pixel> flake = ShadeFlake(frame, segment, streams.illumination, status);
    const PF_Pixel& color = flake.color;
    capsules.push_back({segment.start.x, segment.start.y, segment.end.x, segment.end.y,
                        std::max(flake.size, 1.0f), static_cast<float>(color.red) * kUnit,
                        static_cast<float>(color.green) * kUnit, static_cast<float>(color.blue) * kUnit,
                        static_cast<float>(color.alpha) * kUnit * std::min(flake.size, 1.0f)});
  }
  return capsules;
}

void WriteCapsules(const std::string& file, int width, int height, const std::vector<Capsule>& capsules) {
  std::ofstream out(file, std::ios::binary);
  const float size[2] = {static_cast<float>(width), static_cast<float>(height)};
  out.write(reinterpret_cast<const char*>(size), sizeof size);
  out.write(reinterpret_cast<const char*>(capsules.data()),
            static_cast<std::streamsize>(capsules.size() * sizeof(Capsule)));
  out.close();
  if (!out) {
    throw std::runtime_error("cannot write the capsules to '" + file + "'");
  }
}
