#include "tests/support/recording_host.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <set>
#include <sstream>
#include <utility>

namespace {

RecordingHost* current = nullptr;

template <class... Parts>
std::string Text(const Parts&... parts) {
  std::ostringstream text;
  text.precision(17);
  (text << ... << parts);
  return text.str();
}

std::string Rect(const PF_LRect* rect) {
  if (rect == nullptr) return "all";
  return Text('[', rect->left, ' ', rect->top, ' ', rect->right, ' ', rect->bottom, ']');
}

std::string Suite(const char* name, std::int32_t version) {
  return Text(name, ' ', version);
}

bool StartsWith(const std::string& text, const std::string& start) {
  return text.rfind(start, 0) == 0;
}

std::size_t PixelBytes(PF_PixelFormat format) {
  return format == PF_PixelFormat_ARGB128 ? 16 : format == PF_PixelFormat_ARGB64 ? 8 : 4;
}

}  // namespace

struct RecordingHost::Callbacks {
  static RecordingHost& Host(PF_ProgPtr effect_ref) {
    if (effect_ref != current) current->Write("WRONG effect_ref");
    return *current;
  }

  // The C library.
  static double Cos(double radians) { return current->Obey("cos"), std::cos(radians); }
  static double Sqrt(double value) { return current->Obey("sqrt"), std::sqrt(value); }
  static double Tan(double radians) { return current->Write(Text("tan ", radians)), std::tan(radians); }
  static int Sprintf(char* destination, const char* text, ...) {
    current->Write(Text("sprintf ", text));
    std::va_list arguments;
    va_start(arguments, text);
    const int length = std::vsprintf(destination, text, arguments);
    va_end(arguments);
    return length;
  }
  static char* Strcpy(char* destination, const char* source) {
    current->Write(Text("strcpy ", source));
    return std::strcpy(destination, source);
  }

  // Worlds.
  static PF_Err Fill(PF_ProgPtr ref, const PF_Pixel* color, const PF_LRect* rect, PF_EffectWorld* world) {
    RecordingHost& host = Host(ref);
    const char* what = color == nullptr ? " clear " : " COLOR ";
    if (const PF_Err status = host.Write(Text("fill ", host.Name(world), what, Rect(rect)))) return status;
    const auto bytes = static_cast<std::size_t>(world->rowbytes) * static_cast<std::size_t>(world->height);
    std::memset(world->data, 0, bytes);
    return 0;
  }
  static PF_Err Copy(PF_ProgPtr ref, PF_EffectWorld* src, PF_EffectWorld* dst, const PF_LRect* from,
                     const PF_LRect* to) {
    RecordingHost& host = Host(ref);
    if (const PF_Err status =
            host.Write(Text("copy ", host.Name(src), Rect(from), " -> ", host.Name(dst), Rect(to))))
      return status;
    const PF_LRect s = from != nullptr ? *from : PF_LRect{0, 0, src->width, src->height};
    const PF_LRect d = to != nullptr ? *to : PF_LRect{0, 0, dst->width, dst->height};
    const std::size_t pixel = PixelBytes(host.format);
    const auto at = [pixel](PF_EffectWorld* world, std::int32_t x, std::int32_t y) {
      return static_cast<std::byte*>(world->data) + y * world->rowbytes +
             static_cast<std::ptrdiff_t>(pixel) * x;
    };
    for (std::int32_t y = d.top; y < d.bottom; ++y)
      for (std::int32_t x = d.left; x < d.right; ++x)
        std::memcpy(at(dst, x, y),
                    at(src, s.left + (x - d.left) * (s.right - s.left) / (d.right - d.left),
                       s.top + (y - d.top) * (s.bottom - s.top) / (d.bottom - d.top)),
                    pixel);
    return 0;
  }
  static PF_Err Lend(RecordingHost& host, const std::string& call, PF_PixelFormat worldFormat,
                     std::int32_t width, std::int32_t height, PF_EffectWorld* world) {
    if (const PF_Err status = host.Write(call)) return status;
    Image image = host.MakeWorld(*world, worldFormat, width, height);
    image.name = Text("world", ++host.worldCount_);
    host.worlds_[world] = std::move(image);
    return 0;
  }
  static PF_Err NewWorld1(PF_ProgPtr ref, std::int32_t width, std::int32_t height, PF_NewWorldFlags flags,
                          PF_EffectWorld* world) {
    const bool deep = (flags & PF_NewWorldFlag_DEEP_PIXELS) != 0;
    return Lend(Host(ref), Text("new_world ", width, 'x', height, " flags ", flags),
                deep ? PF_PixelFormat_ARGB64 : PF_PixelFormat_ARGB32, width, height, world);
  }
  static PF_Err NewWorld2(PF_ProgPtr ref, std::int32_t width, std::int32_t height, PF_Boolean clear,
                          PF_PixelFormat worldFormat, PF_EffectWorld* world) {
    return Lend(Host(ref),
                Text("PF_NewWorld ", width, 'x', height, " clear ", int{clear}, " format ", worldFormat),
                worldFormat, width, height, world);
  }
  static PF_Err TakeBack(RecordingHost& host, const char* operation, PF_EffectWorld* world) {
    const PF_Err status = host.Write(Text(operation, host.Name(world)));
    if (host.worlds_.erase(world) == 0) --host.balance_["world"];
    return status;
  }
  static PF_Err DisposeWorld1(PF_ProgPtr ref, PF_EffectWorld* world) {
    return TakeBack(Host(ref), "dispose_world ", world);
  }
  static PF_Err DisposeWorld2(PF_ProgPtr ref, PF_EffectWorld* world) {
    return TakeBack(Host(ref), "PF_DisposeWorld ", world);
  }
  static PF_Err GetPixelFormat(const PF_EffectWorld* world, PF_PixelFormat* answer) {
    if (const PF_Err status = current->Write(Text("PF_GetPixelFormat ", current->Name(world)))) return status;
    *answer = current->format;
    return 0;
  }

