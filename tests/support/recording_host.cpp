#include "tests/support/recording_host.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <set>
#include <sstream>

namespace {

RecordingHost* current = nullptr;

// Writes the call down and answers as the rules say.
template <class... Parts>
PF_Err Record(PF_ProgPtr effect_ref, const Parts&... parts) {
  std::ostringstream text;
  (text << ... << parts);
  if (effect_ref != current) {
    text << " WRONG effect_ref";
  }
  const std::string call = text.str();
  current->log += call + '\n';
  for (const auto& [start, action] : current->rules) {
    if (call.starts_with(start)) {
      return action();
    }
  }
  return 0;
}

std::string Rect(const PF_LRect* rect) {
  if (rect == nullptr) {
    return "all";
  }
  char text[64];
  std::snprintf(text, sizeof text, "[%d %d %d %d]", rect->left, rect->top, rect->right, rect->bottom);
  return text;
}

const char* Name(const PF_EffectWorld* world) {
  if (world->data == current->input.data) {
    return "input";
  }
  return world->data == current->output.data ? "output" : "world";
}

std::byte* Allocate(std::size_t size) {
  std::vector<std::byte> bytes(size, std::byte{0x3C});
  return current->memory.emplace(bytes.data(), std::move(bytes)).first->second.data();
}

PF_Err TakeBack(PF_ProgPtr ref, const char* call, const void* start) {
  if (current->memory.erase(start) == 0) {
    ++current->balance["strange memory"];
  }
  return Record(ref, call);
}

// Rows long enough for every depth.
void MakeWorld(std::int32_t width, std::int32_t height, PF_EffectWorld& world) {
  const std::int32_t rowBytes = width * 16 + 16;
  std::byte* const pixels = Allocate(static_cast<std::size_t>(rowBytes * height));
  world = {0, pixels, rowBytes, width, height, {0, 0, width, height}};
}

PF_Handle NewHandle(const char* call, std::uint64_t size) {
  if (Record(current, call, size) != 0) {
    return nullptr;
  }
  std::byte* const block = Allocate(sizeof(void*) + 1 + size);
  return new (block) void*(block + sizeof(void*) + 1);
}

PF_Err Fill(PF_ProgPtr ref, const PF_Pixel* color, const PF_LRect* rect, PF_EffectWorld* world) {
  return Record(ref, "fill ", Name(world), color != nullptr ? " COLOR " : " clear ", Rect(rect));
}

PF_Err Copy(PF_ProgPtr ref, PF_EffectWorld* src, PF_EffectWorld* dst, const PF_LRect* from,
            const PF_LRect* to) {
  return Record(ref, "copy ", Name(src), Rect(from), " -> ", Name(dst), Rect(to));
}

PF_Err Checkout(PF_ProgPtr ref, std::int32_t index, std::int32_t time, std::int32_t step, std::uint32_t scale,
                PF_ParamDef* def) {
  std::memset(static_cast<void*>(def), 0xA5, sizeof *def);
  const PF_Err status = Record(ref, "checkout ", index, " @", time, '/', step, '/', scale);
  if (status != 0) {
    return status;
  }
  *def = current->params[index];
  if (current->curves.count(index) != 0) {
    def->u.fs_d.value = current->curves[index](time);
  }
  ++current->balance["definition"];
  return 0;
}

PF_Err Checkin(PF_ProgPtr ref, PF_ParamDef* def) {
  const std::int32_t index = def->uu.id;
  --current->balance["definition"];
  std::memset(static_cast<void*>(def), 0xA5, sizeof *def);  // nothing may be used any more
  return Record(ref, "checkin ", index);
}

PF_Err AddParam(PF_ProgPtr ref, std::int32_t index, PF_ParamDef* def) {
  current->params[def->uu.id] = *def;
  return Record(ref, "add_param ", index, " id ", def->uu.id);
}

PF_Err CheckoutLayer(PF_ProgPtr ref, std::int32_t index, std::int32_t id, const PF_RenderRequest* what,
                     std::int32_t time, std::int32_t step, std::uint32_t scale, PF_CheckoutResult* result) {
  const PF_Err status = Record(ref, "checkout_layer ", index, " id ", id, ' ', Rect(&what->rect), " field ",
                               what->field, " mask ", what->channel_mask, " preserve ",
                               int{what->preserve_rgb_of_zero_alpha}, " @", time, '/', step, '/', scale);
  if (status == 0) {
    *result = current->layerResult;
  }
  return status;
}

template <class T>
PF_Err Sample(PF_ProgPtr ref, PF_Fixed, PF_Fixed, const PF_SampPB* from, T* to) {
  std::memcpy(to, from->src->data, sizeof *to);
  return Record(ref, "sample");
}

PF_Err NewWorld1(PF_ProgPtr ref, std::int32_t width, std::int32_t height, PF_NewWorldFlags flags,
                 PF_EffectWorld* world) {
  const PF_Err status = Record(ref, "new_world ", width, 'x', height, " flags ", flags);
  if (status == 0) {
    MakeWorld(width, height, *world);
  }
  return status;
}

PF_Err NewWorld2(PF_ProgPtr ref, std::int32_t width, std::int32_t height, PF_Boolean clear,
                 PF_PixelFormat format, PF_EffectWorld* world) {
  const PF_Err status =
      Record(ref, "PF_NewWorld ", width, 'x', height, " clear ", int{clear}, " format ", format);
  if (status == 0) {
    MakeWorld(width, height, *world);
  }
  return status;
}

PF_Err GetPixelFormat(const PF_EffectWorld* world, PF_PixelFormat* answer) {
  const PF_Err status = Record(current, "PF_GetPixelFormat ", Name(world));
  if (status == 0) {
    *answer = current->format;
  }
  return status;
}

PF_Err UpdateParamUI(PF_ProgPtr ref, std::int32_t index, const PF_ParamDef* def) {
  current->updated = *def;
  return Record(ref, "PF_UpdateParamUI ", index);
}

template <int version>
PF_Err DisposeWorld(PF_ProgPtr ref, PF_EffectWorld* world) {
  return TakeBack(ref, version == 1 ? "dispose_world" : "PF_DisposeWorld", world->data);
}

const PF_HandleSuite1 kHandles{
    [](std::uint64_t size) { return NewHandle("new_handle ", size); },
    [](PF_Handle handle) { return Record(current, "lock") != 0 ? nullptr : *handle; },
    [](PF_Handle) { Record(current, "unlock"); },
    [](PF_Handle handle) { TakeBack(current, "dispose", handle); }};
const PF_WorldSuite1 kWorlds1{NewWorld1, DisposeWorld<1>};
const PF_WorldSuite2 kWorlds2{NewWorld2, DisposeWorld<2>, GetPixelFormat};
const PF_ParamUtilsSuite1 kParamUtils{UpdateParamUI};
const PF_Sampling8Suite1 kSampling8{nullptr, Sample<PF_Pixel>};
const PF_Sampling16Suite1 kSampling16{nullptr, Sample<PF_Pixel16>};
const PF_SamplingFloatSuite1 kSamplingFloat{nullptr, Sample<PF_PixelFloat>};

const std::map<std::string, const void*> kSuites{{"PF Handle Suite 1", &kHandles},
                                                 {"PF World Suite 1", &kWorlds1},
                                                 {"PF World Suite 2", &kWorlds2},
                                                 {"PF Param Utils Suite 1", &kParamUtils},
                                                 {"PF Sampling8 Suite 1", &kSampling8},
                                                 {"PF Sampling16 Suite 1", &kSampling16},
                                                 {"PF SamplingFloat Suite 1", &kSamplingFloat}};

std::int32_t Acquire(const char* name, std::int32_t version, const void** suite) {
  *suite = nullptr;
  const PF_Err status = Record(current, "acquire ", name, ' ', version);
  if (status != 0) {
    return status == RecordingHost::kNullSuite ? 0 : status;
  }
  const auto found = kSuites.find(std::string(name) + ' ' + std::to_string(version));
  *suite = found != kSuites.end() ? found->second : &kSuites;
  ++current->balance[name];
  return 0;
}

std::int32_t Release(const char* name, std::int32_t version) {
  --current->balance[name];
  return Record(current, "release ", name, ' ', version);
}

PF_Err Progress(PF_ProgPtr ref, std::int32_t done, std::int32_t total) {
  return Record(ref, "progress ", done, '/', total);
}

PF_Err CheckoutPixels(PF_ProgPtr ref, std::int32_t id, PF_EffectWorld** world) {
  *world = current->lentInput;
  return Record(ref, "checkout_layer_pixels ", id);
}

PF_Err CheckoutOutput(PF_ProgPtr ref, PF_EffectWorld** world) {
  *world = current->lentOutput;
  return Record(ref, "checkout_output");
}

const SPBasicSuite kBasic{Acquire, Release};
PF_PreRenderCallbacks preCallbacks{CheckoutLayer};
PF_SmartRenderCallbacks smartCallbacks{CheckoutPixels, CheckoutOutput};

}  // namespace

