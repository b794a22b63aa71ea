#include "minihost/call/frame_render.h"

#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "minihost/call/answer.h"
#include "minihost/call/callbacks.h"
#include "minihost/call/checkout.h"
#include "minihost/call/smart_render.h"
#include "minihost/picture/copy.h"

namespace minihost {
namespace {

std::string SizeText(int width, int height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

std::string RectText(const PF_LRect& rect) {
  std::ostringstream text;
  text << '(' << rect.left << ", " << rect.top << ", " << rect.right << ", " << rect.bottom << ')';
  return text.str();
}

bool IsInside(const PF_LRect& rect, const PF_LRect& bounds) noexcept {
  return rect.left >= bounds.left && rect.top >= bounds.top && rect.right <= bounds.right &&
         rect.bottom <= bounds.bottom;
}

void RequireRect(const char* what, const PF_LRect& rect, const PF_LRect& bounds) {
  if (IsEmpty(rect) || !IsInside(rect, bounds)) {
    throw std::invalid_argument(std::string(what) + " " + RectText(rect) + " is empty or not inside " +
                                RectText(bounds));
  }
}

void RequireRenderable(const Frame& frame) {
  if (frame.output == nullptr || frame.output->Empty()) {
    throw std::invalid_argument("a frame needs an output image");
  }
  const Image& output = *frame.output;
  if (frame.input != nullptr && frame.input->Empty()) {
    throw std::invalid_argument("the input image is empty; a layer without pixels has none");
  }
  if (frame.input == &output) {
    throw std::invalid_argument("the output image is the input image");
  }
  if (frame.input != nullptr && frame.input->PixelDepth() != output.PixelDepth()) {
    throw std::invalid_argument("input and output have different depths");
  }
  if (frame.tile && frame.protocol == Protocol::kPlain) {
    throw std::invalid_argument("the plain protocol renders no tiles");
  }
  if (frame.shown && frame.protocol == Protocol::kSmart) {
    throw std::invalid_argument("the smart protocol takes a tile instead of a shown area");
  }
  const PF_LRect layer = BoundsOf((frame.input != nullptr ? *frame.input : output).World());
  if (frame.tile) {
    RequireRect("tile", *frame.tile, layer);
  }
  if (frame.shown) {
    RequireRect("shown area", *frame.shown, layer);
  }
  const PF_LRect target = frame.tile.value_or(layer);
  if (output.Width() != target.right - target.left || output.Height() != target.bottom - target.top) {
    throw std::invalid_argument("the output is " + SizeText(output.Width(), output.Height()) +
                                " pixels, but what is rendered is " +
                                SizeText(target.right - target.left, target.bottom - target.top));
  }
}

CommandScene SceneOf(const Frame& frame, const ParameterSet& parameters) noexcept {
  const Image& layer = frame.input != nullptr ? *frame.input : *frame.output;
  CommandScene scene;
  scene.time = frame.time;
  scene.timing = frame.timing;
  scene.downsampleX = frame.downsampleX;
  scene.downsampleY = frame.downsampleY;
  scene.pixelAspectRatio = frame.pixelAspectRatio;
  scene.parameters = &parameters;
  scene.layerWidth = layer.Width();
  scene.layerHeight = layer.Height();
  scene.hooks = &frame.hooks;
  return scene;
}

// What the effect left at the first step for the second.  If no render step takes it, the host frees it.
class PreRenderData {
 public:
  PreRenderData(Session& session, const CommandScene& scene) : session_(session), scene_(scene) {}
  PreRenderData(const PreRenderData&) = delete;
  PreRenderData& operator=(const PreRenderData&) = delete;

  ~PreRenderData() {
    if (data == nullptr) {
      return;
    }
    Command command(session_, scene_);
    Answer(&command, [this](Command&) {
      Free();
      return PF_Err_NONE;
    });
    session_.ledger.SetKept({session_.sequenceData, nullptr});
  }

  void* data = nullptr;
  void (*deleteFunction)(void*) = nullptr;

 private:
  void Free() {
    if (deleteFunction != nullptr) {
      return deleteFunction(data);
    }
    const auto handle = static_cast<PF_Handle>(data);
    if (!session_.handles.Contains(handle)) {
      session_.ledger.AddFault("left pre-render data that is no live handle, and no function to free it");
      return;
    }
    DisposeHandle(handle);
  }

  Session& session_;
  const CommandScene& scene_;
};

class FrameRun {
 public:
  FrameRun(const Effect& effect, const ParameterSet& parameters, Session& session, const Frame& frame)
      : effect_(effect), session_(session), frame_(frame), scene_(SceneOf(frame, parameters)) {}

  RenderResult Render() {
    if (frame_.protocol == Protocol::kPlain) {
      RenderPlain();
    } else {
      RenderSmart();
    }
    if (hookFailure_) {
      std::rethrow_exception(hookFailure_);
    }
    return std::move(result_);
  }

 private:
  void RenderPlain() {
    const Depth depth = frame_.output->PixelDepth();
    PF_LayerDef output = frame_.output->World();
    if (frame_.shown) {
      output.extent_hint = *frame_.shown;
    }
    session_.worlds.Borrow(output, depth);
    if (frame_.input != nullptr) {
      scene_.input = frame_.input->World();
      session_.worlds.Borrow(scene_.input, depth);
    }
    RunWithParameters(PF_Cmd_RENDER, output, nullptr);
  }

  void RenderSmart() {
    const PF_LRect tile = frame_.tile.value_or(BoundsOf(frame_.output->World()));
    SmartFrame smart;
    smart.input = frame_.input;
    smart.depth = frame_.output->PixelDepth();
    smart.time = frame_.time;
    scene_.smart = &smart;

    PreRenderData data(session_, scene_);
    PF_RenderRequest request{};
    request.rect = tile;
    if (!PreRender(request, data)) {
      return;
    }

    const PF_LRect& rendered = result_.resultRect;
    if (IsEmpty(rendered) || rendered.left != tile.left || rendered.top != tile.top ||
        rendered.right != tile.right || rendered.bottom != tile.bottom) {
      const PF_LayerDef whole = frame_.output->World();
      FillPixels(PF_Pixel{}, BoundsOf(whole), whole, smart.depth);
      if (IsEmpty(rendered)) {
        return;
      }
    }
    smart.output = PartOf(*frame_.output, {rendered.left - tile.left, rendered.top - tile.top,
                                           rendered.right - tile.left, rendered.bottom - tile.top});
    PF_SmartRenderInput input{request, data.data};
    PF_SmartRenderCallbacks callbacks = kSmartRenderCallbacks;
    PF_SmartRenderExtra extra{&input, &callbacks};
    RunWithParameters(PF_Cmd_SMART_RENDER, smart.output, &extra);
    data.data = input.pre_render_data;
  }

  // The first step.  False when there is nothing to render after it; the result says why.
  bool PreRender(const PF_RenderRequest& request, PreRenderData& data) {
    PF_PreRenderInput input{request};
    PF_PreRenderOutput output{};
    PF_PreRenderCallbacks callbacks = kPreRenderCallbacks;
    PF_PreRenderExtra extra{&input, &output, &callbacks};
    Run(PF_Cmd_SMART_PRE_RENDER, nullptr, nullptr, &extra);
    data.data = output.pre_render_data;
    data.deleteFunction = output.delete_pre_render_data_func;
    session_.ledger.SetKept({session_.sequenceData, data.data});
    if (result_.err != PF_Err_NONE || hookFailure_) {
      return false;
    }

    result_.resultRect = output.result_rect;
    result_.maxResultRect = output.max_result_rect;
    if (!IsEmpty(output.result_rect) && !IsInside(output.result_rect, request.rect)) {
      result_.err = PF_Err_BAD_CALLBACK_PARAM;
      result_.message = "the effect wants to render " + RectText(output.result_rect) +
                        ", which is more than the request " + RectText(request.rect);
      session_.ledger.AddFault(result_.message);
      return false;
    }
    return true;
  }

  void RunWithParameters(PF_Cmd number, PF_LayerDef& output, void* extra) {
    const double layerFrame = LayerFrameAt(scene_, scene_.time, scene_.timing.timeScale);
    std::vector<PF_ParamDef> definitions = DefinitionsAt(session_, scene_, layerFrame);
    Run(number, AddressesOf(definitions).data(), &output, extra);
  }

  void Run(PF_Cmd number, PF_ParamDef* params[], PF_LayerDef* output, void* extra) {
    Command command(session_, scene_);
    static_cast<CommandResult&>(result_) = command.Run(effect_.Entry(), number, params, output, extra);
    hookFailure_ = command.hookFailure;
    session_.worlds.ForgetBorrowed();
    session_.handles.MoveUnlocked();
    session_.ledger.ReturnAll(Ledger::Kind::kLayer);
    session_.ledger.SetKept({session_.sequenceData, nullptr});
  }

  const Effect& effect_;
  Session& session_;
  const Frame& frame_;
  CommandScene scene_;
  RenderResult result_;
  std::exception_ptr hookFailure_;
};

}  // namespace

RenderResult RenderFrame(const Effect& effect, const ParameterSet& parameters, Session& session,
                         const Frame& frame) {
  RequireRenderable(frame);
  return FrameRun(effect, parameters, session, frame).Render();
}

}  // namespace minihost