  // Handles.
  static PF_Handle NewHandle(std::uint64_t size) {
    return current->Write(Text("new_handle ", size)) ? nullptr : current->NewBlock(size);
  }
  static PF_Handle UtilNewHandle(std::uint64_t size) {
    return current->Write(Text("util new_handle ", size)) ? nullptr : current->NewBlock(size);
  }
  static void* Lock(PF_Handle handle) {
    return current->Write(Text("lock ", current->Name(handle))) ? nullptr : *handle;
  }
  static void Unlock(PF_Handle handle) { current->Write(Text("unlock ", current->Name(handle))); }
  static void Dispose(PF_Handle handle) {
    current->Write(Text("dispose ", current->Name(handle)));
    current->DisposeBlock(handle);
  }
  static void UtilDispose(PF_Handle handle) {
    current->Write(Text("util dispose ", current->Name(handle)));
    current->DisposeBlock(handle);
  }

  // Parameters and progress.
  static PF_Err Checkout(PF_ProgPtr ref, std::int32_t index, std::int32_t time, std::int32_t step,
                         std::uint32_t scale, PF_ParamDef* def) {
    RecordingHost& host = Host(ref);
    std::memset(static_cast<void*>(def), 0xA5, sizeof *def);
    if (const PF_Err status = host.Write(Text("checkout ", index, " @", time, '/', step, '/', scale)))
      return status;
    *def = host.params[index];
    if (const auto curve = host.curves.find(index); curve != host.curves.end()) {
      const double value = curve->second(time);
      if (def->param_type == PF_Param_FLOAT_SLIDER) def->u.fs_d.value = value;
      if (def->param_type == PF_Param_POINT)
        def->u.td.x_value = def->u.td.y_value = static_cast<PF_Fixed>(value);
    }
    ++host.balance_[Text("definition ", def)];
    return 0;
  }
  static PF_Err Checkin(PF_ProgPtr ref, PF_ParamDef* def) {
    RecordingHost& host = Host(ref);
    const auto index = std::find_if(std::begin(host.params), std::end(host.params),
                                    [def](const auto& param) { return param.uu.id == def->uu.id; });
    --host.balance_[Text("definition ", def)];
    const PF_Err status = host.Write(Text("checkin ", index - host.params));
    std::memset(static_cast<void*>(def), 0xA5, sizeof *def);  // nothing may be used any more
    return status;
  }
  static PF_Err AddParam(PF_ProgPtr ref, std::int32_t index, PF_ParamDef* def) {
    RecordingHost& host = Host(ref);
    if (const PF_Err status = host.Write(Text("add_param ", index))) return status;
    host.declared.push_back(*def);
    return 0;
  }
  static PF_Err Abort(PF_ProgPtr ref) { return Host(ref).Write("abort"); }
  static PF_Err Progress(PF_ProgPtr ref, std::int32_t done, std::int32_t total) {
    return Host(ref).Write(Text("progress ", done, '/', total));
  }
  static PF_Err UpdateParamUI(PF_ProgPtr ref, std::int32_t index, const PF_ParamDef* def) {
    Host(ref).updated = *def;
    return Host(ref).Write(Text("PF_UpdateParamUI ", index));
  }

