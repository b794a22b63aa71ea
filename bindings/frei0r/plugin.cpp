// What a module of this standard exports.  Compiled twice: VINTREL_FREI0R_TYPE says whether it is the filter
// or the source, since a module holds one of them only.  Nothing throws across these functions.
extern "C" {
#include <frei0r.h>
}

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "bindings/frei0r/snow.h"

namespace {

using frei0r::Parameter;
using frei0r::Setting;
using frei0r::Snow;
using Kind = Parameter::Kind;

constexpr bool kIsSource = VINTREL_FREI0R_TYPE == F0R_PLUGIN_TYPE_SOURCE;

int TypeOf(Kind kind) {
  return kind == Kind::kCheckbox ? F0R_PARAM_BOOL : kind == Kind::kColor ? F0R_PARAM_COLOR : F0R_PARAM_DOUBLE;
}

/// Runs the task, or does nothing where it throws: this standard has no way to say that something failed.
template <class Task>
bool Attempt(Task&& task) noexcept {
  try {
    task();
    return true;
  } catch (...) {
    return false;
  }
}

bool IsParameter(int index) {
  return index >= 0 && static_cast<std::size_t>(index) < frei0r::TheEffect().parameters.size();
}

}  // namespace

// The header declares these without a visibility of their own; the module's version script lets them out.
int f0r_init(void) {
  return Attempt([] { frei0r::TheEffect(); }) ? 1 : 0;
}

void f0r_deinit(void) {}

void f0r_get_plugin_info(f0r_plugin_info_t* info) {
  *info = {};
  info->name = kIsSource ? "Vintrel Source" : "Vintrel";
  info->author = "The Vintrel authors";
  info->plugin_type = VINTREL_FREI0R_TYPE;
  info->color_model = F0R_COLOR_MODEL_RGBA8888;
  info->frei0r_version = FREI0R_MAJOR_VERSION;
  info->major_version = 1;
  info->minor_version = 0;
  Attempt([&] { info->num_params = static_cast<int>(frei0r::TheEffect().parameters.size()); });
  info->explanation =
      kIsSource ? "Falling snow over transparency" : "Falling snow with depth, light and motion blur";
}

void f0r_get_param_info(f0r_param_info_t* info, int param_index) {
  *info = {};
  Attempt([&] {
    if (IsParameter(param_index)) {
      const Parameter& parameter = frei0r::TheEffect().parameters[static_cast<std::size_t>(param_index)];
      info->name = parameter.name.c_str();
      info->type = TypeOf(parameter.kind);
      info->explanation = parameter.explanation.c_str();
    }
  });
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height) {
  Snow* snow = nullptr;
  Attempt([&] { snow = new Snow(width, height); });
  return snow;
}

void f0r_destruct(f0r_instance_t instance) {
  delete static_cast<Snow*>(instance);
}

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t param, int param_index) {
  Attempt([&] {
    if (instance == nullptr || param == nullptr || !IsParameter(param_index)) {
      return;
    }
    const auto index = static_cast<std::size_t>(param_index);
    Setting setting = {};
    if (frei0r::TheEffect().parameters[index].kind == Kind::kColor) {
      const auto& color = *static_cast<const f0r_param_color_t*>(param);
      setting = {color.r, color.g, color.b};
    } else {
      setting[0] = *static_cast<const double*>(param);
    }
    static_cast<Snow*>(instance)->Set(index, setting);
  });
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t param, int param_index) {
  Attempt([&] {
    if (instance == nullptr || param == nullptr || !IsParameter(param_index)) {
      return;
    }
    const auto index = static_cast<std::size_t>(param_index);
    const Setting& setting = static_cast<Snow*>(instance)->Get(index);
    if (frei0r::TheEffect().parameters[index].kind == Kind::kColor) {
      *static_cast<f0r_param_color_t*>(param) = {
          static_cast<float>(setting[0]), static_cast<float>(setting[1]), static_cast<float>(setting[2])};
    } else {
      *static_cast<double*>(param) = setting[0];
    }
  });
}

// Where a frame cannot be rendered the picture goes through as it came.  Hosts that do not look whether the
// instance could be made get nothing: its size is not known.
void f0r_update(f0r_instance_t instance, double time, const std::uint32_t* inframe, std::uint32_t* outframe) {
  auto* snow = static_cast<Snow*>(instance);
  if (snow == nullptr) {
    return;
  }
  const auto* in = kIsSource ? nullptr : reinterpret_cast<const std::uint8_t*>(inframe);
  if (Attempt([&] { snow->Render(time, in, reinterpret_cast<std::uint8_t*>(outframe)); })) {
    return;
  }
  const std::size_t size = snow->Bytes();
  if (in == nullptr) {
    std::memset(outframe, 0, size);
  } else {
    std::memmove(outframe, inframe, size);
  }
}