RecordingHost::RecordingHost() {
  current = this;
  const auto tan = [](double radians) { return Record(current, "tan ", radians), std::tan(radians); };
  utils.ansi = {std::cos, std::sqrt, tan, std::sprintf, std::strcpy};
  utils.fill = Fill;
  utils.copy = Copy;
  utils.host_new_handle = [](std::uint64_t size) { return NewHandle("util new_handle ", size); };
  utils.host_dispose_handle = [](PF_Handle handle) { TakeBack(current, "util dispose", handle); };
  in.inter = {Checkout, Checkin, AddParam, [](PF_ProgPtr ref) { return Record(ref, "abort"); }, Progress};
  in.utils = &utils;
  in.effect_ref = this;
  in.pica_basicP = &kBasic;
  in.time_step = in.local_time_step = 100;
  in.time_scale = 1000;
  in.shutter_angle = 32768;
  in.downsample_x = in.downsample_y = in.pixel_aspect_ratio = {1, 1};
  SetImages(PF_PixelFormat_ARGB32, 20, 10);
  Call(PF_Cmd_PARAMS_SETUP);
  SetFloat(1, 1);
  params[28].u.td = {10 * 65536, 5 * 65536, 0, 0, 0};
  log.clear();
}

void RecordingHost::SetImages(PF_PixelFormat worldFormat, std::int32_t width, std::int32_t height) {
  format = worldFormat;
  memory.clear();
  MakeWorld(width, height, input);
  MakeWorld(width, height, output);
  std::memset(input.data, 0x2A, Bytes(input).size());
  preInput.output_request.rect = input.extent_hint;
  layerResult = {input.extent_hint, input.extent_hint};
}