  // Samples: always the position's own pixel.
  template <class T>
  static PF_Err Sample(PF_ProgPtr ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* from, T* to) {
    if (const PF_Err status = Host(ref).Obey("sample")) return status;
    const auto* row = static_cast<const std::byte*>(from->src->data) + (y >> 16) * from->src->rowbytes;
    *to = reinterpret_cast<const T*>(row)[x >> 16];
    return 0;
  }

  // The smart render.
  static PF_Err CheckoutLayer(PF_ProgPtr ref, std::int32_t index, std::int32_t id,
                              const PF_RenderRequest* what, std::int32_t time, std::int32_t step,
                              std::uint32_t scale, PF_CheckoutResult* result) {
    RecordingHost& host = Host(ref);
    if (const PF_Err status =
            host.Write(Text("checkout_layer ", index, " id ", id, ' ', Rect(&what->rect), " field ",
                            what->field, " mask ", what->channel_mask, " preserve ",
                            int{what->preserve_rgb_of_zero_alpha}, " @", time, '/', step, '/', scale)))
      return status;
    *result = host.layerResult;
    return 0;
  }
  static PF_Err CheckoutPixels(PF_ProgPtr ref, std::int32_t id, PF_EffectWorld** world) {
    if (const PF_Err status = Host(ref).Write(Text("checkout_layer_pixels ", id))) return status;
    *world = current->lentInput;
    return 0;
  }
  static PF_Err CheckoutOutput(PF_ProgPtr ref, PF_EffectWorld** world) {
    if (const PF_Err status = Host(ref).Write("checkout_output")) return status;
    *world = current->lentOutput;
    return 0;
  }

  // Suites.
  static const void* Find(const std::string& suite) {
    static const PF_HandleSuite1 handles{NewHandle, Lock, Unlock, Dispose};
    static const PF_WorldSuite1 worlds1{NewWorld1, DisposeWorld1};
    static const PF_WorldSuite2 worlds2{NewWorld2, DisposeWorld2, GetPixelFormat};
    static const PF_ParamUtilsSuite1 paramUtils{UpdateParamUI};
    static const PF_Sampling8Suite1 sampling8{nullptr, Sample<PF_Pixel>};
    static const PF_Sampling16Suite1 sampling16{nullptr, Sample<PF_Pixel16>};
    static const PF_SamplingFloatSuite1 samplingFloat{nullptr, Sample<PF_PixelFloat>};
    static const std::map<std::string, const void*> suites{{"PF Handle Suite 1", &handles},
                                                           {"PF World Suite 1", &worlds1},
                                                           {"PF World Suite 2", &worlds2},
                                                           {"PF Param Utils Suite 1", &paramUtils},
                                                           {"PF Sampling8 Suite 1", &sampling8},
                                                           {"PF Sampling16 Suite 1", &sampling16},
                                                           {"PF SamplingFloat Suite 1", &samplingFloat}};
    const auto found = suites.find(suite);
    return found != suites.end() ? found->second : current->everySuite ? &handles : nullptr;
  }
  static std::int32_t Acquire(const char* name, std::int32_t version, const void** suite) {
    const std::string wanted = Suite(name, version);
    const PF_Err status = current->Write("acquire " + wanted);
    if (status != 0) return *suite = nullptr, status == kNullSuite ? 0 : status;
    *suite = Find(wanted);
    if (*suite == nullptr) return 1;
    return ++current->balance_[wanted], 0;
  }
  static std::int32_t Release(const char* name, std::int32_t version) {
    --current->balance_[Suite(name, version)];
    return current->Write("release " + Suite(name, version));
  }
};

