#include "minihost/call/smart_render.h"

#include <algorithm>
#include <string>

#include "minihost/call/answer.h"
#include "minihost/picture/copy.h"

namespace minihost {
namespace {

SmartFrame::Layer* FindLayer(SmartFrame& frame, std::int32_t checkoutId) noexcept {
  const auto found =
      std::find_if(frame.layers.begin(), frame.layers.end(),
                   [=](const SmartFrame::Layer& layer) { return layer.checkoutId == checkoutId; });
  return found == frame.layers.end() ? nullptr : &*found;
}

// The command where it is a step of a smart render and the effect gave what it must.
template <class... Pointers>
Command* SmartCommand(PF_ProgPtr effect_ref, const Pointers*... required) noexcept {
  Command* command = WithGiven(Command::Named(effect_ref), required...);
  return command != nullptr && command->scene.smart != nullptr ? command : nullptr;
}

PF_Err AnswerToFault(Command& command, const std::string& what, std::int32_t number) {
  return AnswerToFault(command, what + " " + std::to_string(number));
}

PF_Err CheckoutLayer(PF_ProgPtr effect_ref, std::int32_t index, std::int32_t checkout_id,
                     const PF_RenderRequest* request, std::int32_t what_time, std::int32_t, std::uint32_t,
                     PF_CheckoutResult* result) noexcept {
  return Answer(SmartCommand(effect_ref, request, result), [&](Command& command) {
    if (const auto refusal = command.session.faults.Refuses(Service::kCheckoutLayer)) {
      if (*refusal == PF_Err_NONE) {
        *result = PF_CheckoutResult{};
      }
      return *refusal;
    }
    SmartFrame& frame = *command.scene.smart;
    if (index != 0) {
      return AnswerToFault(command, "checked out a layer that is not there:", index);
    }
    if (what_time != frame.time) {
      return AnswerToFault(command, "checked out the layer at time", what_time);
    }
    if (FindLayer(frame, checkout_id) != nullptr) {
      return AnswerToFault(command, "checked out two layers under the id", checkout_id);
    }
    SmartFrame::Layer layer{checkout_id, {}};
    PF_CheckoutResult answer{};
    if (frame.input != nullptr) {
      answer.max_result_rect = BoundsOf(frame.input->World());
      answer.result_rect = Intersection(request->rect, answer.max_result_rect);
      if (answer.result_rect.left < answer.result_rect.right) {
        layer.world = PartOf(*frame.input, answer.result_rect);
      }
    }
    frame.layers.push_back(layer);
    *result = answer;
    return PF_Err_NONE;
  });
}

// Lends a world until the command ends; a world without pixels is lent as none.
PF_Err LendWorld(Command& command, PF_LayerDef& lent, const char* name, std::int32_t number,
                 PF_EffectWorld** world) {
  *world = nullptr;
  if (lent.data == nullptr) {
    return PF_Err_NONE;
  }
  command.session.worlds.Borrow(lent, command.scene.smart->depth);
  command.session.ledger.Lend(Ledger::Kind::kLayer, &lent, name, number);
  *world = &lent;
  return PF_Err_NONE;
}

PF_Err CheckoutLayerPixels(PF_ProgPtr effect_ref, std::int32_t checkout_id, PF_EffectWorld** world) noexcept {
  return Answer(SmartCommand(effect_ref, world), Service::kCheckoutLayerPixels, [&](Command& command) {
    SmartFrame::Layer* layer = FindLayer(*command.scene.smart, checkout_id);
    if (layer == nullptr) {
      return AnswerToFault(command, "wanted pixels that were not asked for, under the id", checkout_id);
    }
    return LendWorld(command, layer->world, "checkout id", checkout_id, world);
  });
}

PF_Err CheckoutOutput(PF_ProgPtr effect_ref, PF_EffectWorld** world) noexcept {
  return Answer(SmartCommand(effect_ref, world), Service::kCheckoutOutput, [&](Command& command) {
    return LendWorld(command, command.scene.smart->output, "output", 0, world);
  });
}

}  // namespace

const PF_PreRenderCallbacks kPreRenderCallbacks{CheckoutLayer};
const PF_SmartRenderCallbacks kSmartRenderCallbacks{CheckoutLayerPixels, CheckoutOutput};

PF_LayerDef PartOf(const Image& image, const PF_LRect& rect) noexcept {
  PF_LayerDef part = image.World();
  part.data = static_cast<std::byte*>(part.data) + std::int64_t{rect.top} * part.rowbytes +
              std::int64_t{rect.left} * static_cast<std::int64_t>(BytesPerPixel(image.PixelDepth()));
  part.width = rect.right - rect.left;
  part.height = rect.bottom - rect.top;
  part.extent_hint = BoundsOf(part);
  return part;
}

}  // namespace minihost
