// The host's side of the two-step render: what was asked for, what was lent.
#pragma once

#include <cstdint>
#include <deque>

#include "hostapi/smart_render.h"
#include "minihost/picture/image.h"

namespace minihost {

/// One frame on its way through both steps.
struct SmartFrame {
  /// A picture that the effect asked for at the first step, and gets at the second.
  struct Layer {
    std::int32_t checkoutId;
    PF_LayerDef world;  // a part of the input; without pixels when the layer has none there
  };

  const Image* input = nullptr;  // null: a layer without pixels
  Depth depth = Depth::kBits8;
  std::int32_t time = 0;     // of the input, ticks
  std::deque<Layer> layers;  // a deque, because worlds are lent by their address
  PF_LayerDef output{};      // set for the second step
};

extern const PF_PreRenderCallbacks kPreRenderCallbacks;
extern const PF_SmartRenderCallbacks kSmartRenderCallbacks;

/// The part of a picture inside `rect`, which lies in the picture; shares its pixels.
PF_LayerDef PartOf(const Image& image, const PF_LRect& rect) noexcept;

}  // namespace minihost