RecordingHost::RecordingHost() {
  current = this;
  calls_.reserve(2000);  // so that writing allocates nothing but long texts while a command runs
  basic_ = {Callbacks::Acquire, Callbacks::Release};
  preCallbacks_ = {Callbacks::CheckoutLayer};
  smartCallbacks_ = {Callbacks::CheckoutPixels, Callbacks::CheckoutOutput};
  utils = {{Callbacks::Cos, Callbacks::Sqrt, Callbacks::Tan, Callbacks::Sprintf, Callbacks::Strcpy},
           Callbacks::Fill,
           Callbacks::Copy,
           Callbacks::UtilNewHandle,
           Callbacks::UtilDispose};
  in.inter = {Callbacks::Checkout, Callbacks::Checkin, Callbacks::AddParam, Callbacks::Abort,
              Callbacks::Progress};
  in.utils = &utils;
  in.effect_ref = this;
  in.pica_basicP = &basic_;
  in.time_step = in.local_time_step = 100;
  in.time_scale = 1000;
  in.shutter_angle = 32768;
  in.downsample_x = in.downsample_y = in.pixel_aspect_ratio = {1, 1};
  SetImages(PF_PixelFormat_ARGB32, 20, 10);
  Call(PF_Cmd_PARAMS_SETUP);
  std::copy_n(declared.begin(), std::min<std::size_t>(declared.size(), 32), params + 1);
  SetFloat(1, 1);
  params[28].u.td.x_value = 10 * 65536;
  params[28].u.td.y_value = 5 * 65536;
  declared.clear();
  calls_.clear();
}

RecordingHost::~RecordingHost() {
  current = nullptr;
}

PF_Err RecordingHost::Call(PF_Cmd cmd) {
  PF_ParamDef* pointers[33];
  for (int i = 0; i < 33; ++i) pointers[i] = &params[i];
  params[0].u.ld = input;
  PF_PreRenderExtra pre{&preInput, &preOutput, &preCallbacks_};
  PF_SmartRenderExtra smart{&smartInput, &smartCallbacks_};
  void* extra = nullptr;
  if (cmd == PF_Cmd_SMART_PRE_RENDER) extra = &pre;
  if (cmd == PF_Cmd_SMART_RENDER) extra = &smart;
  return MainEntry(cmd, &in, &out, pointers, cmd == PF_Cmd_RENDER ? lentOutput : nullptr, extra);
}

PF_Err RecordingHost::SmartFrame(std::int32_t time) {
  in.current_time = time;
  preOutput = {};
  Call(PF_Cmd_SMART_PRE_RENDER);
  smartInput.pre_render_data = std::exchange(preOutput.pre_render_data, nullptr);
  calls_.clear();
  return Call(PF_Cmd_SMART_RENDER);
}

PF_Err RecordingHost::PlainFrame(std::int32_t time) {
  in.current_time = time;
  calls_.clear();
  return Call(PF_Cmd_RENDER);
}

RecordingHost::Image RecordingHost::MakeWorld(PF_EffectWorld& world, PF_PixelFormat worldFormat,
                                              std::int32_t width, std::int32_t height) {
  const std::size_t rowBytes = static_cast<std::size_t>(width) * PixelBytes(worldFormat) + 16;
  const std::size_t size = rowBytes * static_cast<std::size_t>(height);
  Image image{std::make_unique<std::byte[]>(size), ""};
  std::memset(image.pixels.get(), 0x77, size);
  world = {worldFormat == PF_PixelFormat_ARGB64 ? PF_WorldFlag_DEEP : 0,
           image.pixels.get(),
           static_cast<std::int32_t>(rowBytes),
           width,
           height,
           {0, 0, width, height}};
  return image;
}