PF_Err RecordingHost::Call(PF_Cmd cmd) {
  PF_ParamDef* pointers[33];
  for (int i = 0; i < 33; ++i) {
    pointers[i] = &params[i];
  }
  params[0].u.ld = input;
  PF_PreRenderExtra pre{&preInput, &preOutput, &preCallbacks};
  PF_SmartRenderExtra smart{&smartInput, &smartCallbacks};
  void* extra = nullptr;
  if (cmd == PF_Cmd_SMART_PRE_RENDER) {
    extra = &pre;
  }
  if (cmd == PF_Cmd_SMART_RENDER) {
    extra = &smart;
  }
  return MainEntry(cmd, &in, &out, pointers, cmd == PF_Cmd_RENDER ? lentOutput : nullptr, extra);
}

PF_Err RecordingHost::Frame(PF_Cmd cmd, std::int32_t time) {
  in.current_time = time;
  if (cmd == PF_Cmd_SMART_RENDER) {
    Call(PF_Cmd_SMART_PRE_RENDER);
    smartInput.pre_render_data = std::exchange(preOutput.pre_render_data, nullptr);
  }
  log.clear();
  return Call(cmd);
}

std::string RecordingHost::Outstanding() const {
  std::string list;
  for (const auto& [what, count] : balance) {
    if (count != 0) {
      list += what + '\n';
    }
  }
  const std::set<const void*> kept{input.data, output.data, out.sequence_data, preOutput.pre_render_data,
                                   smartInput.pre_render_data};
  for (const auto& [start, bytes] : memory) {
    if (kept.count(start) == 0) {
      list += std::to_string(bytes.size()) + " bytes\n";
    }
  }
  return list;
}