void RecordingHost::SetImages(PF_PixelFormat worldFormat, std::int32_t width, std::int32_t height) {
  format = worldFormat;
  inputImage_ = MakeWorld(input, format, width, height);
  outputImage_ = MakeWorld(output, format, width, height);
  layerResult = {{0, 0, width, height}, {0, 0, width, height}};
  preInput.output_request.rect = {0, 0, width, height};
  for (std::size_t i = 0, n = static_cast<std::size_t>(input.rowbytes * height); i + 16 <= n; i += 16) {
    const auto grey = static_cast<float>(i % 240) / 256.0f;
    const float pattern[4] = {1.0f, grey, grey / 2, grey / 4};  // a plausible pixel in every format
    std::memcpy(inputImage_.pixels.get() + i, pattern, sizeof pattern);
  }
}

void RecordingHost::OnCall(const std::string& call, std::function<PF_Err()> action, int nth) {
  rules_.push_back({call, std::move(action), nth - 1});
}

PF_Err RecordingHost::Obey(const std::string& call) {
  for (Rule& rule : rules_)
    if (StartsWith(call, rule.call) && rule.remaining-- <= 0) return rule.action();
  return 0;
}

PF_Err RecordingHost::Write(const std::string& call) {
  calls_.push_back(call);
  return Obey(call);
}

std::string RecordingHost::Log() const {
  std::string log;
  for (const std::string& call : calls_) log += call + '\n';
  return log;
}

std::string RecordingHost::LogBetween(const std::string& after, const std::string& before) const {
  auto line = std::find_if(calls_.begin(), calls_.end(), [&](auto& call) { return StartsWith(call, after); });
  if (line == calls_.end()) return "no call " + after;
  std::string log;
  for (++line; line != calls_.end() && !StartsWith(*line, before); ++line) log += *line + '\n';
  return log;
}

std::string RecordingHost::LogOf(const std::string& call) const {
  std::string log;
  for (const std::string& line : calls_)
    if (StartsWith(line, call)) log += line + '\n';
  return log;
}

bool RecordingHost::Called(const std::string& call) const {
  return !LogOf(call).empty();
}

std::string RecordingHost::Outstanding() const {
  std::string list;
  for (const auto& [what, count] : balance_)
    if (count != 0) list += Text(what, ": ", count, '\n');
  for (const auto& [world, image] : worlds_) list += image.name + '\n';
  const std::set<const void*> kept{out.sequence_data, preOutput.pre_render_data, smartInput.pre_render_data};
  for (const auto& [handle, block] : blocks_)
    if (kept.count(handle) == 0) list += block->name + '\n';
  return list;
}

std::vector<std::byte> RecordingHost::Bytes(const PF_EffectWorld& world) const {
  const auto* data = static_cast<const std::byte*>(world.data);
  return {data, data + static_cast<std::ptrdiff_t>(world.rowbytes) * world.height};
}

std::string RecordingHost::Name(const PF_EffectWorld* world) const {
  if (world == nullptr) return "null";
  if (const auto found = worlds_.find(world); found != worlds_.end()) return found->second.name;
  return world->data == input.data ? "input" : world == &output ? "output" : "UNKNOWN";
}

std::string RecordingHost::Name(PF_Handle handle) const {
  const auto found = blocks_.find(handle);
  return found == blocks_.end() ? "UNKNOWN" : found->second->name;
}

PF_Handle RecordingHost::NewBlock(std::uint64_t size) {
  const std::size_t shift = oddHandles ? 1 : 0;
  auto block = std::make_unique<Block>();
  block->memory = std::make_unique<std::byte[]>(size + shift);
  std::memset(block->memory.get(), 0xCD, size + shift);
  block->start = block->memory.get() + shift;
  block->name = Text('h', ++blockCount_);
  const PF_Handle handle = &block->start;
  blocks_[handle] = std::move(block);
  return handle;
}

void RecordingHost::DisposeBlock(PF_Handle handle) {
  if (blocks_.erase(handle) == 0) --balance_["handle"];
}
